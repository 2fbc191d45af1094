#include <array>
#include <map>
#include <memory>
#include <vector>

#include "lrd/Command.h"
#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/JsonText.h"
#include "lrd/Printable.h"
#include "lrd/RecordFiles.h"
#include "lrd/RecordReader.h"
#include "lrd/Times.h"
#include "platform/QELVARDOSFileLayer.h"

namespace lrd {

namespace {

struct Options {
  std::vector<std::string> files;
  bool json = false;
};

struct Field {
  const char* name;
  ZYMUnicodeString (*read)(const QELXIVARDOSLRDObject& record);
  /// Whether the field tells something of every record, even when it is empty.
  bool isCore;
};

using Record = QELXIVARDOSLRDObject;

constexpr std::array FieldsBeforeStamps = {
    Field{"class", [](const Record& record) -> ZYMUnicodeString { return record.IsA(); }, true},
    Field{"version", [](const Record& record) { return record.GetVersion(); }, true},
    Field{"id", [](const Record& record) { return record.GetId(); }, false},
    Field{"phid", [](const Record& record) { return record.GetPhysicalId(); }, true},
    Field{"objectChangeStamp", [](const Record& record) { return record.GetObjectChangeStamp(); }, true},
    Field{"ceStamp", [](const Record& record) { return record.GetCEStamp(); }, true},
};
constexpr std::array FieldsBehindStamps = {
    Field{"hashcode", [](const Record& record) { return record.GetHashcode(); }, true},
    Field{"childPhid", [](const Record& record) { return record.GetChildPhid(); }, false},
};

/// Calls visit with the name of each field, its value and whether it is core, in the order of a record file.
template <typename Visit>
void ForEachField(const Record& record, const Visit& visit) {
  for (const Field& field : FieldsBeforeStamps) {
    visit(field.name, field.read(record).Str(), field.isCore);
  }
  for (const ZYMUnicodeString& name : record.GetStampNames()) {
    visit(name.CStr(), record.GetStamp(name).Str(), false);
  }
  for (const Field& field : FieldsBehindStamps) {
    visit(field.name, field.read(record).Str(), field.isCore);
  }
}

/// The object file of a record file, as it is now.
struct ObjectFile {
  /// Empty when there is none.
  std::string path;
  std::int64_t stamp = 0;
  bool agrees = false;
  /// Why it is not known whether there is one, or how old it is: the place and the reason; empty when all is known.
  std::string fault;
};

class Viewer {
 public:
  ObjectFile ObjectFileOf(const std::string& recordFile, const QELXIVARDOSLRDObject_var& record) {
    const RecordPlace place = PlaceOf(recordFile);
    if (place.record.empty()) {
      return {};
    }
    const ObjectFiles& files = FilesIn(place.folder);
    const auto found = files.newest.find(place.record);
    if (found == files.newest.end()) {
      return {"", 0, false, files.fault};
    }
    const std::string path = Join(place.folder, found->second);
    const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(path);
    if (facts.error) {
      return {"", 0, false, path + ": " + facts.error.message()};
    }
    ObjectFile object{path, facts.modified, false, {}};
    object.agrees = std::to_string(object.stamp) == record->GetObjectChangeStamp().Str();
    return object;
  }

 private:
  struct ObjectFiles {
    /// By the name of the record.
    std::map<std::string, std::string> newest;
    /// Why some may be missing.
    std::string fault;
  };

  static ObjectFiles List(const std::string& path) {
    const CadFolder folder = ListCadFolder(path);
    const std::string name = path.empty() ? "." : path;
    return {folder.NewestObjectFiles(Naming::Either), folder.fault.empty() ? "" : name + ": " + folder.fault};
  }

  /// A folder is listed once, however many of its records are shown.
  const ObjectFiles& FilesIn(const std::string& folder) {
    const auto known = files_.find(folder);
    return known != files_.end() ? known->second : files_.emplace(folder, List(folder)).first->second;
  }

  std::map<std::string, ObjectFiles> files_;
};

Json AsJson(const QELXIVARDOSLRDObject_var& record) {
  Json json;
  ForEachField(*record,
               [&json](const char* name, const std::string& value, bool /*isCore*/) { PutText(json, name, value); });
  json["children"] = Json::array();
  for (const QELXIVARDOSLRDObject_var& child : record->GetChildren()) {
    json["children"].push_back(AsJson(child));
  }
  return json;
}

Json AsJson(const std::string& file, const QELXIVARDOSLRDObject_var& record, const ObjectFile& object) {
  Json json;
  PutText(json, "file", file);
  json.update(AsJson(record));
  const bool there = !object.path.empty();
  if (there) {
    PutText(json, "objectFile", object.path);
  } else {
    json["objectFile"] = nullptr;
  }
  json["objectFileStamp"] = there ? Json(std::to_string(object.stamp)) : Json();
  json["stampAgrees"] = there ? Json(object.agrees) : Json();
  return json;
}

std::string Line(int depth, std::string_view label, const std::string& value) {
  constexpr std::size_t LabelWidth = 19;
  std::string line(static_cast<std::size_t>(depth) * 2, ' ');
  line += label;
  line.resize(std::max(line.size() + 1, static_cast<std::size_t>(depth) * 2 + LabelWidth), ' ');
  return line + value + "\n";
}

std::string Readable(std::string_view field, const std::string& value) {
  const auto seconds = field == "objectChangeStamp" ? SecondsOf(value) : std::nullopt;
  return value.empty() ? "-" : Printable(value) + (seconds ? " (" + TimeText(*seconds) + ")" : "");
}

std::string InWords(const ObjectFile& object, const QELXIVARDOSLRDObject_var& record) {
  if (!object.fault.empty()) {
    return "could not be looked at";
  }
  if (object.path.empty()) {
    return "gone, or the record lies in no record folder";
  }
  const std::string times = Printable(object.path) + ", " + TimeText(object.stamp) + ", ";
  if (object.agrees) {
    return times + "agrees with the record";
  }
  const std::string& stamp = record->GetObjectChangeStamp().Str();
  const auto recorded = SecondsOf(stamp);
  if (!recorded) {
    return times + (stamp.empty() ? "the record has no stamp" : "the record has a stamp that is no time");
  }
  return times + DistanceText(object.stamp, *recorded) + (object.stamp > *recorded ? " newer" : " older") +
         " than the record says";
}

void PrintFields(const QELXIVARDOSLRDObject_var& record, int depth) {
  ForEachField(*record, [depth](const char* name, const std::string& value, bool isCore) {
    if (!value.empty() || (depth == 1 && isCore)) {
      Print(Line(depth, name, Readable(name, value)));
    }
  });
}

void PrintChildren(const QELXIVARDOSLRDObject_var& record, int depth) {
  for (const QELXIVARDOSLRDObject_var& child : record->GetChildren()) {
    Print("\n");
    PrintFields(child, depth);
    PrintChildren(child, depth + 1);
  }
}

int ShowRecords(const Options& options) {
  RecordReader reader;
  Viewer viewer;
  Json shown = Json::array();
  int status = Done;
  RecordsAhead ahead(options.files.size(), [&](std::size_t record) { return options.files[record]; });
  for (const std::string& file : options.files) {
    EndWhenAsked();
    ahead.Before(static_cast<std::size_t>(&file - options.files.data()));
    const RecordReading reading = reader.Read(file);
    if (reading.fault != RecordFault::None) {
      Complain(file, reading.reason);
      status = ModuleRefused;
      Json& unread = shown.emplace_back();
      PutText(unread, "file", file);
      PutText(unread, "error", reading.reason);
      continue;
    }
    const ObjectFile object = viewer.ObjectFileOf(file, reading.record);
    if (!object.fault.empty()) {
      Complain(object.fault);
      status = ModuleRefused;
    }
    if (options.json) {
      shown.push_back(AsJson(file, reading.record, object));
      continue;
    }
    Print((&file == &options.files.front() ? "" : "\n") + Printable(file) + "\n");
    PrintFields(reading.record, 1);
    Print(Line(1, "object file", InWords(object, reading.record)));
    PrintChildren(reading.record, 2);
  }
  if (options.json) {
    PrintJson(shown);
  }
  return status;
}

}  // namespace

Run PrepareShow(CLI::App& arguments) {
  const auto options = std::make_shared<Options>();
  arguments.add_option("RECORD", options->files, "Record files.")->required()->option_text(" ");
  arguments.add_flag("--json", options->json, "Print one JSON document: an array with an object for each file.");
  arguments.footer(JsonHelp);
  return [options] { return ShowRecords(*options); };
}

}  // namespace lrd
