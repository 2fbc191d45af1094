#include "lrd/DryRunLayer.h"

#include "lrd/HostSystem.h"
#include "platform/QELVARDOSPath.h"

namespace lrd {

namespace {

std::error_code Refusal(std::errc reason) { return std::make_error_code(reason); }

std::string FolderOf(const std::string& path) {
  const std::string folder = QELVARDOSPath(path).GetDirName().ToString().Str();
  return folder.empty() ? "." : folder;
}

}  // namespace

QELVARDOSFileFacts DryRunLayer::Stat(const std::string& path) {
  QELVARDOSFileFacts facts;
  if (folders_.contains(path)) {
    facts.kind = QELVARDOSFileFacts::Kind::Folder;
  } else if (const auto file = files_.find(path); file != files_.end()) {
    facts.kind = QELVARDOSFileFacts::Kind::File;
    facts.size = file->second.size();
  } else if (!removed_.contains(path)) {
    facts = Next().Stat(path);
  }
  return facts;
}

std::error_code DryRunLayer::Read(const std::string& path, std::string& bytes, std::uint64_t atMost) {
  if (const auto file = files_.find(path); file != files_.end()) {
    bytes = file->second;
    return bytes.size() > atMost ? Refusal(std::errc::file_too_large) : std::error_code();
  }
  return removed_.contains(path) ? Refusal(std::errc::no_such_file_or_directory) : Next().Read(path, bytes, atMost);
}

std::error_code DryRunLayer::List(const std::string& folder, std::vector<std::string>& names) {
  names.clear();
  const std::error_code error = folders_.contains(folder) ? std::error_code() : Next().List(folder, names);
  std::erase_if(names, [&](const std::string& name) { return removed_.contains(folder + "/" + name); });
  for (const auto& [path, bytes] : files_) {
    if (FolderOf(path) == folder && !Next().Stat(path).Exists()) {
      names.push_back(QELVARDOSPath(path).GetFileName().Str());
    }
  }
  return error;
}

std::error_code DryRunLayer::MakeFolder(const std::string& path) {
  if (Stat(path).Exists()) {
    return Refusal(std::errc::file_exists);
  }
  const std::error_code refusal = RefusalInFolderOf(path);
  if (!refusal) {
    folders_.insert(path);
  }
  return refusal;
}

std::error_code DryRunLayer::HideFolder(const std::string& path) {
  return Stat(path).Exists() ? std::error_code() : Refusal(std::errc::no_such_file_or_directory);
}

/// Nothing is left in the folder that could be removed.
std::error_code DryRunLayer::ClaimFolder(const std::string&, QELVARDOSFolderUse, QELVARDOSFolderClaim&) {
  return Refusal(std::errc::not_supported);
}

std::error_code DryRunLayer::WriteNew(const std::string& path, std::string_view bytes, const std::string&) {
  if (Stat(path).Exists()) {
    return Refusal(std::errc::file_exists);
  }
  const std::error_code refusal = RefusalInFolderOf(path);
  if (!refusal) {
    files_[path] = bytes;
  }
  return refusal;
}

std::vector<std::error_code> DryRunLayer::MakeDurable(const std::vector<std::string>& paths) {
  return std::vector<std::error_code>(paths.size());
}

std::vector<std::error_code> DryRunLayer::MakeFoldersDurable(const std::vector<std::string>& folders) {
  return std::vector<std::error_code>(folders.size());
}

std::error_code DryRunLayer::Rename(const std::string& from, const std::string& to) {
  if (Stat(to).kind == QELVARDOSFileFacts::Kind::Folder) {
    return Refusal(std::errc::is_a_directory);
  }
  std::string bytes;
  if (const std::error_code refusal = Read(from, bytes, AnySize)) {
    return refusal;
  }
  if (const std::error_code refusal = RefusalInFolderOf(to)) {
    return refusal;
  }
  files_[to] = std::move(bytes);
  return Remove(from);
}

std::error_code DryRunLayer::Remove(const std::string& path) {
  if (!Stat(path).Exists()) {
    return Refusal(std::errc::no_such_file_or_directory);
  }
  const std::error_code refusal = RefusalInFolderOf(path);
  if (!refusal && files_.erase(path) + folders_.erase(path) == 0) {
    removed_.insert(path);
  }
  return refusal;
}

std::error_code DryRunLayer::RefusalInFolderOf(const std::string& path) {
  const std::string folder = FolderOf(path);
  if (folders_.contains(folder)) {
    return {};
  }
  switch (Stat(folder).kind) {
    case QELVARDOSFileFacts::Kind::Missing:
      return Refusal(std::errc::no_such_file_or_directory);
    case QELVARDOSFileFacts::Kind::Folder:
      return WouldRefuseFileIn(folder);
    default:
      return Refusal(std::errc::not_a_directory);
  }
}

}  // namespace lrd
