#include "records/QELXVARDOSRelLRDObject.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/Steps.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSRelLRDObject, QELXVARDOSLRDObject)
ZYM_DEFINE_COMPONENT(QELXVARDOSRelLRDObject_V3, QELXVARDOSRelLRDObject)

namespace {

ZYM_LOADED_AS(TraceChannels) const QELXVARDOSTraceChannels Channels;
const QELVARDOSClientTrace& Trace = Channels.details;

using Step = QELVARDOSClientTraceStep;

}  // namespace

QELXVARDOSRelLRDObject::QELXVARDOSRelLRDObject(const ZYMIDOMNode_var& relationship)
    : QELXVARDOSLRDObject(relationship) {
  if (const ZYMIDOMElement_var element(relationship); element) {
    relUuid_ = Attribute(element, Word::RelUuid);
    cadId_ = Attribute(element, Word::Rid);
    topNode_ = Attribute(element, Word::TopNode);
  }
  writeFlag_ = true;
}

QELXVARDOSRelLRDObject::QELXVARDOSRelLRDObject(const ZYMIDOMNode_var& element, bool& /*fromFile*/) {
  QELXVARDOSRelLRDObject::Initialize(element);
}

HRESULT QELXVARDOSRelLRDObject::Initialize(const ZYMIDOMNode_var& node) {
  const Step step(Trace, "QELXVARDOSRelLRDObject::Initialize");
  if (const ZYMIDOMElement_var element(node); element) {
    relUuid_ = Attribute(element, Word::Id);
    ReadRequiredText(element, Word::Phid, physicalId_);
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSRelLRDObject::CreateRelElement(const QELXIVARDOSLRDObject_varList& visited,
                                                 ZYMIDOMDocument_var& document, ZYMIDOMElement_var& rel) {
  return UntilFailure([&] { return BeginXML(visited, Word::Rel, document, rel); },
                      [&] { return rel->setAttribute(Word::Id, relUuid_); },
                      [&] { return AddPhysicalIdNode(document, rel); });
}

HRESULT QELXVARDOSRelLRDObject::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) {
  const Step step(Trace, "QELXVARDOSRelLRDObject::GetXMLFormat");
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var rel;
  const HRESULT status = CreateRelElement(visited, document, rel);
  if (SUCCEEDED(status)) {
    element = rel;
  }
  return step.Return(status);
}

QELXVARDOSRelLRDObject_V3::QELXVARDOSRelLRDObject_V3(const ZYMIDOMNode_var& relationship)
    : QELXVARDOSRelLRDObject(relationship) {}

QELXVARDOSRelLRDObject_V3::QELXVARDOSRelLRDObject_V3(const ZYMIDOMNode_var& element, bool& /*fromFile*/) {
  QELXVARDOSRelLRDObject_V3::Initialize(element);
}

HRESULT QELXVARDOSRelLRDObject_V3::Initialize(const ZYMIDOMNode_var& node) {
  const Step step(Trace, "QELXVARDOSRelLRDObject_V3::Initialize");
  QELXVARDOSRelLRDObject::Initialize(node);
  if (const ZYMIDOMElement_var element(node); element) {
    TakeTextOfFirst(element, Word::ChildPhid, childPhid_);
  }
  return step.Return(S_OK);
}

HRESULT QELXVARDOSRelLRDObject_V3::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited,
                                                ZYMIDOMElement_var& element) {
  const Step step(Trace, "QELXVARDOSRelLRDObject_V3::GetXMLFormat");
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var rel;
  HRESULT status = CreateRelElement(visited, document, rel);
  if (FAILED(status)) {
    return step.Return(status);
  }
  if (children_.Size() != 0) {
    childPhid_ = children_[1]->GetPhysicalId();
  }
  if (!childPhid_.IsEmpty()) {
    status = AppendTextNode(Word::ChildPhid, childPhid_, document, rel);
  }
  if (SUCCEEDED(status)) {
    element = rel;
  }
  return step.Return(status);
}
