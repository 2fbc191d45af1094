#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "lrd/Command.h"
#include "lrd/Configuration.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/JsonText.h"
#include "lrd/Printable.h"
#include "lrd/Progress.h"
#include "lrd/Reasons.h"
#include "lrd/RecordFiles.h"
#include "lrd/RecordReader.h"
#include "lrd/Verdicts.h"

namespace lrd {

namespace {

struct Options {
  std::vector<std::string> folders;
  std::string configuration;
  bool explain = false;
  bool json = false;
};

using Reason = QELXVARDOSReason::Kind;

std::string Line(const CadObject& object, bool explain) {
  const VerdictWord& word = WordFor(object.verdict);
  std::string line = std::string(1, word.letter) + " " + Printable(object.path);
  if (explain) {
    AppendReason(line += ": ", object.reason);
  }
  if (object.verdict == Verdict::Damaged) {
    line += ": " + Printable(object.damage);
  }
  if (explain) {
    AppendDoubts(line, object.reason);
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

Json AsJson(const CadObject& object) {
  Json json;
  PutText(json, "path", object.path);
  json["letter"] = std::string(1, WordFor(object.verdict).letter);
  json["status"] = WordFor(object.verdict).status;
  PutReason(json, object.reason);
  if (object.verdict == Verdict::Damaged) {
    PutText(json, "damage", object.damage);
  }
  return json;
}

Json AsJson(const std::vector<CadObject>& objects) {
  Json json{{"objects", Json::array()}, {"totals", Json::object()}};
  for (const CadObject& object : objects) {
    EndWhenAsked();
    json["objects"].push_back(AsJson(object));
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
      found.objects.push_back({Join(folder.path, file), folder.path, file, record});
    }
  }
  for (const std::string& record : records) {
    found.orphans.push_back({Join(folder.path, record), folder.path, record, record, Verdict::FileGone});
    found.orphans.back().reason.kind = Reason::ObjectFileGone;
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

/// Complains of files whose times are asked for and could not be looked at; answers whether there are none.
bool KnowsTimes(const std::vector<CadObject>& objects) {
  bool all = true;
  for (const CadObject& object : objects) {
    if (object.verdict != Verdict::Damaged && !object.reason.failure.IsEmpty()) {
      Complain(object.path, WithoutFile(object.reason.failure.Str(), object.path));
      all = false;
    }
  }
  return all;
}

void PrintObjects(const std::vector<CadObject>& objects, const Options& options) {
  if (options.json) {
    PrintJson(AsJson(objects));
    return;
  }
  for (const CadObject& object : objects) {
    EndWhenAsked();
    if (!Print(Line(object, options.explain))) {
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
  Decide(found.objects, configuration, options.explain || options.json,
         [&](std::size_t decided) { progress.Tell(std::to_string(decided) + total); });
  progress.Hide();
  bool isWhole = found.isWhole;
  const std::vector<CadObject> objects = Sorted(std::move(found));
  if (options.explain || options.json) {
    isWhole = KnowsTimes(objects) && isWhole;
  }
  PrintObjects(objects, options);
  return isWhole && Totals(objects).Of(Verdict::Damaged) == 0 ? Done : ModuleRefused;
}

std::string Footer() {
  std::string text =
      "Every regular file below the folders counts as an object, but hidden files without a record and what lies in\n"
      "hidden folders. For \"CREO\" of part.prt.1, part.prt.2 ... only the newest counts.\n\n"
      "Letters: E exists, M modified, ? unknown to the server, X damaged record, or one that could not be looked at, ! "
      "record whose object file is "
      "gone.\n\n";
  text += ReasonsHelp();
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
