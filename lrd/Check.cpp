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
#include "platform/QELVARDOSFileError.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileTransaction.h"

namespace lrd {

namespace {

struct Options {
  std::vector<std::string> folders;
  bool json = false;
  bool clean = false;
  bool yes = false;
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
  Misplaced,
  Nameless,
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
      KindWords{"misplaced", "a record in a folder inside the record folder"},
      KindWords{"nameless", "a record file without a name"},
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

/// Of the temporary files in a folder: those that may go, as far as the answer to a claim on the folder alone tells.
/// Nobody can be writing where the claim was had, and where none is to be had the person who has them removed answers
/// for it. In a folder that was claimed a file that its writer did not write under a claim may still be wanted.
bool MayGo(const std::string& temporaryName, const std::error_code& claim) {
  if (!claim) {
    return QELVARDOSFileTransaction::IsUnderClaim(temporaryName);
  }
  return claim != std::errc::device_or_resource_busy && claim != QELVARDOSFileError::ForeignLink;
}

/// By folder, the names of temporary files that may go.
using LeftOvers = std::map<std::string, std::vector<std::string>>;

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
      if (name.ends_with(RecordSuffix)) {
        tell_({Join(folder.RecordFolderPath(), name), Kind::NotRegular, "is no regular file"});
      }
    }
    const auto complain = [this](const std::string& path, const std::string& reason) {
      tell_({path, Kind::NotReadable, "not readable: " + reason});
    };
    for (const std::string& file : MisplacedRecords(folder, complain)) {
      tell_({file, Kind::Misplaced, "lies in a folder inside the record folder, where no record is looked for"});
    }
    if (folder.recordFolder.contains(std::string(RecordSuffix))) {
      tell_({RecordFileOf(folder.path, ""), Kind::Nameless, "has no name, so it is the record of no object"});
    }
    const auto objects = folder.NewestObjectFiles(Naming::Either);
    const std::set<std::string> names = folder.Records();
    const std::vector<std::string> records(names.begin(), names.end());
    const auto fileOf = [&](std::size_t record) { return RecordFileOf(folder.path, records[record]); };
    RecordsAhead ahead(records.size(), fileOf);
    for (std::size_t record = 0; record < records.size(); ++record) {
      EndWhenAsked();
      ahead.Before(record);
      const std::string file = fileOf(record);
      CheckRecord(file);
      if (!objects.contains(records[record])) {
        tell_({file, Kind::NoObjectFile, "its object file is gone"});
      }
    }
  }

  std::size_t Records() const noexcept { return records_; }
  const LeftOvers& LeftOver() const noexcept { return leftOvers_; }

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
      const std::string file = Join(path, name);
      const bool isClaimed = QELVARDOSFileTransaction::IsUnderClaim(name);
      if (!layer.Stat(file).Exists() || (isClaimed && error == std::errc::device_or_resource_busy)) {
        continue;
      }
      if (MayGo(name, error)) {
        leftOvers_[path].push_back(name);
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
  LeftOvers leftOvers_;
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

  void AddRemoved(const std::string& file) {
    ++removed_;
    if (json_) {
      PutText(removedFiles_.emplace_back(), "file", file);
    } else {
      Print(Printable(file) + ": removed\n");
    }
  }

  void Finish(std::size_t records, bool clean) {
    if (!json_) {
      Print(Counted(records, "record") + ", " + Counted(count_, "finding") +
            (clean ? ", " + std::to_string(removed_) + " removed" : "") + "\n");
      return;
    }
    Json document;
    document["findings"] = std::move(findings_);
    document["totals"] = {{"records", records}, {"findings", count_}};
    if (clean) {
      document["removed"] = std::move(removedFiles_);
      document["totals"]["removed"] = removed_;
    }
    PrintJson(document);
  }

  /// How many findings are left.
  std::size_t Left() const noexcept { return count_ - removed_; }

 private:
  bool json_;
  std::size_t count_ = 0;
  std::size_t removed_ = 0;
  Json findings_ = Json::array();
  Json removedFiles_ = Json::array();
};

/// Removes what may still go when its folder is claimed again.
void Clean(const std::string& folder, const std::vector<std::string>& names, Report& report) {
  QELVARDOSFolderClaim alone;
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::Current();
  const std::error_code claim = layer.ClaimFolder(folder, QELVARDOSFolderUse::Clean, alone);
  for (const std::string& name : names) {
    EndWhenAsked();
    const std::string file = Join(folder, name);
    if (!MayGo(name, claim)) {
      Complain(file, "stays, since somebody writes in its folder now");
    } else if (const std::error_code error = layer.Remove(file)) {
      Complain(file, error.message());
    } else {
      report.AddRemoved(file);
    }
  }
}

void CleanIfWanted(const Options& options, const LeftOvers& leftOvers, Report& report) {
  std::size_t count = 0;
  for (const auto& [folder, names] : leftOvers) {
    count += names.size();
  }
  if (count == 0 || !(options.yes || Agrees("remove " + Counted(count, "temporary file") + "?"))) {
    return;
  }
  for (const auto& [folder, names] : leftOvers) {
    Clean(folder, names, report);
  }
}

void RequireSomebodyToAsk(const Options& options) {
  if (options.clean && !options.yes && !CanAsk()) {
    throw HostError(UnusableInput,
                    "--clean asks before it removes anything, and there is no terminal to ask on; --yes "
                    "removes without asking");
  }
}

int CheckFolders(const Options& options) {
  RequireSomebodyToAsk(options);
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
  if (options.clean) {
    CleanIfWanted(options, checker.LeftOver(), report);
    EndWhenAsked();
  }
  report.Finish(checker.Records(), options.clean);
  return report.Left() == 0 ? Done : ModuleRefused;
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
  text +=
      "\n--clean removes a temporary file where it is proved that no writer works there, and where that cannot be\n"
      "found out. The exit status is 0 when nothing that was reported is left.\n";
  return text + "\n" + JsonHelp;
}

}  // namespace

Run PrepareCheck(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  arguments.add_option("FOLDER", options->folders, "Folders of CAD files.")->required()->option_text(" ");
  arguments.add_flag("--json", options->json, "Print one JSON document with the same facts.");
  CLI::Option* clean =
      arguments.add_flag("--clean", options->clean, "Remove left-over temporary files, after asking on the terminal.");
  arguments.add_flag("--yes", options->yes, "Remove them without asking.")->needs(clean);
  arguments.footer(Footer());
  return [options] { return CheckFolders(*options); };
}

}  // namespace lrd
