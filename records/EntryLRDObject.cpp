#include "records/EntryLRDObject.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/Steps.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

QELXVARDOS_TRACED_HERE;

EntryLRDObject::EntryLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject,
                               const ZYMUnicodeString& identifier)
    : StampedLRDObject(format, cadobject), id_(identifier) {}

EntryLRDObject::EntryLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& element, bool& /*fromFile*/)
    : StampedLRDObject(format) {
  EntryLRDObject::Initialize(element);
  ReadStamps(element, true);
}

HRESULT EntryLRDObject::Initialize(const ZYMIDOMNode_var& node) {
  const HRESULT status = StampedLRDObject::Initialize(node);
  if (const ZYMIDOMElement_var element(node); element) {
    id_ = Attribute(element, Word::Id);
  }
  return status;
}

HRESULT EntryLRDObject::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) {
  const Step step(Trace, format_.tracedWriting.CStr(), "GetXMLFormat");
  const ZYMUnicodeString& name = format_.kind == RecordKind::Child ? Word::Structure : Word::Composition;
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var entry;
  const HRESULT status =
      UntilFailure([&] { return BeginXML(visited, name, document, entry); },
                   [&] { return entry->setAttribute(Word::Id, id_); }, [&] { return AddValues(document, entry); });
  if (SUCCEEDED(status)) {
    element = entry;
  }
  return step.Return(status);
}
