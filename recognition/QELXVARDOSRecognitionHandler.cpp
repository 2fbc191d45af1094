#include "recognition/QELXVARDOSRecognitionHandler.h"

#include <optional>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMFillDictionary.h"
#include "recognition/ObjectsOfTree.h"
#include "recognition/RecognizeCall.h"
#include "records/Dom.h"
#include "records/HostLeave.h"
#include "records/QELXVARDOSIdentifier.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDVersionInfo.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSRecognitionHandler, QELXIVARDOSRecognitionHandler)

ZYMBaseUnknown* CreateBOAQELXIVARDOSRecognitionHandlerQELXVARDOSRecognitionHandler() {
  return new QELXVARDOSRecognitionHandler;
}

namespace {

ZYM_LOADED_AS(TraceChannels) const QELXVARDOSTraceChannels Channels;
const QELVARDOSClientTrace& Trace = Channels.details;

using Step = QELVARDOSClientTraceStep;
using Record = QELXIVARDOSLRDObject_var;
using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

// What the request says of an object before it is recognised.
struct Asked {
  explicit Asked(const ZYMIDOMElement_var& object)
      : physicalId(Attribute(object, Word::Phid)),
        cadId(Attribute(object, Word::CadId)),
        ceStamp(Attribute(object, Word::CEStamp)),
        xsStamp(Word::NotPresent) {
    bool present = false;
    if (SUCCEEDED(object->hasAttribute(Word::XSStamp, present)) && present) {
      xsStamp = Attribute(object, Word::XSStamp);
    }
  }

  ZYMUnicodeString physicalId;
  ZYMUnicodeString cadId;
  ZYMUnicodeString ceStamp;
  ZYMUnicodeString xsStamp;
};

// The stamps of a record as they are written back; all empty without one.
struct Stamps {
  explicit Stamps(const Record& record) {
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

template <typename Found>
void WriteBack(const ZYMIDOMElement_var& object, const Asked& asked, const Found& found,
               const ZYMUnicodeString& version) {
  Trace.Write("LRD object is of version :  ", version);
  Trace.Write("Object cadid : ", asked.cadId, " is recognized as : ", found.verdict);
  const Stamps stamps(found.record);
  object->setAttribute(Word::Status, found.verdict);
  object->setAttribute(Word::Phid, *stamps.physicalId);
  object->setAttribute(FormatVersion::Attribute, version);
  object->setAttribute(Word::MacroCEStamp, stamps.macroCEStamp);
  object->setAttribute(Word::XSStamp, stamps.xsStamp);
  object->setAttribute(Word::HashcodeFromLRD, *stamps.hashcode);
  if (!found.objectChangeStamp.IsEmpty()) {
    object->setAttribute(Word::ObjectChangeStamp, found.objectChangeStamp);
  }
  // While the synchronisation stamps agree, the request's own CE stamp is the newer knowledge, even when it is empty.
  if (stamps.xsStamp == asked.xsStamp) {
    object->setAttribute(Word::CEStamp, asked.ceStamp);
  } else if (!stamps.ceStamp->IsEmpty()) {
    object->setAttribute(Word::CEStamp, *stamps.ceStamp);
  }
}

/// The status that making the map would end with. Only a tree that may fail to read an attribute need be asked.
HRESULT StatusOfCadIds(const ZYMIDOMElement_var& list) {
  ZYMIDOMElement_var first;
  const bool neverFails = list->getFirstElement({}, first) != E_NOTIMPL;
  return neverFails ? S_OK : ForEachCadId(list, [](const auto&, const auto&) {});
}

}  // namespace

// What is written into an object that was looked up among the records.
struct QELXVARDOSRecognitionHandler::Found {
  ZYMUnicodeString verdict;
  /// Whose stamps are written; null: none are known.
  Record record;
  ZYMUnicodeString objectChangeStamp;
};

QELXVARDOSRecognitionHandler::QELXVARDOSRecognitionHandler() = default;

QELXVARDOSRecognitionHandler::QELXVARDOSRecognitionHandler(const ZYMUnicodeString& command,
                                                           const QELIVARDOSGlobalConfigObject_var& config)
    : command_(command), config_(config) {}

QELXVARDOSRecognitionHandler::~QELXVARDOSRecognitionHandler() = default;

ZYMUnicodeString QELXVARDOSRecognitionHandler::CadName() const {
  return command_ == Word::Creo || config_.IsNull() ? command_ : config_->GetCADName();
}

HRESULT QELXVARDOSRecognitionHandler::Recognize(const ZYMIDOMNode_var& request, RecordMap& lrdMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::Recognize");
  const ZYMIDOMElement_var element(request);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  const ZYMIDOMElement_var list = FirstElement(element, Word::CadObjectList);
  HRESULT status = GetLRDMap(element, lrdMap);
  Trace.Write(" Size of CADId to LRD Map = ", lrdMap.Size());
  if (FAILED(status) || list.IsNull()) {
    return step.Return(status);
  }
  // The map of the objects is most of what recognition would need memory for. A trace is to tell its size; otherwise it
  // is made when the first composition is looked up in it, which most requests never come to.
  ZYMIDOMNode_varZYMUnicodeStringDico nodeMap;
  const bool mapped = Trace.IsOn();
  status = mapped ? getCadidObjectNodeMap(list, nodeMap) : StatusOfCadIds(list);
  if (mapped) {
    Trace.Write(" Size of CADId XML Node Map = ", nodeMap.Size());
    Trace.Write(" Number of cadobjlist child nodes = ", SUCCEEDED(status) ? ChildCount(list) : 0);
  }
  ZYMUnicodeString version = QELXVARDOSLRDVersionInfo().GetLRDVersion(element);

  if (SUCCEEDED(status)) {
    RecognizeCall call(*this, element, mapped ? ZYMIDOMElement_var() : list);
    const HostLeave leave(observer_, HostLeave::Stage::Recognizing, observer_ == nullptr ? 0 : CountObjects(list));
    int done = 0;
    ForEachChildElement(list, [&](const ZYMIDOMElement_var& object) {
      status = done > 0 ? leave.Ask(done) : S_OK;
      if (SUCCEEDED(status)) {
        status = RecognizeObject(object, lrdMap, nodeMap, version);
      }
      ++done;
      return SUCCEEDED(status);
    });
  }
  return step.Return(status);
}

// version goes from object to object: one that was found in a record leaves that record's version to those behind it.
HRESULT QELXVARDOSRecognitionHandler::RecognizeObject(const ZYMIDOMElement_var& object, const RecordMap& lrdMap,
                                                      ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap,
                                                      ZYMUnicodeString& version) {
  const Asked asked(object);
  const Record requestRecord = asked.cadId.IsEmpty() ? Record() : lrdMap[asked.cadId];
  HRESULT status = S_OK;
  if (!asked.physicalId.IsEmpty()) {
    Trace.Write("Recognizing the object using physicalId of object cadid : ", asked.cadId);
    status = call_->ByPhysicalId().RecognizePerNode(object, version);
  } else {
    Trace.Write("Recognizing the object using LRD of object cadid : ", asked.cadId);
    Record record;
    Found found;
    status = getLRDObject(object, nodeMap, record);
    const auto& doubt = call_->DoubtOnObject();
    if (doubt) {
      QELVARDOSSystemUtils::SetLastError(doubt->path.Str() + ": " + doubt->reason.message());
      Trace.Write("Cannot be looked at : ", QELVARDOSSystemUtils::LastError());
    } else if (record.IsNull()) {
      Trace.Write("No LRD file on disc");
      found.verdict = Word::Unknown;
    } else if (SUCCEEDED(status)) {
      Trace.Write("LRD file present on disc");
      if (record->GetStateFlag()) {
        RecognizeAsEntry(object, requestRecord, record, found, version);
      } else {
        RecognizeFromOwnRecord(record, found, version);
      }
    }
    if (!doubt && Attribute(object, Word::Modified) == Word::UpperTrue && !(found.verdict == Word::Unknown)) {
      found.verdict = Word::ModifiedVerdict;
    }
    WriteBack(object, asked, found, version);
  }
  if (requestRecord) {
    requestRecord->UpdateLRDObjectFromXML(object);
  }
  return status;
}

void QELXVARDOSRecognitionHandler::RecognizeAsEntry(const ZYMIDOMElement_var& object, const Record& requestRecord,
                                                    const Record& record, Found& found, ZYMUnicodeString& version) {
  Trace.Write("Recognizing object from parent its LRD");
  Record entry;
  if (requestRecord) {
    RecognizeFromRel(requestRecord, record, entry);
  }
  if (entry.IsNull()) {
    entry = call_->Parent().FindChild(QELXVARDOSLRDFactory().GetIdentifier(config_, object));
  }
  if (entry.IsNull()) {
    Trace.Write("Object is not present in its parent LRD ");
    found.verdict = Word::Unknown;
    return;
  }
  Trace.Write("Object is present in its parent LRD ");
  found.record = entry;
  found.verdict = entry->GetPhysicalId().IsEmpty() ? Word::Unknown : Word::Exists;
  version = record->GetVersion();
}

void QELXVARDOSRecognitionHandler::RecognizeFromOwnRecord(const Record& record, Found& found,
                                                          ZYMUnicodeString& version) {
  const ZYMUnicodeString fileStamp =
      TracedStamp(record->GetObjectFilePath().ToString(), call_->Current().file.modified);
  found.record = record;
  found.objectChangeStamp = record->GetObjectChangeStamp();
  // No order: a file that is older than its record is a modification too.
  found.verdict = found.objectChangeStamp == fileStamp ? Word::Exists : Word::ModifiedVerdict;
  version = record->GetVersion();
  UpdateRelNode(call_->Request(), record);
}

HRESULT QELXVARDOSRecognitionHandler::RecognizeFromRel(const Record& requestRecord, const Record& diskRecord,
                                                       Record& child) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::RecognizeFromRel");
  Record own;
  requestRecord->GetChildLRDObject(own);
  if (own.IsNull() || own->GetParentRelationships().Size() == 0 || diskRecord->GetChildRelationships().Size() == 0) {
    return step.Return(S_OK);
  }
  if (const Record relationship = call_->Parent().FindRelationship(own->GetParentRelationships()); relationship) {
    if (const Record related = call_->Parent().FindRelatedChild(relationship->GetChildPhid()); related) {
      child = related;
    }
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSRecognitionHandler::getLRDObject(const ZYMIDOMNode_var& cadObject,
                                                   ZYMIDOMNode_varZYMUnicodeStringDico& nodeMap, Record& record) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::getLRDObject");
  const ZYMIDOMElement_var object(cadObject);
  call_->Begin(object);
  const bool inParent = ShouldCheckInParent(object) == 1;
  // The paths of the object itself stand unless a composition has a record, so a parent is never asked.
  const std::optional<QELXVARDOSLRDFactory::Paths> composition =
      inParent ? PathsInComposition(object, nodeMap) : std::nullopt;
  if (Attribute(object, Word::RecognizeAsNew) == Word::UpperTrue) {
    if (composition || call_->OwnRecordFacts().Exists()) {
      Trace.Write("Object is marked as recognise as new ");
    }
    call_->ForgetDoubt();
    return step.Return(S_OK);
  }
  if (call_->DoubtOnObject()) {
    return step.Return(E_FAIL);
  }
  HRESULT status = composition ? call_->ReadParent(composition->recordFile, record) : call_->ReadOwn(record);
  if (const QELVARDOSFileFacts& file = call_->Current().file; file.error && record && !inParent) {
    record = nullptr;
    status = call_->CannotTell(call_->Current().paths.objectFile.ToString(), file.error);
  }
  if (SUCCEEDED(status) && record) {
    record->SetObjectFilePath(composition ? composition->objectFile : call_->Current().paths.objectFile);
    record->SetStateFlag(inParent);
  }
  return step.Return(status);
}

// What could not be looked at matters only where the two answers lead to different records.
int QELXVARDOSRecognitionHandler::ShouldCheckInParent(const ZYMIDOMNode_var& cadObject) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::ShouldCheckInParent");
  const ZYMIDOMElement_var object(cadObject);
  if (object.IsNull()) {
    return step.Return(0);
  }
  ZYMUnicodeStringList compositions;
  QELXVARDOSIdentifier(object).IdentifyComposition(compositions);
  const auto& [paths, file] = call_->Current();
  if (file.kind == QELVARDOSFileFacts::Kind::Missing) {
    return step.Return(1);
  }
  if (compositions.Size() == 0) {
    return step.Return(0);
  }
  const QELVARDOSFileFacts own = call_->OwnRecordFacts();
  if (own.kind == QELVARDOSFileFacts::Kind::Missing) {
    return step.Return(1);
  }
  if (config_->IsTypeInCategory(Attribute(object, Word::Type), QELXVARDOSLRDConstants::TYPE_OBJECTWITHOUTFILE_LIKE)) {
    return step.Return(1);
  }
  if (file.error) {
    call_->CannotTell(paths.objectFile.ToString(), file.error);
  } else if (own.error) {
    call_->CannotTell(paths.recordFile, own.error);
  }
  return step.Return(0);
}
