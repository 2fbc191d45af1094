#include "lrd/RecordFiles.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "platform/QELVARDOSFileError.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileTransaction.h"
#include "platform/QELVARDOSPath.h"
#include "platform/QELXVARDOSCreoUtil.h"

namespace lrd {

namespace {

namespace fs = std::filesystem;

constexpr const char* RecordFolder = ".KORVANTHEMIX";

std::string Text(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

fs::path Native(const std::string& path) {
  return path.empty() ? fs::path(".") : fs::path(std::u8string(path.begin(), path.end()));
}

bool IsHidden(const std::string& name) { return name.starts_with('.'); }

/// Of two versions of one file, "part.prt.9" is older than "part.prt.10", and "part.prt" older than both.
bool IsNewer(std::string_view version, std::string_view other) {
  const auto digits = [](std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(".0"), text.size()));
  };
  const std::string_view a = digits(version);
  const std::string_view b = digits(other);
  return a.size() != b.size() ? a.size() > b.size() : a != b ? a > b : version.size() > other.size();
}

struct Listing {
  /// With those of which it is not known what they are.
  std::set<std::string> files;
  std::set<std::string> folders;
  /// Links to folders, pipes, sockets, devices, links to nothing.
  std::set<std::string> others;
  std::error_code error;
};

/// Whether the name stands for a file, or might: what cannot be looked at is left to the module to complain about.
bool MayBeFile(const fs::directory_entry& entry) {
  std::error_code error;
  return entry.is_regular_file(error) || (error && !QELVARDOSFileLayer::MeansMissing(error, Text(entry.path())));
}

Listing List(const std::string& folder) {
  Listing listing;
  fs::directory_iterator entry(Native(folder), listing.error);
  for (; !listing.error && entry != fs::directory_iterator(); entry.increment(listing.error)) {
    EndWhenAsked();
    std::error_code none;
    const bool isFolder = entry->is_directory(none) && !entry->is_symlink(none);
    std::set<std::string>& kind = isFolder ? listing.folders : MayBeFile(*entry) ? listing.files : listing.others;
    kind.insert(Text(entry->path().filename()));
  }
  return listing;
}

/// Where a path leads, whatever links are on the way; the path itself when that cannot be found out.
std::string PlaceBehind(const std::string& path) {
  std::error_code error;
  const fs::path place = fs::canonical(Native(path), error);
  return error ? path : Text(place);
}

/// The path without "." and "..", unless a link makes it lead elsewhere.
std::string Normal(const std::string& root, const std::string& place) {
  std::string path = Text(Native(root).lexically_normal());
  if (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  path = path == "." ? "" : path;
  return PlaceBehind(path) == place ? path : root;
}

bool IsRecordFolder(const std::string& path) { return QELVARDOSPath(path).GetFileName() == RecordFolder; }

/// A folder that a walk has ahead.
struct Start {
  /// Its one name, whatever links and spellings lead to it.
  std::string place;
  /// Without the folders below it.
  bool isAlone = false;
};
/// By the paths that are printed.
using Ahead = std::map<std::string, Start>;

/// The folder above a record folder stands for it.
std::pair<std::string, Start> StartAt(const std::string& root) {
  const std::string place = PlaceBehind(root);
  const std::string path = Normal(root, place);
  if (IsRecordFolder(path)) {
    const std::string above = QELVARDOSPath(path).GetDirName().ToString().Str();
    return {above, {PlaceBehind(above), true}};
  }
  if (IsRecordFolder(place)) {
    const std::string above = QELVARDOSPath(place).GetDirName().ToString().Str();
    return {path.empty() ? ".." : above, {above, true}};
  }
  return {path, {place, false}};
}

/// Of several roots that are the same folder the first stays.
Ahead Starts(const std::vector<std::string>& roots) {
  Ahead ahead;
  std::set<std::pair<std::string, bool>> places;
  for (const std::string& root : roots) {
    std::error_code error;
    if (root.empty()) {
      throw HostError(UnusableInput, "the name of a folder is empty");
    }
    if (!fs::is_directory(Native(root), error)) {
      throw HostError(UnusableInput, root + ": " + (error ? error.message() : "is not a folder"));
    }
    const auto [path, start] = StartAt(root);
    if (places.emplace(start.place, start.isAlone).second) {
      const auto [known, isNew] = ahead.emplace(path, start);
      known->second.isAlone = known->second.isAlone && start.isAlone;
    }
  }
  return ahead;
}

/// Why what has the name of a record folder cannot be one; nothing when it may, or when there is none.
std::string FaultOf(const std::string& recordFolder) {
  std::error_code error;
  const fs::file_status itself = fs::symlink_status(Native(recordFolder), error);
  if (itself.type() == fs::file_type::not_found) {
    return "";
  }
  const fs::file_status behind = fs::status(Native(recordFolder), error);
  if (behind.type() == fs::file_type::not_found) {
    return fs::is_symlink(itself) ? "is a link to nothing" : ChangedMeanwhile();
  }
  if (fs::status_known(behind)) {
    return fs::is_directory(behind) ? "" : "is no folder";
  }
  return error.message();
}

CadFolder WithRecords(const std::string& path, Listing objects) {
  CadFolder folder;
  folder.path = path;
  folder.files = std::move(objects.files);
  folder.fault = objects.error ? objects.error.message() : "";
  folder.recordFolderFault = FaultOf(folder.RecordFolderPath());
  if (folder.recordFolderFault.empty()) {
    Listing listing = List(folder.RecordFolderPath());
    folder.recordFolder = std::move(listing.files);
    folder.strangers = std::move(listing.others);
    folder.strangers.insert(listing.folders.begin(), listing.folders.end());
    folder.innerFolders = std::move(listing.folders);
    if (listing.error && !QELVARDOSFileLayer::MeansMissing(listing.error, folder.RecordFolderPath())) {
      folder.recordFolderFault = "cannot be listed: " + listing.error.message();
    }
  }
  return folder;
}

}  // namespace

std::string Join(const std::string& folder, const std::string& name) {
  return (QELVARDOSPath(folder) / QELVARDOSPath(name)).ToString().Str();
}

std::string RecordFileOf(const std::string& folder, const std::string& record) {
  return Join(Join(folder, RecordFolder), record + std::string(RecordSuffix));
}

std::string ChangedMeanwhile() { return make_error_code(QELVARDOSFileError::ChangedMeanwhile).message(); }

std::string CadFolder::RecordFolderPath() const { return Join(path, RecordFolder); }

std::set<std::string> CadFolder::Records() const {
  std::set<std::string> records;
  for (const std::string& name : recordFolder) {
    if (name.ends_with(RecordSuffix) && name != RecordSuffix && !QELVARDOSFileTransaction::IsTemporaryName(name)) {
      records.insert(name.substr(0, name.size() - RecordSuffix.size()));
    }
  }
  return records;
}

std::map<std::string, std::string> CadFolder::NewestObjectFiles(Naming naming) const {
  std::map<std::string, std::string> newest;
  for (const std::string& file : files) {
    const bool whole = naming == Naming::Whole ||
                       (naming == Naming::Either && recordFolder.contains(file + std::string(RecordSuffix)));
    const std::string record = whole ? file : QELXVARDOSCreoUtil::fileNameWitoutVersion(file).Str();
    std::string& known = newest[record];
    if (known.empty() || IsNewer(file.substr(record.size()), known.substr(record.size()))) {
      known = file;
    }
  }
  return newest;
}

std::vector<std::string> MisplacedRecords(const CadFolder& folder,
                                          const std::function<void(const std::string&, const std::string&)>& complain) {
  std::vector<std::string> misplaced;
  std::set<std::string> ahead;
  for (const std::string& name : folder.innerFolders) {
    ahead.insert(Join(folder.RecordFolderPath(), name));
  }
  while (!ahead.empty()) {
    EndWhenAsked();
    const std::string path = *ahead.begin();
    ahead.erase(ahead.begin());
    const Listing listing = List(path);
    if (listing.error) {
      complain(path, listing.error.message());
    }
    for (const std::string& name : listing.files) {
      if (name.ends_with(RecordSuffix)) {
        misplaced.push_back(Join(path, name));
      }
    }
    for (const std::string& name : listing.folders) {
      ahead.insert(Join(path, name));
    }
  }
  return misplaced;
}

CadFolder ListCadFolder(const std::string& path) { return WithRecords(path, List(path)); }

namespace {

void VisitAlone(const std::string& path, const std::function<void(const CadFolder&)>& visit,
                const std::function<void(const std::string&, const std::string&)>& complain) {
  const CadFolder folder = ListCadFolder(path);
  if (folder.fault.empty()) {
    visit(folder);
  } else {
    complain(Text(Native(folder.path)), folder.fault);
  }
}

}  // namespace

void WalkCadFolders(const std::vector<std::string>& roots, const std::function<void(const CadFolder&)>& visit,
                    const std::function<void(const std::string&, const std::string&)>& complain) {
  Ahead ahead = Starts(roots);
  std::set<std::string> visited;
  std::set<std::string> entered;
  // What lies below a path sorts behind it, so one map of what is ahead visits every folder in order.
  while (!ahead.empty()) {
    EndWhenAsked();
    const auto [path, start] = *ahead.begin();
    ahead.erase(ahead.begin());
    const bool isNew = visited.insert(start.place).second;
    if (start.isAlone) {
      if (isNew) {
        VisitAlone(path, visit, complain);
      }
      continue;
    }
    if (!entered.insert(start.place).second) {
      continue;
    }
    Listing listing = List(path);
    if (listing.error) {
      complain(Text(Native(path)), listing.error.message());
      continue;
    }
    for (const std::string& name : listing.folders) {
      if (!IsHidden(name)) {
        ahead.emplace(Join(path, name), Start{Join(start.place, name), false});
      }
    }
    if (isNew) {
      visit(WithRecords(path, std::move(listing)));
    }
  }
}

RecordPlace PlaceOf(const std::string& recordFile) {
  const QELVARDOSPath file(recordFile);
  const std::string name = file.GetFileName().Str();
  QELVARDOSPath recordFolder = file.GetDirName();
  QELVARDOSPath folder = recordFolder.GetDirName();
  if (recordFolder.IsEmpty()) {
    recordFolder = QELVARDOSPath(Text(fs::current_path()));
    folder = "..";
  }
  if (!IsRecordFolder(recordFolder.ToString().Str()) || !name.ends_with(RecordSuffix)) {
    return {};
  }
  return {folder.ToString().Str(), name.substr(0, name.size() - RecordSuffix.size())};
}

}  // namespace lrd
