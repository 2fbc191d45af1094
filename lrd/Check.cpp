#include <map>
#include <memory>
#include <vector>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/Printable.h"
#include "lrd/Progress.h"
#include "lrd/RecordFiles.h"
#include "lrd/RecordReader.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileTransaction.h"

namespace lrd {

namespace {

const char* Lead(RecordFault fault) {
  switch (fault) {
    case RecordFault::Missing:
    case RecordFault::Unreadable:
      return "not readable: ";
    case RecordFault::NotWellFormed:
      return "not well-formed: ";
    case RecordFault::Incomplete:
      return "incomplete: ";
    default:
      return "";
  }
}

/// Goes through the record files of folder after folder and prints what is wrong.
class Checker {
 public:
  explicit Checker(Progress& progress) : progress_(progress) {}

  void CheckFolder(const CadFolder& folder) {
    if (!folder.recordFolderFault.empty()) {
      Report(folder.RecordFolderPath(), folder.recordFolderFault);
    }
    CheckTemporaries(folder);
    for (const std::string& name : folder.strangers) {
      if (name.ends_with(".xml")) {
        Report(folder.RecordFolderPath() + "/" + name, "is no regular file");
      }
    }
    const auto objects = folder.NewestObjectFiles(Naming::Either);
    for (const std::string& record : folder.Records()) {
      EndWhenAsked();
      const std::string file = RecordFileOf(folder.path, record);
      CheckRecord(file);
      if (!objects.contains(record)) {
        Report(file, "its object file is gone");
      }
    }
  }

  void Report(const std::string& file, const std::string& finding) {
    progress_.Hide();
    Print(Printable(file + ": " + finding) + "\n");
    ++findings_;
  }

  std::size_t Findings() const noexcept { return findings_; }
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
      Report(file, isClaimed && !error ? "left-over temporary file"
                                       : "temporary file; left over, unless somebody writes there now");
    }
  }

  void CheckRecord(const std::string& file) {
    ++records_;
    const RecordReading reading = reader_.Read(file);
    if (reading.fault == RecordFault::Missing) {
      Report(file, ChangedMeanwhile());
      return;
    }
    if (reading.fault != RecordFault::None) {
      Report(file, Lead(reading.fault) + reading.reason);
      return;
    }
    const std::string& phid = reading.record->GetPhysicalId().Str();
    if (phid.empty()) {
      return;
    }
    if (const auto [first, isNew] = owners_.emplace(phid, file); !isNew) {
      Report(file, "has the physical id " + phid + " of " + first->second);
    }
  }

  Progress& progress_;
  RecordReader reader_;
  std::map<std::string, std::string> owners_;
  std::size_t records_ = 0;
  std::size_t findings_ = 0;
};

std::string Counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

int CheckFolders(const std::vector<std::string>& folders) {
  Progress progress;
  Checker checker(progress);
  WalkCadFolders(
      folders,
      [&](const CadFolder& folder) {
        checker.CheckFolder(folder);
        progress.Tell(Counted(checker.Records(), "record") + " read");
      },
      [&](const std::string& path, const std::string& reason) { checker.Report(path, "not readable: " + reason); });
  progress.Hide();
  Print(Counted(checker.Records(), "record") + ", " + Counted(checker.Findings(), "finding") + "\n");
  return checker.Findings() == 0 ? Done : ModuleRefused;
}

}  // namespace

Run PrepareCheck(CLI::App& arguments) {
  const auto folders = std::make_shared<std::vector<std::string>>();
  arguments.add_option("FOLDER", *folders, "Folders of CAD files.")->required()->option_text(" ");
  arguments.footer(
      "Reported, a line each: a record file that cannot be read, is not well-formed, lacks an element that a record "
      "must\n"
      "have or holds no record of a known format version; one whose object file is gone; one that is no regular file; "
      "a\n"
      "record folder that cannot be listed or is none; a left-over temporary file; a physical id that an earlier "
      "record\n"
      "has too.");
  return [folders] { return CheckFolders(*folders); };
}

}  // namespace lrd
