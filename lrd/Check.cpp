#include <array>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/JsonText.h"
#include "lrd/Printable.h"
#include "lrd/Progress.h"
#include "lrd/RecordFiles.h"
#include "lrd/RecordReader.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileTransaction.h"

namespace lrd {

namespace {

struct Options {
  std::vector<std::string> folders;
  bool json = false;
};

/// What may be wrong: every kind there is.
enum class Kind {
  NotReadable,
  NotWellFormed,
  Incomplete,
  UnknownVersion,
  NoRecord,
  ChangedMeanwhile,
  NoObjectFile,
  SamePhysicalId,
  NotRegular,
  RecordFolder,
  LeftOver,
  PerhapsLeftOver
};

struct KindWords {
  /// For programs.
  const char* name;
  const char* meaning;
};

const KindWords& WordsFor(Kind kind) {
  static constexpr std::array Words = {
      KindWords{"notReadable", "a record file or a folder that cannot be read"},
      KindWords{"notWellFormed", "a record file that is no well-formed XML"},
      KindWords{"incomplete", "a record that lacks an element that it must have"},
      KindWords{"unknownVersion", "a record of an unknown format version"},
      KindWords{"noRecord", "a record file that holds no record"},
      KindWords{"changedMeanwhile", "a record file that was gone at a second look"},
      KindWords{"noObjectFile", "a record whose object file is gone"},
      KindWords{"samePhysicalId", "a record with the physical id of an earlier one"},
      KindWords{"notRegular", "a record that is no regular file"},
      KindWords{"recordFolder", "a record folder that cannot be listed, or is none"},
      KindWords{"leftOver", "a temporary file that a writer left when it ended"},
      KindWords{"perhapsLeftOver", "a temporary file of which it cannot be told whether its writer still works"}};
  return Words.at(static_cast<std::size_t>(kind));
}

struct Finding {
  std::string file;
  Kind kind;
  std::string words;
};

Finding FindingOn(const std::string& file, const RecordReading& reading) {
  switch (reading.fault) {
    case RecordFault::Missing:
      return {file, Kind::ChangedMeanwhile, ChangedMeanwhile()};
    case RecordFault::NotWellFormed:
      return {file, Kind::NotWellFormed, "not well-formed: " + reading.reason};
    case RecordFault::Incomplete:
      return {file, Kind::Incomplete, "incomplete: " + reading.reason};
    case RecordFault::UnknownVersion:
      return {file, Kind::UnknownVersion, reading.reason};
    case RecordFault::NoRecord:
      return {file, Kind::NoRecord, reading.reason};
    default:
      return {file, Kind::NotReadable, "not readable: " + reading.reason};
  }
}

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Goes through the record files of folder after folder and tells what is wrong.
class Checker {
 public:
  using Tell = std::function<void(const Finding&)>;

  explicit Checker(Tell tell) : tell_(std::move(tell)) {}

  void CheckFolder(const CadFolder& folder) {
    if (!folder.recordFolderFault.empty()) {
      tell_({folder.RecordFolderPath(), Kind::RecordFolder, folder.recordFolderFault});
    }
    CheckTemporaries(folder);
    for (const std::string& name : folder.strangers) {
      if (name.ends_with(".xml")) {
        tell_({folder.RecordFolderPath() + "/" + name, Kind::NotRegular, "is no regular file"});
      }
    }
    const auto objects = folder.NewestObjectFiles(Naming::Either);
    for (const std::string& record : folder.Records()) {
      EndWhenAsked();
      const std::string file = RecordFileOf(folder.path, record);
      CheckRecord(file);
      if (!objects.contains(record)) {
        tell_({file, Kind::NoObjectFile, "its object file is gone"});
      }
    }
  }

  std::size_t Records() const noexcept { return records_; }

 private:
  /// A temporary file is left over once nobody can be writing in its folder any more.
  void CheckTemporaries(const CadFolder& folder) {
    const std::string path = folder.RecordFolderPath();
    std::vector<std::string> names(folder.recordFolder.begin(), folder.recordFolder.end());
    std::erase_if(names, [](const std::string& name) { return !QELVARDOSFileTransaction::IsTemporaryName(name); });
    if (names.empty()) {
      return;
    }
    QELVARDOSFolderClaim alone;
    QELVARDOSFileLayer& layer = QELVARDOSFileLayer::Current();
    const std::error_code error = layer.ClaimFolder(path, QELVARDOSFolderUse::Clean, alone);
    for (const std::string& name : names) {
      const bool isClaimed = QELVARDOSFileTransaction::IsUnderClaim(name);
      const std::string file = Join(path, name);
      if (!layer.Stat(file).Exists() || (isClaimed && error == std::errc::device_or_resource_busy)) {
        continue;
      }
      if (isClaimed && !error) {
        tell_({file, Kind::LeftOver, "left-over temporary file"});
      } else {
        tell_({file, Kind::PerhapsLeftOver, "temporary file; left over, unless somebody writes there now"});
      }
    }
  }

  void CheckRecord(const std::string& file) {
    ++records_;
    const RecordReading reading = reader_.Read(file);
    if (reading.fault != RecordFault::None) {
      tell_(FindingOn(file, reading));
      return;
    }
    const std::string& phid = reading.record->GetPhysicalId().Str();
    if (phid.empty()) {
      return;
    }
    if (const auto [first, isNew] = owners_.emplace(phid, file); !isNew) {
      tell_({file, Kind::SamePhysicalId, "has the physical id " + phid + " of " + first->second});
    }
  }

  Tell tell_;
  RecordReader reader_;
  std::map<std::string, std::string> owners_;
  std::size_t records_ = 0;
};

/// Says what was found, at once in lines or at the end as one document.
class Report {
 public:
  explicit Report(bool json) : json_(json) {}

  void Add(const Finding& finding) {
    ++count_;
    if (!json_) {
      Print(Printable(finding.file + ": " + finding.words) + "\n");
      return;
    }
    Json& entry = findings_.emplace_back();
    PutText(entry, "file", finding.file);
    entry["kind"] = WordsFor(finding.kind).name;
    PutText(entry, "words", finding.words);
  }

  void Finish(std::size_t records) {
    if (!json_) {
      Print(Counted(records, "record") + ", " + Counted(count_, "finding") + "\n");
      return;
    }
    Json document;
    document["findings"] = std::move(findings_);
    document["totals"] = {{"records", records}, {"findings", count_}};
    PrintJson(document);
  }

  std::size_t Count() const noexcept { return count_; }

 private:
  bool json_;
  std::size_t count_ = 0;
  Json findings_ = Json::array();
};

int CheckFolders(const Options& options) {
  Progress progress;
  Report report(options.json);
  const auto tell = [&](const Finding& finding) {
    progress.Hide();
    report.Add(finding);
  };
  Checker checker(tell);
  WalkCadFolders(
      options.folders,
      [&](const CadFolder& folder) {
        checker.CheckFolder(folder);
        progress.Tell(Counted(checker.Records(), "record") + " read");
      },
      [&](const std::string& path, const std::string& reason) {
        tell({path, Kind::NotReadable, "not readable: " + reason});
      });
  progress.Hide();
  report.Finish(checker.Records());
  return report.Count() == 0 ? Done : ModuleRefused;
}

std::string Footer() {
  std::string text = "Reported, a line each, and the kind of it in JSON:\n";
  for (int kind = 0; kind <= static_cast<int>(Kind::PerhapsLeftOver); ++kind) {
    constexpr std::size_t NameWidth = 18;
    const KindWords& words = WordsFor(static_cast<Kind>(kind));
    std::string name = words.name;
    name.resize(NameWidth, ' ');
    text += "  " + name + words.meaning + "\n";
  }
  return text + "\n" + JsonHelp;
}

}  // namespace

Run PrepareCheck(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  arguments.add_option("FOLDER", options->folders, "Folders of CAD files.")->required()->option_text(" ");
  arguments.add_flag("--json", options->json, "Print one JSON document with the same facts.");
  arguments.footer(Footer());
  return [options] { return CheckFolders(*options); };
}

}  // namespace lrd
