#include "records/QELXVARDOSRelLRDObject.h"

#include <utility>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/Steps.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

QELXVARDOS_TRACED_HERE;

QELXVARDOSRelLRDObject::QELXVARDOSRelLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& relationship)
    : QELXVARDOSLRDObject(format, relationship) {
  if (const ZYMIDOMElement_var element(relationship); element) {
    relUuid_ = Attribute(element, Word::RelUuid);
    cadId_ = Attribute(element, Word::Rid);
    topNode_ = Attribute(element, Word::TopNode);
  }
  writeFlag_ = true;
}

QELXVARDOSRelLRDObject::QELXVARDOSRelLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& element,
                                               bool& /*fromFile*/)
    : QELXVARDOSLRDObject(format) {
  QELXVARDOSRelLRDObject::Initialize(element);
}

HRESULT QELXVARDOSRelLRDObject::Initialize(const ZYMIDOMNode_var& node) {
  TraceSteps(format_.tracedReading, "Initialize");
  if (const ZYMIDOMElement_var element(node); element) {
    relUuid_ = Attribute(element, Word::Id);
    ReadPhysicalId(element);
    if (format_.childPhid) {
      TakeTextOfFirst(element, Word::ChildPhid, childPhid_);
    }
  }
  return TraceReturns(format_.tracedReading, S_OK);
}

HRESULT QELXVARDOSRelLRDObject::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) {
  const Step step(Trace, format_.tracedWriting.CStr(), "GetXMLFormat");
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var rel;
  const HRESULT status = UntilFailure([&] { return BeginXML(visited, Word::Rel, document, rel); },
                                      [&] { return rel->setAttribute(Word::Id, relUuid_); },
                                      [&] { return AddPhysicalIdNode(document, rel); },
                                      [&] { return format_.childPhid ? AddChildPhid(document, rel) : S_OK; });
  if (SUCCEEDED(status)) {
    element = rel;
  }
  return step.Return(status);
}

HRESULT QELXVARDOSRelLRDObject::AddChildPhid(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& rel) {
  if (children_.Size() != 0) {
    childPhid_ = std::as_const(children_)[1]->GetPhysicalId();
  }
  return childPhid_.IsEmpty() ? S_OK : AppendTextNode(Word::ChildPhid, childPhid_, document, rel);
}
