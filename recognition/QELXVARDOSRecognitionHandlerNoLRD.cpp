#include "recognition/QELXVARDOSRecognitionHandlerNoLRD.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMIDOMLook.h"
#include "recognition/AttributeWrites.h"
#include "recognition/ObjectsOfTree.h"
#include "records/HostLeave.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDVersionInfo.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSRecognitionHandlerNoLRD, QELXIVARDOSRecognitionHandler)

QELXVARDOS_TRACED_HERE;

namespace {

using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

using Reason = QELXVARDOSReason;

Reason::Kind WhyDecided(const ZYMIDOMElement_var& object, bool asNew, const ZYMUnicodeString& physicalId) {
  if (physicalId.IsEmpty()) {
    return asNew ? Reason::Kind::MarkedAsNew : Reason::Kind::NoPhysicalId;
  }
  return Attribute(object, Word::Modified) == Word::UpperTrue ? Reason::Kind::MarkedAsModified
                                                              : Reason::Kind::PhysicalIdGiven;
}

const ZYMUnicodeString& VerdictOf(Reason::Kind why) {
  return why == Reason::Kind::PhysicalIdGiven    ? Word::Exists
         : why == Reason::Kind::MarkedAsModified ? Word::ModifiedVerdict
                                                 : Word::Unknown;
}

void MakePresent(const ZYMIDOMElement_var& object, const ZYMUnicodeString& attribute, AttributeWrites& writes) {
  if (Attribute(object, attribute).IsEmpty()) {
    writes.Set(object, attribute, ZYMUnicodeString());
  }
}

}  // namespace

QELXVARDOSRecognitionHandlerNoLRD::QELXVARDOSRecognitionHandlerNoLRD(const ZYMUnicodeString& command)
    : command_(command) {}

QELXVARDOSRecognitionHandlerNoLRD::~QELXVARDOSRecognitionHandlerNoLRD() = default;

HRESULT QELXVARDOSRecognitionHandlerNoLRD::Recognize(const ZYMIDOMNode_var& request, RecordMap& /*lrdMap*/) {
  const Step step(Trace, "QELXVARDOSRecognitionHandlerNoLRD::Recognize");
  const ZYMIDOMElement_var element(request);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  HRESULT status = S_OK;
  if (const ZYMIDOMElement_var list = FirstElement(element, Word::CadObjectList); list) {
    const ZYMUnicodeString version = QELXVARDOSLRDVersionInfo().GetLRDVersion(request);
    const HostLeave leave(observer_, HostLeave::Stage::Recognizing, observer_ == nullptr ? 0 : CountObjects(list));
    int done = 0;
    ForEachChild(list, [&](const ZYMIDOMNode_var& child) {
      const bool isObject = !ZYMIDOMElement_var(child).IsNull();
      status = isObject && done > 0 ? leave.Ask(done) : S_OK;
      if (SUCCEEDED(status)) {
        status = RecognizePerNode(child, version);
      }
      done += isObject ? 1 : 0;
      return SUCCEEDED(status);
    });
  }
  return step.Return(status);
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::RecognizePerNode(const ZYMIDOMNode_var& cadObject,
                                                            // By value, as the signature was settled.
                                                            // NOLINTNEXTLINE(performance-unnecessary-value-param)
                                                            ZYMUnicodeString version) {
  const Step step(Trace, "QELXVARDOSRecognitionHandlerNoLRD::RecognizePerNode");
  const ZYMIDOMElement_var object(cadObject);
  if (object.IsNull()) {
    return step.Return(S_OK);
  }
  const bool asNew = Attribute(object, Word::RecognizeAsNew) == Word::True;
  const ZYMUnicodeString physicalId = asNew ? ZYMUnicodeString() : Attribute(object, Word::Phid);
  const Reason::Kind why = WhyDecided(object, asNew, physicalId);
  const ZYMUnicodeString& verdict = VerdictOf(why);
  Trace.Write("Object cadId : ", Attribute(object, Word::CadId), " is recognisezd as : ", verdict);

  AttributeWrites writes;
  writes.Set(object, Word::Status, verdict);
  writes.Set(object, Word::Phid, physicalId);
  MakePresent(object, Word::CEStamp, writes);
  MakePresent(object, Word::MacroCEStamp, writes);
  writes.Set(object, FormatVersion::Attribute, version);
  if (observer_ != nullptr && SUCCEEDED(writes.Status()) &&
      observer_->WantsReasons() != QELXIVARDOSObserver::Reasons::None) {
    observer_->Decided(object, Reason{why, {}, {}, {}, {}, {}});
  }
  return step.Return(writes.Status());
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::GetLRDMap(const ZYMIDOMNode_var& /*request*/, RecordMap& /*lrdMap*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::CreateOrUpdateLRD(const ZYMIDOMNode_var& /*root*/,
                                                             const RecordMap& /*cadidMap*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::CreateOrUpdateLRD(const QELXIVARDOSLRDObject_varList& /*records*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::GetPhidLRDMap(const ZYMIDOMNode_var& /*node*/, RecordMap& /*phidMap*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::UpdateInformationFromCache(const ZYMIDOMNode_var& /*root*/,
                                                                      const RecordMap& /*phidMap*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::CreateAndHideLRDFolder(const QELXIVARDOSLRDObject_varList& /*records*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::GetCadidLRDMap(const ZYMIDOMNode_var& /*node*/, const RecordMap& /*phidMap*/,
                                                          RecordMap& /*cadidMap*/, ZYMUnicodeStringList /*skipList*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::UpdateRequestAndLRDObjects(
    const ZYMIDOMNode_var& /*root*/, const RecordMap& /*cadidMap*/,
    const ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico& /*cacheInformation*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::GetCadidLRDMapForCache(const ZYMIDOMNode_var& /*root*/,
                                                                  const RecordMap& /*phidMap*/,
                                                                  RecordMap& /*cadidMap*/) {
  return S_OK;
}

HRESULT QELXVARDOSRecognitionHandlerNoLRD::UpdateLRDObjects(const ZYMIDOMNode_var& /*root*/,
                                                            const RecordMap& /*cadidMap*/) {
  return S_OK;
}
