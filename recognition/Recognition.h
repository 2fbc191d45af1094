#pragma once

#include <optional>
#include <system_error>
#include <vector>

#include "component/QELXIVARDOSObserver.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/QELVARDOSFileLayer.h"
#include "recognition/ObjectsById.h"
#include "recognition/QELXVARDOSRecognitionHandlerNoLRD.h"
#include "recognition/ReasonDetails.h"
#include "recognition/RequestRelationships.h"
#include "recognition/SharedRecord.h"
#include "records/QELXVARDOSLRDFactory.h"
#include "xmlhandlers/RecordFileReader.h"

/// One recognition of one request. It owns what the objects of the request share, and ends with the call. The steps of
/// the trace bear the name of the handler that starts it.
class Recognition {
 public:
  using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

  /// What the handler knows.
  struct Client {
    ZYMUnicodeString command;
    /// The CAD system's name for record paths.
    ZYMUnicodeString cadName;
    QELIVARDOSGlobalConfigObject_var config;
    /// May be null.
    QELXIVARDOSObserver* observer;
    /// Whether a record that cannot be taken costs its own object alone.
    bool keepGoing = false;
  };

  /// list: the objects of the request.
  Recognition(Client client, const ZYMIDOMElement_var& request, const ZYMIDOMElement_var& list);
  Recognition(const Recognition&) = delete;
  Recognition& operator=(const Recognition&) = delete;

  /// Writes verdict and stamps into each object, in order, until one fails. requestRecords: the records that the
  /// request itself carries, by CAD id; they are brought up to date.
  HRESULT Run(const RecordMap& requestRecords);

 private:
  using Record = QELXIVARDOSLRDObject_var;
  using Paths = QELXVARDOSLRDFactory::Paths;
  using Reasons = QELXIVARDOSObserver::Reasons;

  struct Asked;
  struct Found;
  /// A place that could not be looked at, though the verdict on the object rests on it.
  struct Doubt {
    ZYMUnicodeString path;
    std::error_code reason;
  };
  /// The object that is being recognised.
  struct Object {
    ZYMIDOMElement_var element;
    Paths paths{};
    /// Its file as it was found when it was first looked at.
    QELVARDOSFileFacts file{};
    /// Whether it is looked for among the entries of a record: of its composition's or, without one, of its own.
    bool asEntry = false;
    std::optional<Paths> composition{};
    std::optional<Doubt> doubt{};
    /// Why there is no record, if there is none.
    QELXVARDOSReason::Kind why = QELXVARDOSReason::Kind::NoRecord;
    /// Of a record that is not known.
    ZYMUnicodeString unknownVersion{};
    /// The record files that its compositions have not; kept for an observer alone.
    std::vector<ZYMUnicodeString> missingRecordFiles{};
  };

  HRESULT ReadIds();
  HRESULT Recognize(const ZYMIDOMElement_var& element, const RecordMap& requestRecords);
  HRESULT RecognizeByRecords(const ZYMIDOMElement_var& element, const Asked& asked, const Record& requestRecord);

  // Where the record of an object is, and what it is.
  HRESULT getLRDObject(Object& object, SharedRecord*& record);
  bool ShouldCheckInParent(Object& object) const;
  std::optional<Paths> PathsInComposition(Object& object);
  HRESULT ReadShared(Object& object, SharedRecord*& record);
  HRESULT ReadOwn(Object& object, SharedRecord*& record);
  HRESULT Read(const ZYMUnicodeString& recordFile, Record& record, std::error_code& error);
  static void NoteNoRecord(Object& object, const ZYMUnicodeString& unknownVersion);
  /// E_FAIL.
  static HRESULT CannotTell(Object& object, const ZYMUnicodeString& path, const std::error_code& reason);

  // What the record says of the object.
  void DecideByEntry(const Object& object, const Record& requestRecord, SharedRecord& record, Found& found);
  static void RecognizeFromRel(const Record& requestRecord, SharedRecord& record, Found& found);
  /// Both answer the first failure to complete a relationship.
  HRESULT DecideByStamps(const Object& object, const Record& record, Found& found);
  HRESULT CompleteRelationships(const Record& record);

  HRESULT WriteBack(const Object& object, const Asked& asked, const Found& found) const;
  void Tell(Object& object, Found& found, SharedRecord* record);

  Client client_;
  QELVARDOSFileLookups lookups_;
  ZYMIDOMElement_var request_;
  ZYMIDOMElement_var list_;
  ObjectsById objects_;
  QELXVARDOSLRDFactory factory_;
  RecordFileReader reader_;
  ZYMHandle<QELXVARDOSRecognitionHandlerNoLRD> byPhysicalId_;
  /// Goes from object to object: one that was found in a record leaves that record's version to those behind it.
  ZYMUnicodeString version_;
  SharedRecords shared_;
  SharedRecord own_;
  const Reasons reasons_;
  /// How many objects are decided, whoever is told.
  int decided_ = 0;
  /// For an observer that wants them.
  std::optional<ReasonDetails> details_;
  /// Made when a record first has relationships.
  std::optional<RequestRelationships> relationships_;
};
