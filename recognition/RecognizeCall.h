#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMKeyedHash.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "recognition/QELXVARDOSRecognitionHandlerNoLRD.h"
#include "records/Dom.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDFactory.h"
#include "xmlhandlers/RecordFileReader.h"

/// Calls visit with each object of the list and its CAD id, which may be empty. Answers the status of the last id read.
template <typename Visit>
HRESULT ForEachCadId(const ZYMIDOMNode_var& cadobjectlist, const Visit& visit) {
  HRESULT status = S_OK;
  ForEachChildElement(cadobjectlist, [&](const ZYMIDOMElement_var& object) {
    ZYMUnicodeString cadId;
    status = object->getAttribute(Word::CadId, cadId);
    visit(object, cadId);
    return true;
  });
  return status;
}

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

/// A record file that other objects may stand in, read at most once. Its entries are indexed when they are first asked
/// for, so that N entries are found in time proportional to N.
class ParentRecord {
 public:
  ParentRecord() = default;
  explicit ParentRecord(const QELXIVARDOSLRDObject_var& record) : record_(record) {}

  const QELXIVARDOSLRDObject_var& Get() const { return record_; }
  /// As QELXIVARDOSLRDObject::GetChildObject, but null for the empty id: nobody is told apart by it.
  QELXIVARDOSLRDObject_var FindChild(const ZYMUnicodeString& id);
  /// As QELXVARDOSRecognitionHandler::GetchildLRDObjStructureLrdList for the relationships of this record.
  QELXIVARDOSLRDObject_var FindRelationship(const QELXIVARDOSLRDObject_varList& wanted);
  QELXIVARDOSLRDObject_var FindRelatedChild(const ZYMUnicodeString& physicalId);

 private:
  QELXIVARDOSLRDObject_var record_;
  std::optional<RecordIndex> children_;
  std::optional<RecordIndex> relationships_;
  std::optional<RecordIndex> relatedChildren_;
};

/// The relationships of a request that have no physical id, by their "reluuid". However many relationships and records
/// share one id, each relationship is completed twice at most: with an empty physical id, and with one that is not.
class RequestRelationships {
 public:
  explicit RequestRelationships(const ZYMIDOMNode_var& request);
  /// Gives each of them that is one of the record's the physical id that the record knows.
  void Complete(const QELXIVARDOSLRDObject_var& record);

 private:
  /// The number of an entry, counted from 1; 0: none.
  using Number = std::uint32_t;
  // A table of its own, since the hash alone keeps an entry small: the id itself is looked up in the element.
  struct Entry {
    ZYMIDOMElement_var element;
    std::uint32_t hash;
    Number next;
  };
  // As many as a power of two.
  using Chains = std::vector<Number>;
  static Number& ChainOf(Chains& chains, std::uint32_t hash) { return chains[hash & (chains.size() - 1)]; }
  void Complete(const ZYMUnicodeString& id, const ZYMUnicodeString& physicalId);
  void CompleteThoseIn(Chains& chains, const ZYMUnicodeString& id, std::uint32_t hash,
                       const ZYMUnicodeString& physicalId);

  std::vector<Entry> entries_;
  Chains untouched_;
  // Completed with an empty physical id so far: only another one changes them.
  Chains emptied_;
};

/// What the objects of one Recognize share. Nothing of it outlives the call.
class QELXVARDOSRecognitionHandler::RecognizeCall {
 public:
  /// unmapped: the list of the request's objects, unless they are mapped by their CAD ids already.
  RecognizeCall(QELXVARDOSRecognitionHandler& handler, const ZYMIDOMNode_var& request,
                const ZYMIDOMElement_var& unmapped);
  ~RecognizeCall();
  RecognizeCall(const RecognizeCall&) = delete;
  RecognizeCall& operator=(const RecognizeCall&) = delete;

  /// The object that is being recognised: its paths, and its file as it was found when it was first looked at.
  struct Object {
    QELXVARDOSLRDFactory::Paths paths;
    QELVARDOSFileFacts file;
  };
  const ZYMIDOMNode_var& Request() const { return request_; }

  /// The map of the request's objects, filled when it is first asked for.
  const ZYMIDOMNode_varZYMUnicodeStringDico& Filled(ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap);
  /// Takes up the next object.
  void Begin(const ZYMIDOMElement_var& object);
  const Object& Current() const { return object_; }

  /// What is known of the record file of another object.
  const QELVARDOSFileFacts& ParentFacts(const ZYMUnicodeString& recordFile);
  /// Reads it, or answers what was read before.
  HRESULT ReadParent(const ZYMUnicodeString& recordFile, QELXIVARDOSLRDObject_var& record);
  QELVARDOSFileFacts OwnRecordFacts() const;

  /// A place that could not be looked at, though the verdict on the current object rests on it.
  struct Doubt {
    ZYMUnicodeString path;
    std::error_code reason;
  };
  /// E_FAIL.
  HRESULT CannotTell(const ZYMUnicodeString& path, const std::error_code& reason);
  const std::optional<Doubt>& DoubtOnObject() const { return doubt_; }
  /// The verdict turns out not to rest on it.
  void ForgetDoubt() { doubt_.reset(); }
  /// Reads the record file of the current object; when there is none, record stays null and the status is 0.
  HRESULT ReadOwn(QELXIVARDOSLRDObject_var& record);
  /// The record in which the current object is an entry.
  ParentRecord& Parent() { return *parent_; }

  RequestRelationships& Relationships();
  QELXVARDOSRecognitionHandlerNoLRD& ByPhysicalId() { return *byPhysicalId_; }

 private:
  struct ParentFile {
    QELVARDOSFileFacts facts;
    bool read = false;
    ParentRecord record;
  };
  static RecordFileReader ReaderFor(const QELXVARDOSRecognitionHandler& handler);
  ParentFile& ParentAt(const ZYMUnicodeString& recordFile);

  QELXVARDOSRecognitionHandler& handler_;
  QELVARDOSFileLookups lookups_;
  ZYMIDOMNode_var request_;
  ZYMIDOMElement_var unmapped_;
  ZYMUnicodeString cadName_;
  QELXVARDOSLRDFactory factory_;
  RecordFileReader reader_;
  ZYMHandle<QELXVARDOSRecognitionHandlerNoLRD> byPhysicalId_;
  Object object_;
  std::optional<Doubt> doubt_;
  std::unordered_map<std::string, ParentFile, ZYMKeyedHash> parents_;
  ParentRecord own_;
  ParentRecord* parent_ = nullptr;
  std::optional<RequestRelationships> relationships_;
};
