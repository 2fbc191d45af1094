#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "component/QELXIVARDOSLRDObject.h"
#include "platform/HRESULT.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMKeyedHash.h"

/// Records by a string of theirs that does not change while the index lives; of equal strings the first counts, and the
/// empty string finds nothing.
class RecordIndex {
 public:
  void Add(const ZYMUnicodeString& key, const QELXIVARDOSLRDObject_var& record) {
    if (!key.IsEmpty()) {
      records_.try_emplace(key.View(), record);
    }
  }
  static RecordIndex ById(const QELXIVARDOSLRDObject_varList& records);

  /// Null when there is none.
  QELXIVARDOSLRDObject_var Find(const ZYMUnicodeString& key) const {
    const auto found = records_.find(key.View());
    return found == records_.end() ? QELXIVARDOSLRDObject_var() : found->second;
  }
  /// What is found for the id of the last record in wanted for which something is found.
  QELXIVARDOSLRDObject_var FindLast(const QELXIVARDOSLRDObject_varList& wanted) const;

 private:
  std::unordered_map<std::string_view, QELXIVARDOSLRDObject_var, ZYMKeyedHash> records_;
};

/// The record of an object, which holds entries of others. They are indexed when they are first asked for, so that N
/// entries are found in time proportional to N.
class SharedRecord {
 public:
  SharedRecord() = default;
  explicit SharedRecord(const QELXIVARDOSLRDObject_var& record) : record_(record) {}

  const QELXIVARDOSLRDObject_var& Get() const { return record_; }
  /// As QELXIVARDOSLRDObject::GetChildObject, but null for the empty id: nobody is told apart by it.
  QELXIVARDOSLRDObject_var FindChild(const ZYMUnicodeString& id);
  /// As QELXVARDOSRecognitionHandler::GetchildLRDObjStructureLrdList for the relationships of this record.
  QELXIVARDOSLRDObject_var FindRelationship(const QELXIVARDOSLRDObject_varList& wanted);
  QELXIVARDOSLRDObject_var FindRelatedChild(const ZYMUnicodeString& physicalId);
  /// The identifiers of entries that are this one but for the case of letters and the version of a file name; of many
  /// the first few.
  std::vector<ZYMUnicodeString> IdentifiersLike(const ZYMUnicodeString& id);

 private:
  QELXIVARDOSLRDObject_var record_;
  std::optional<RecordIndex> children_;
  std::optional<RecordIndex> relationships_;
  std::optional<RecordIndex> relatedChildren_;
  using Likenesses = std::unordered_map<std::string, std::vector<ZYMUnicodeString>, ZYMKeyedHash>;
  std::optional<Likenesses> likenesses_;
};

/// The record files of compositions, each looked at once and read at most once.
class SharedRecords {
 public:
  struct File {
    QELVARDOSFileFacts facts;
    bool read = false;
    SharedRecord record;
    /// Of a record of a format version that is not known.
    ZYMUnicodeString unknownVersion;
    /// How reading ended, and why; for a host that keeps going, who is told so for each entry.
    HRESULT status = S_OK;
    std::error_code error;
    std::string failure;
  };
  /// The file's facts are looked up when it is first asked for; its record is for the caller to read.
  File& At(const ZYMUnicodeString& recordFile);

 private:
  std::unordered_map<std::string, File, ZYMKeyedHash> files_;
};
