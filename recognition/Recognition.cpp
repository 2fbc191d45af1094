#include "recognition/Recognition.h"

#include <utility>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSFileError.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "recognition/ObjectsOfTree.h"
#include "records/FileStamp.h"
#include "records/HostLeave.h"
#include "records/IncompleteRecord.h"
#include "records/ObjectsAhead.h"
#include "records/QELXVARDOSIdentifier.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDVersionInfo.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

QELXVARDOS_TRACED_HERE;

namespace {

using Reason = QELXVARDOSReason;

QELVARDOSFileFacts Facts(const ZYMUnicodeString& path) { return QELVARDOSFileLayer::Current().Stat(path.Str()); }

RecordFileReader ReaderFor(const Recognition::Client& client) {
  const auto files = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>(client.config);
  files->SetObserver(client.observer);
  return files->Reader();
}

/// The stamps of a record as they are written back; all empty without one.
struct WrittenStamps {
  explicit WrittenStamps(const QELXIVARDOSLRDObject_var& record) {
    if (record) {
      physicalId = &record->GetPhysicalId();
      ceStamp = &record->GetCEStamp();
      hashcode = &record->GetHashcode();
      macroCEStamp = record->GetMacroCEStamp();
      xsStamp = record->GetXSStamp();
    }
  }

  inline static const ZYMUnicodeString None;
  const ZYMUnicodeString* physicalId = &None;
  const ZYMUnicodeString* ceStamp = &None;
  const ZYMUnicodeString* hashcode = &None;
  ZYMUnicodeString macroCEStamp;
  ZYMUnicodeString xsStamp;
};

Reason::Kind WhyModified(const QELVARDOSFileFacts& file, const ZYMUnicodeString& recordStamp) {
  if (recordStamp.IsEmpty()) {
    return Reason::Kind::RecordWithoutStamp;
  }
  const std::optional<std::int64_t> seconds = SecondsOf(recordStamp);
  if (!seconds) {
    return Reason::Kind::StampIsNoTime;
  }
  // Of equal times only one is written as times are.
  return file.modified == *seconds  ? Reason::Kind::StampIsNoTime
         : file.modified < *seconds ? Reason::Kind::FileOlder
                                    : Reason::Kind::FileNewer;
}

/// A record of the first version does not know it.
ZYMUnicodeString VersionOf(const SharedRecord& record) {
  ZYMUnicodeString version = record.Get()->GetVersion();
  return version.IsEmpty() ? FormatVersion::V0 : version;
}

}  // namespace

/// What the request says of an object before it is recognised.
struct Recognition::Asked {
  explicit Asked(const ZYMIDOMElement_var& object)
      : physicalId(Attribute(object, Word::Phid)),
        cadId(Attribute(object, Word::CadId)),
        ceStamp(Attribute(object, Word::CEStamp)),
        xsStamp(HasAttribute(object, Word::XSStamp) ? Attribute(object, Word::XSStamp) : Word::NotPresent) {}

  ZYMUnicodeString physicalId;
  ZYMUnicodeString cadId;
  ZYMUnicodeString ceStamp;
  ZYMUnicodeString xsStamp;
};

/// What is written into an object that was looked up among the records, and why.
struct Recognition::Found {
  const ZYMUnicodeString* verdict = &WrittenStamps::None;
  /// Whose stamps are written; null: none are known.
  Record record;
  ZYMUnicodeString objectChangeStamp;
  Reason::Kind why = Reason::Kind::NoRecord;
  /// What the object was looked for by in another's record.
  ZYMUnicodeString identifier;
  /// Through which it was found there.
  ZYMUnicodeString relationship;
};

Recognition::Recognition(Client client, const ZYMIDOMElement_var& request, const ZYMIDOMElement_var& list)
    : client_(std::move(client)),
      request_(request),
      list_(list),
      objects_(list),
      reader_(ReaderFor(client_)),
      byPhysicalId_(ZYMMakeComponent<QELXVARDOSRecognitionHandlerNoLRD>(client_.command)),
      reasons_(client_.observer == nullptr ? Reasons::None : client_.observer->WantsReasons()) {
  byPhysicalId_->SetObserver(client_.observer);
  if (reasons_ == Reasons::Detailed) {
    details_.emplace(client_.config, *client_.observer, CountObjects(list_));
    reader_.KeepFacts();
  }
}

HRESULT Recognition::Run(const RecordMap& requestRecords) {
  HRESULT status = ReadIds();
  version_ = QELXVARDOSLRDVersionInfo().GetLRDVersion(request_);
  if (FAILED(status)) {
    return status;
  }
  const HostLeave leave(client_.observer, HostLeave::Stage::Recognizing,
                        client_.observer == nullptr ? 0 : CountObjects(list_));
  using Kind = QELVARDOSFileLook::Kind;
  ObjectsAhead ahead(list_, client_.cadName, details_ ? Kind::ContentWithFacts : Kind::Content);
  int done = 0;
  ForEachChildElement(list_, [&](const ZYMIDOMElement_var& element) {
    status = done > 0 ? leave.Ask(done) : S_OK;
    if (SUCCEEDED(status)) {
      ahead.Before(done);
      status = Recognize(element, requestRecords);
    }
    ++done;
    return SUCCEEDED(status);
  });
  if (details_) {
    details_->TellOfSharing();
  }
  return status;
}

/// Nothing is touched when an id cannot be read.
HRESULT Recognition::ReadIds() {
  const HRESULT status = Step(Trace, "QELXVARDOSRecognitionHandler::getCadidObjectNodeMap").Return(objects_.Status());
  Trace.Write(" Size of CADId XML Node Map = ", [this] { return objects_.Size(); });
  Trace.Write(" Number of cadobjlist child nodes = ", [&] { return SUCCEEDED(status) ? ChildCount(list_) : 0; });
  return status;
}

HRESULT Recognition::Recognize(const ZYMIDOMElement_var& element, const RecordMap& requestRecords) {
  const Asked asked(element);
  const Record requestRecord = asked.cadId.IsEmpty() ? Record() : requestRecords[asked.cadId];
  HRESULT status = S_OK;
  if (!asked.physicalId.IsEmpty()) {
    Trace.Write("Recognizing the object using physicalId of object cadid : ", asked.cadId);
    status = byPhysicalId_->RecognizePerNode(element, version_);
    ++decided_;
  } else {
    Trace.Write("Recognizing the object using LRD of object cadid : ", asked.cadId);
    status = RecognizeByRecords(element, asked, requestRecord);
  }
  if (requestRecord) {
    requestRecord->UpdateLRDObjectFromXML(element);
  }
  return status;
}

HRESULT Recognition::RecognizeByRecords(const ZYMIDOMElement_var& element, const Asked& asked,
                                        const Record& requestRecord) {
  Object object{element};
  Found found;
  SharedRecord* record = nullptr;
  HRESULT status = S_OK;
  try {
    status = getLRDObject(object, record);
  } catch (const IncompleteRecord&) {
    found.why = Reason::Kind::RecordDamaged;
    Tell(object, found, nullptr);
    throw;
  }
  if (object.doubt) {
    found.why = Reason::Kind::CannotBeLookedAt;
    QELVARDOSSystemUtils::SetLastError(object.doubt->path.Str() + ": " + object.doubt->reason.message());
    Trace.Write("Cannot be looked at : ", QELVARDOSSystemUtils::LastError());
  } else if (record == nullptr) {
    Trace.Write("No LRD file on disc");
    found.why = FAILED(status) ? Reason::Kind::RecordDamaged : object.why;
    found.verdict = FAILED(status) && client_.keepGoing ? &WrittenStamps::None : &Word::Unknown;
  } else {
    Trace.Write("LRD file present on disc");
    if (object.asEntry) {
      DecideByEntry(object, requestRecord, *record, found);
    } else {
      status = DecideByStamps(object, record->Get(), found);
    }
  }
  const bool isKnown = found.verdict == &Word::Exists || found.verdict == &Word::ModifiedVerdict;
  if (isKnown && Attribute(element, Word::Modified) == Word::UpperTrue) {
    found.verdict = &Word::ModifiedVerdict;
    found.why = Reason::Kind::MarkedAsModified;
  }
  // Who keeps going passes over records, not over a tree that cannot be written.
  if (record == nullptr && client_.keepGoing) {
    status = S_OK;
  }
  const HRESULT written = WriteBack(object, asked, found);
  if (SUCCEEDED(written)) {
    Tell(object, found, record);
  }
  return FAILED(status) ? status : written;
}

/// record stays null where there is none.
HRESULT Recognition::getLRDObject(Object& object, SharedRecord*& record) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::getLRDObject");
  object.paths = factory_.PathsOf(client_.cadName, object.element);
  object.file = Facts(object.paths.objectFile.ToString());
  object.asEntry = ShouldCheckInParent(object);
  // The paths of the object itself stand unless a composition has a record, so a parent is never asked.
  object.composition = object.asEntry ? PathsInComposition(object) : std::nullopt;
  if (Attribute(object.element, Word::RecognizeAsNew) == Word::UpperTrue) {
    if (object.composition || Facts(object.paths.recordFile).Exists()) {
      Trace.Write("Object is marked as recognise as new ");
    }
    object.why = Reason::Kind::MarkedAsNew;
    object.doubt.reset();
    return step.Return(S_OK);
  }
  if (object.doubt) {
    return step.Return(E_FAIL);
  }
  const HRESULT status = object.composition ? ReadShared(object, record) : ReadOwn(object, record);
  if (record != nullptr && object.file.error && !object.asEntry) {
    record = nullptr;
    return step.Return(CannotTell(object, object.paths.objectFile.ToString(), object.file.error));
  }
  if (record != nullptr) {
    const Paths& place = object.composition ? *object.composition : object.paths;
    record->Get()->SetObjectFilePath(place.objectFile);
    record->Get()->SetStateFlag(object.asEntry);
  }
  return step.Return(status);
}

/// Whether the object is looked for in the record of its composition. What could not be looked at matters only where
/// the two answers lead to different records.
bool Recognition::ShouldCheckInParent(Object& object) const {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::ShouldCheckInParent");
  ZYMUnicodeStringList compositions;
  QELXVARDOSIdentifier(object.element).IdentifyComposition(compositions);
  if (object.file.kind == QELVARDOSFileFacts::Kind::Missing) {
    return step.Return(true);
  }
  if (compositions.Size() == 0) {
    return step.Return(false);
  }
  const QELVARDOSFileFacts own = Facts(object.paths.recordFile);
  if (own.kind == QELVARDOSFileFacts::Kind::Missing) {
    return step.Return(true);
  }
  if (client_.config->IsTypeInCategory(Attribute(object.element, Word::Type),
                                       QELXVARDOSLRDConstants::TYPE_OBJECTWITHOUTFILE_LIKE)) {
    return step.Return(true);
  }
  if (object.file.error) {
    CannotTell(object, object.paths.objectFile.ToString(), object.file.error);
  } else if (own.error) {
    CannotTell(object, object.paths.recordFile, own.error);
  }
  return step.Return(false);
}

/// The paths of the first object of the composition that has a record file. One that cannot be looked at ends the
/// search.
std::optional<Recognition::Paths> Recognition::PathsInComposition(Object& object) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetObjectFileLRDFileFromComposition");
  ZYMUnicodeStringList compositions;
  QELXVARDOSIdentifier(object.element).IdentifyComposition(compositions);
  std::optional<Paths> found;
  for (auto cadId = compositions.begin(); cadId != compositions.end() && !found && !object.doubt; ++cadId) {
    if (const ZYMIDOMNode_var* member = objects_.Find(*cadId); member != nullptr) {
      Paths paths = factory_.PathsOf(client_.cadName, ZYMIDOMElement_var(*member));
      const QELVARDOSFileFacts& facts = shared_.At(paths.recordFile).facts;
      if (facts.error) {
        CannotTell(object, paths.recordFile, facts.error);
      } else if (facts.Exists()) {
        found = std::move(paths);
      } else if (reasons_ != Reasons::None) {
        object.missingRecordFiles.push_back(std::move(paths.recordFile));
      }
    }
  }
  step.Return(S_OK);
  return found;
}

HRESULT Recognition::ReadShared(Object& object, SharedRecord*& record) {
  const ZYMUnicodeString& recordFile = object.composition->recordFile;
  SharedRecords::File& file = shared_.At(recordFile);
  if (!file.read) {
    Record read;
    file.status = Read(recordFile, read, file.error);
    file.failure = FAILED(file.status) ? QELVARDOSSystemUtils::LastError() : "";
    file.unknownVersion = reader_.UnknownVersion();
    file.record = SharedRecord(read);
    file.read = true;
  }
  if (file.error && SUCCEEDED(file.status)) {
    // It was there when the composition was looked for.
    return CannotTell(object, recordFile, QELVARDOSFileError::ChangedMeanwhile);
  }
  if (RecordFileReader::LeavesOpen(file.error, recordFile)) {
    return CannotTell(object, recordFile, file.error);
  }
  if (FAILED(file.status)) {
    QELVARDOSSystemUtils::SetLastError(file.failure);
    return file.status;
  }
  record = file.record.Get() ? &file.record : nullptr;
  NoteNoRecord(object, file.unknownVersion);
  return S_OK;
}

HRESULT Recognition::ReadOwn(Object& object, SharedRecord*& record) {
  const ZYMUnicodeString& recordFile = object.paths.recordFile;
  Record read;
  std::error_code error;
  const HRESULT status = Read(recordFile, read, error);
  own_ = SharedRecord(read);
  record = read ? &own_ : nullptr;
  if (!error) {
    NoteNoRecord(object, reader_.UnknownVersion());
  }
  return RecordFileReader::LeavesOpen(error, recordFile) ? CannotTell(object, recordFile, error) : status;
}

/// Who keeps going takes an incomplete record for one more that is damaged.
HRESULT Recognition::Read(const ZYMUnicodeString& recordFile, Record& record, std::error_code& error) {
  try {
    return reader_.ReadIfPresent(recordFile, record, error);
  } catch (const IncompleteRecord&) {
    if (!client_.keepGoing) {
      throw;
    }
    return E_FAIL;
  }
}

/// What is the matter with a record file that was read, if there is no record in it.
void Recognition::NoteNoRecord(Object& object, const ZYMUnicodeString& unknownVersion) {
  object.why = unknownVersion.IsEmpty() ? Reason::Kind::NoKnownRecord : Reason::Kind::UnknownFormat;
  object.unknownVersion = unknownVersion;
}

HRESULT Recognition::CannotTell(Object& object, const ZYMUnicodeString& path, const std::error_code& reason) {
  object.doubt = Doubt{path, reason};
  return E_FAIL;
}

/// By the entry of the object in a record.
void Recognition::DecideByEntry(const Object& object, const Record& requestRecord, SharedRecord& record, Found& found) {
  Trace.Write("Recognizing object from parent its LRD");
  if (requestRecord) {
    RecognizeFromRel(requestRecord, record, found);
  }
  found.why = Reason::Kind::EntryOfRelationship;
  if (found.record.IsNull()) {
    found.identifier = factory_.GetIdentifier(client_.config, object.element);
    found.record = record.FindChild(found.identifier);
    found.why = Reason::Kind::EntryOfIdentifier;
  }
  if (found.record.IsNull()) {
    Trace.Write("Object is not present in its parent LRD ");
    found.verdict = &Word::Unknown;
    const bool isGone = !object.composition && object.file.kind == QELVARDOSFileFacts::Kind::Missing;
    found.why = isGone                       ? Reason::Kind::ObjectFileGone
                : found.identifier.IsEmpty() ? Reason::Kind::NoIdentifier
                                             : Reason::Kind::NoSuchEntry;
    return;
  }
  Trace.Write("Object is present in its parent LRD ");
  if (found.record->GetPhysicalId().IsEmpty()) {
    found.verdict = &Word::Unknown;
    found.why = Reason::Kind::EntryWithoutPhysicalId;
  } else {
    found.verdict = &Word::Exists;
  }
  version_ = record.Get()->GetVersion();
}

void Recognition::RecognizeFromRel(const Record& requestRecord, SharedRecord& record, Found& found) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::RecognizeFromRel");
  Record own;
  requestRecord->GetChildLRDObject(own);
  if (own && own->GetParentRelationships().Size() != 0 && record.Get()->GetChildRelationships().Size() != 0) {
    if (const Record relationship = record.FindRelationship(own->GetParentRelationships()); relationship) {
      found.record = record.FindRelatedChild(relationship->GetChildPhid());
      found.relationship = found.record ? relationship->GetId() : ZYMUnicodeString();
    }
  }
  step.Return(S_OK);
}

/// By the object's own record.
HRESULT Recognition::DecideByStamps(const Object& object, const Record& record, Found& found) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::GetFileTimeStamp");
  const ZYMUnicodeString fileStamp = StampOf(object.file.modified);
  Trace.Write("File stamp for file ", record->GetObjectFilePath().ToString(), " is : ", fileStamp);
  step.Return(S_OK);

  found.record = record;
  found.objectChangeStamp = record->GetObjectChangeStamp();
  // No order: a file that is older than its record is a modification too.
  if (found.objectChangeStamp == fileStamp) {
    found.verdict = &Word::Exists;
    found.why = Reason::Kind::StampsAgree;
  } else {
    found.verdict = &Word::ModifiedVerdict;
    found.why = WhyModified(object.file, found.objectChangeStamp);
  }
  version_ = record->GetVersion();
  return CompleteRelationships(record);
}

HRESULT Recognition::CompleteRelationships(const Record& record) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::UpdateRelNode");
  if (record->GetChildRelationships().Size() == 0) {
    return step.Return(S_OK);
  }
  if (!relationships_) {
    relationships_.emplace(request_);
  }
  return step.Return(relationships_->Complete(record));
}

HRESULT Recognition::WriteBack(const Object& object, const Asked& asked, const Found& found) const {
  Trace.Write("LRD object is of version :  ", version_);
  Trace.Write("Object cadid : ", asked.cadId, " is recognized as : ", *found.verdict);
  const ZYMIDOMElement_var& element = object.element;
  const WrittenStamps stamps(found.record);
  AttributeWrites writes;
  writes.Set(element, Word::Status, *found.verdict);
  writes.Set(element, Word::Phid, *stamps.physicalId);
  writes.Set(element, FormatVersion::Attribute, version_);
  writes.Set(element, Word::MacroCEStamp, stamps.macroCEStamp);
  writes.Set(element, Word::XSStamp, stamps.xsStamp);
  writes.Set(element, Word::HashcodeFromLRD, *stamps.hashcode);
  if (!found.objectChangeStamp.IsEmpty()) {
    writes.Set(element, Word::ObjectChangeStamp, found.objectChangeStamp);
  }
  // While the synchronisation stamps agree, the request's own CE stamp is the newer knowledge, even when it is empty.
  if (stamps.xsStamp == asked.xsStamp) {
    writes.Set(element, Word::CEStamp, asked.ceStamp);
  } else if (!stamps.ceStamp->IsEmpty()) {
    writes.Set(element, Word::CEStamp, *stamps.ceStamp);
  }
  return writes.Status();
}

/// record: that was looked at, if any.
void Recognition::Tell(Object& object, Found& found, SharedRecord* record) {
  ++decided_;
  if (reasons_ == Reasons::None) {
    return;
  }
  Reason reason;
  reason.kind = found.why;
  reason.recordFile = object.composition ? object.composition->recordFile : object.paths.recordFile;
  reason.recordStamp = std::move(found.objectChangeStamp);
  reason.identifier = std::move(found.identifier);
  reason.relationship = std::move(found.relationship);
  reason.formatVersion = record == nullptr ? std::move(object.unknownVersion) : VersionOf(*record);
  reason.missingRecordFiles = std::move(object.missingRecordFiles);
  if (object.file.kind == QELVARDOSFileFacts::Kind::File) {
    reason.fileStamp = object.file.modified;
  }
  if (reason.kind == Reason::Kind::CannotBeLookedAt || reason.kind == Reason::Kind::RecordDamaged) {
    reason.failure = QELVARDOSSystemUtils::LastError();
  } else if (object.file.error) {
    reason.failure = object.paths.objectFile.ToString().Str() + ": " + object.file.error.message();
  }
  if (details_) {
    details_->AddTo(reason, {decided_ - 1, object.paths.recordFile, object.file, object.composition.has_value(),
                             found.record.operator bool(), record, reader_.Facts()});
  }
  client_.observer->Decided(object.element, reason);
}
