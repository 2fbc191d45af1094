#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "lrd/Command.h"
#include "lrd/Configuration.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/JsonText.h"
#include "lrd/Printable.h"
#include "lrd/Progress.h"
#include "lrd/RecordFiles.h"
#include "lrd/Times.h"
#include "lrd/Verdicts.h"
#include "platform/QELVARDOSFileLayer.h"

namespace lrd {

namespace {

struct Options {
  std::vector<std::string> folders;
  std::string configuration;
  bool explain = false;
  bool json = false;
};

struct Word {
  char letter;
  const char* status;
  Colour colour;
};

const Word& WordFor(Verdict verdict) {
  static constexpr std::array Words = {Word{'E', "EXISTS", Colour::Green}, Word{'M', "MODIFIED", Colour::Yellow},
                                       Word{'?', "UNKNOWN", Colour::Red}, Word{'X', "DAMAGED", Colour::Red},
                                       Word{'!', "GONE", Colour::Red}};
  return Words.at(static_cast<std::size_t>(verdict));
}

/// Why the module decided so: every reason there is.
enum class Why {
  StampsAgree,
  FileNewer,
  FileOlder,
  NoStamp,
  NoTime,
  NoRecord,
  StrangeRecord,
  NoKnownRecord,
  Damaged,
  Unseen,
  FileGone
};

const char* InWords(Why why) {
  static constexpr std::array Reasons = {"stamps agree",
                                         "file is newer than its record",
                                         "file is older than its record",
                                         "record has no stamp",
                                         "record has a stamp that is no time",
                                         "no record",
                                         "record file without a record of a known version",
                                         "no record, or none of a known version",
                                         "record damaged",
                                         "could not be looked at",
                                         "object file gone"};
  return Reasons.at(static_cast<std::size_t>(why));
}

/// One object with what --explain tells of it.
struct Explained {
  Why why = Why::StampsAgree;
  std::optional<std::int64_t> fileStamp;
  std::optional<std::int64_t> recordStamp;
  /// Why the file's time is not known although there is a verdict.
  std::error_code unseen;
};

Why WhyModified(const CadObject& object, const Explained& stamps) {
  if (object.recordStamp.empty()) {
    return Why::NoStamp;
  }
  if (!stamps.recordStamp) {
    return Why::NoTime;
  }
  if (stamps.unseen) {
    return Why::Unseen;
  }
  return stamps.fileStamp < stamps.recordStamp ? Why::FileOlder : Why::FileNewer;
}

Why WhyDecided(const CadObject& object, const Explained& stamps) {
  switch (object.verdict) {
    case Verdict::Exists:
      return Why::StampsAgree;
    case Verdict::Modified:
      return WhyModified(object, stamps);
    case Verdict::Unknown:
      return object.isListed ? object.hasRecord ? Why::StrangeRecord : Why::NoRecord : Why::NoKnownRecord;
    case Verdict::Damaged:
      return object.isUnseen ? Why::Unseen : Why::Damaged;
    case Verdict::FileGone:
      break;
  }
  return Why::FileGone;
}

Explained Explain(const CadObject& object) {
  Explained explained;
  if (object.verdict != Verdict::FileGone && !object.isUnseen) {
    const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(object.path);
    explained.unseen = facts.error;
    if (!facts.error) {
      explained.fileStamp = facts.modified;
    }
  }
  explained.recordStamp = SecondsOf(object.recordStamp);
  explained.why = WhyDecided(object, explained);
  return explained;
}

std::string InWords(const Explained& explained) {
  std::string times;
  if (explained.fileStamp) {
    times = " (file " + TimeText(*explained.fileStamp);
    if (explained.recordStamp) {
      times += ", record " + TimeText(*explained.recordStamp) + ", difference " +
               DistanceText(*explained.fileStamp, *explained.recordStamp);
    }
    times += ")";
  }
  return InWords(explained.why) + times;
}

/// Explains each of the objects and complains of those whose files cannot be looked at.
std::vector<Explained> ExplainAll(const std::vector<CadObject>& objects, bool& isWhole) {
  std::vector<Explained> explained;
  explained.reserve(objects.size());
  for (const CadObject& object : objects) {
    explained.push_back(Explain(object));
    if (const std::error_code unseen = explained.back().unseen) {
      Complain(object.path, unseen.message());
      isWhole = false;
    }
  }
  return explained;
}

/// explained: null unless it is asked for.
std::string Line(const CadObject& object, const Explained* explained) {
  const Word& word = WordFor(object.verdict);
  std::string line = std::string(1, word.letter) + " " + Printable(object.path);
  if (explained != nullptr) {
    line += ": " + InWords(*explained);
  }
  if (object.verdict == Verdict::Damaged) {
    line += ": " + Printable(object.damage);
  }
  return Coloured(line, word.colour) + "\n";
}

struct Totals {
  std::array<std::size_t, 5> counts{};

  explicit Totals(const std::vector<CadObject>& objects) {
    for (const CadObject& object : objects) {
      ++counts.at(static_cast<std::size_t>(object.verdict));
    }
  }
  std::size_t Of(Verdict verdict) const { return counts.at(static_cast<std::size_t>(verdict)); }
  std::size_t Objects() const {
    return Of(Verdict::Exists) + Of(Verdict::Modified) + Of(Verdict::Unknown) + Of(Verdict::Damaged);
  }
};

std::string InWords(const Totals& totals) {
  std::string line = std::to_string(totals.Objects()) + (totals.Objects() == 1 ? " object: " : " objects: ");
  for (const Verdict verdict : {Verdict::Exists, Verdict::Modified, Verdict::Unknown, Verdict::Damaged}) {
    line += std::to_string(totals.Of(verdict)) + " " + WordFor(verdict).status;
    line += verdict == Verdict::Damaged ? "; " : ", ";
  }
  const std::size_t gone = totals.Of(Verdict::FileGone);
  return line + std::to_string(gone) + (gone == 1 ? " record" : " records") + " without object file\n";
}

Json AsJson(const CadObject& object, const Explained& explained) {
  Json json;
  PutText(json, "path", object.path);
  json["letter"] = std::string(1, WordFor(object.verdict).letter);
  json["status"] = WordFor(object.verdict).status;
  json["reason"] = InWords(explained.why);
  if (explained.fileStamp) {
    json["fileStamp"] = *explained.fileStamp;
    json["fileTime"] = TimeText(*explained.fileStamp);
  }
  if (explained.recordStamp) {
    json["recordStamp"] = *explained.recordStamp;
    json["recordTime"] = TimeText(*explained.recordStamp);
  }
  if (explained.fileStamp && explained.recordStamp) {
    if (const auto difference = Difference(*explained.fileStamp, *explained.recordStamp)) {
      json["difference"] = *difference;
    }
  }
  if (object.verdict == Verdict::Damaged) {
    PutText(json, "damage", object.damage);
  }
  return json;
}

Json AsJson(const std::vector<CadObject>& objects, const std::vector<Explained>& explained) {
  Json json{{"objects", Json::array()}, {"totals", Json::object()}};
  for (std::size_t at = 0; at < objects.size(); ++at) {
    EndWhenAsked();
    json["objects"].push_back(AsJson(objects[at], explained[at]));
  }
  const Totals totals(objects);
  for (const Verdict verdict :
       {Verdict::Exists, Verdict::Modified, Verdict::Unknown, Verdict::Damaged, Verdict::FileGone}) {
    json["totals"][WordFor(verdict).status] = totals.Of(verdict);
  }
  return json;
}

/// What the folders hold.
struct Found {
  std::vector<CadObject> objects;
  std::vector<CadObject> orphans;
  bool isWhole = true;
};

void TakeFolder(const CadFolder& folder, Naming naming, Found& found) {
  std::set<std::string> records = folder.Records();
  for (const auto& [record, file] : folder.NewestObjectFiles(naming)) {
    const bool hasRecord = records.erase(record) > 0;
    if (hasRecord || !file.starts_with('.')) {
      found.objects.push_back({Join(folder.path, file),
                               folder.path,
                               file,
                               record,
                               hasRecord,
                               folder.recordFolderFault.empty(),
                               Verdict::Unknown,
                               {},
                               false,
                               {}});
    }
  }
  for (const std::string& record : records) {
    found.orphans.push_back(
        {Join(folder.path, record), folder.path, record, record, true, true, Verdict::FileGone, {}, false, {}});
  }
}

Found FindObjects(const Options& options, Naming naming, Progress& progress) {
  Found found;
  const auto complain = [&](const std::string& path, const std::string& reason) {
    progress.Hide();
    Complain(path, reason);
    found.isWhole = false;
  };
  WalkCadFolders(
      options.folders,
      [&](const CadFolder& folder) {
        TakeFolder(folder, naming, found);
        for (const std::string& name : folder.strangers) {
          if (name.ends_with(RecordSuffix)) {
            complain(Join(folder.RecordFolderPath(), name), "is no regular file");
          }
        }
        if (!folder.recordFolderFault.empty()) {
          complain(folder.RecordFolderPath(), folder.recordFolderFault);
        }
        progress.Tell(std::to_string(found.objects.size()) + " objects found");
      },
      complain);
  return found;
}

std::vector<CadObject> Sorted(Found found) {
  std::vector<CadObject> all = std::move(found.objects);
  all.insert(all.end(), std::make_move_iterator(found.orphans.begin()), std::make_move_iterator(found.orphans.end()));
  std::sort(all.begin(), all.end(), [](const CadObject& a, const CadObject& b) { return a.path < b.path; });
  return all;
}

/// explained: one for each object if they are to be explained.
void PrintObjects(const std::vector<CadObject>& objects, const std::vector<Explained>& explained, bool json) {
  if (json) {
    PrintJson(AsJson(objects, explained));
    return;
  }
  for (std::size_t at = 0; at < objects.size(); ++at) {
    EndWhenAsked();
    if (!Print(Line(objects[at], explained.empty() ? nullptr : &explained[at]))) {
      return;
    }
  }
  Print(InWords(Totals(objects)));
}

int TellStatus(const Options& options) {
  const Configuration configuration = ReadConfiguration(options.configuration);
  const Naming naming = configuration.object->GetCADName() == "CREO" ? Naming::Creo : Naming::Whole;
  Progress progress;
  Found found = FindObjects(options, naming, progress);
  const std::string total = " of " + std::to_string(found.objects.size()) + " objects recognised";
  Decide(found.objects, configuration, [&](std::size_t decided) { progress.Tell(std::to_string(decided) + total); });
  progress.Hide();
  bool isWhole = found.isWhole;
  const std::vector<CadObject> objects = Sorted(std::move(found));
  const std::vector<Explained> explained =
      options.explain || options.json ? ExplainAll(objects, isWhole) : std::vector<Explained>();
  PrintObjects(objects, explained, options.json);
  return isWhole && Totals(objects).Of(Verdict::Damaged) == 0 ? Done : ModuleRefused;
}

std::string Footer() {
  std::string text =
      "Every regular file below the folders counts as an object, but hidden files without a record and what lies in\n"
      "hidden folders. For \"CREO\" of part.prt.1, part.prt.2 ... only the newest counts.\n\n"
      "Letters: E exists, M modified, ? unknown to the server, X damaged record, or one that could not be looked at, ! "
      "record whose object file is "
      "gone.\n\n"
      "Reasons that --explain gives:\n";
  for (int why = 0; why <= static_cast<int>(Why::FileGone); ++why) {
    text += std::string("  ") + InWords(static_cast<Why>(why)) + "\n";
  }
  return text + "\n" + JsonHelp;
}

}  // namespace

Run PrepareStatus(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  arguments.add_option("FOLDER", options->folders, "Folders of CAD files.")->required()->option_text(" ");
  arguments.add_option("--config", options->configuration, "The configuration file.")->required()->option_text("FILE");
  arguments.add_flag("--explain", options->explain, "Add to each line why the module decided so.");
  arguments.add_flag("--json", options->json, "Print one JSON document with the same facts.");
  arguments.footer(Footer());
  return [options] { return TellStatus(*options); };
}

}  // namespace lrd
