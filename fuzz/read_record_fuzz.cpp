// Reads any bytes as a record file. What was read must be linked as the file nests it, and writing it must settle: what
// a record file says may be lost once, where its format keeps less than it reads, and never again.

#include <algorithm>
#include <string>

#include "fuzz/FuzzInput.h"
#include "platform/ZYMNullHandleError.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

namespace {

using Record = QELXIVARDOSLRDObject_var;
using RecordList = QELXIVARDOSLRDObject_varList;

bool AreAllOf(const RecordList& records, const ZYMUnicodeString& className) {
  return std::all_of(records.begin(), records.end(),
                     [&className](const Record& record) { return record->IsAKindOf(className.CStr()); });
}

/// Whether part holds nothing that whole does not hold, in the same order.
bool IsPartOf(const RecordList& part, const RecordList& whole) {
  auto next = part.begin();
  for (const Record& record : whole) {
    if (next != part.end() && *next == record) {
      ++next;
    }
  }
  return next == part.end();
}

void RequireConsistentLists(const Record& record) {
  const RecordList& children = record->GetChildren();
  const RecordList& relationships = record->GetChildRelationships();
  const RecordList& related = record->GetRelatedChildren();
  Require(AreAllOf(relationships, ClassName::Rel), "no relationship among the relationships");
  Require(AreAllOf(related, ClassName::Child), "no child record among the related children");
  if (record->IsAKindOf(ClassName::FullV2.CStr())) {
    Require(AreAllOf(children, ClassName::Composition), "a record by path holds more than compositions");
  } else {
    Require(IsPartOf(relationships, children) && IsPartOf(related, children), "a linked record is no child");
  }
  Require(record->GetParentRelationships().Size() == 0, "a file makes no parent relationships");
  for (const RecordList* list : {&children, &relationships, &related}) {
    for (const Record& nested : *list) {
      RequireConsistentLists(nested);
    }
  }
}

class Reader {
 public:
  /// Null when the file is refused, or holds no record.
  Record Read(const std::string& path) {
    Record record;
    const HRESULT status = handler_->ReadLRDFile(path, record);
    Require(SUCCEEDED(status) || record.IsNull(), "a record in spite of a failure");
    return record;
  }
  /// The bytes of the record's file.
  std::string Write(const Record& record, const std::string& path) {
    record->SetLRDFilePath(ZYMUnicodeString(path));
    RecordList records;
    records.Append(record);
    handler_->WriteToFile(records);
    std::string bytes;
    Require(!QELVARDOSFileLayer::Current().Read(path, bytes, QELVARDOSFileLayer::AnySize),
            "a record that was read cannot be written");
    return bytes;
  }

 private:
  ZYMHandle<QELXVARDOSLRDXMLHandler> handler_ = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>();
};

/// Whether the record's file, when written, calls for the same classes again. The oldest ones need no version; of the
/// others only those from "4.0" on write the version that they read.
bool KeepsItsClass(const Record& record) {
  const ZYMUnicodeString name = record->IsA();
  return name == ClassName::Full || name == ClassName::Child || name == ClassName::Composition ||
         name == ClassName::Rel || record->IsAKindOf(ClassName::FullV4.CStr());
}

void ReadAndWrite(MemoryFiles& files, std::string_view bytes) {
  const std::string path = "work/.KORVANTHEMIX/part.prt.xml";
  files.Put(path, bytes);
  Reader reader;
  const Record record = reader.Read(path);
  if (record.IsNull()) {
    return;
  }
  RequireConsistentLists(record);
  const std::string first = reader.Write(record, path);
  const Record again = reader.Read(path);
  Require(!again.IsNull(), "a written record does not read");
  const std::string second = reader.Write(again, path);
  Require(second == first || !KeepsItsClass(record), "a record changes when it is written again");
  Require(reader.Write(reader.Read(path), path) == second, "writing a record does not settle");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const LivingCheck living;
  MemoryFiles files;
  try {
    ReadAndWrite(files, {reinterpret_cast<const char*>(data), size});
  } catch (const ZYMNullHandleError&) {
    // The file lacks an element that a record must have. Only the first reading can say so.
    Require(files.ChangedFiles().empty(), "a written record lacks an element");
  }
  return 0;
}
