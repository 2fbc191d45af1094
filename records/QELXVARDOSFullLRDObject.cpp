#include "records/QELXVARDOSFullLRDObject.h"

#include <utility>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/Steps.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

QELXVARDOS_TRACED_HERE;

namespace {

const ZYMUnicodeString Lost;

// Takes an attribute into a field and traces it.
void UpdateFromAttribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name, ZYMUnicodeString& field) {
  field = Attribute(element, name);
  Trace.Write(name, " updated with value: ", field);
}

}  // namespace

QELXVARDOSFullLRDObject::QELXVARDOSFullLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject,
                                                 const ZYMUnicodeString& version)
    : StampedLRDObject(format, cadobject), cadOrigin_(Word::NoCadOrigin) {
  const ZYMIDOMElement_var element(cadobject);
  bool named = false;
  if (element && SUCCEEDED(element->hasAttribute(Word::CadOrigin, named)) && named) {
    cadOrigin_ = Attribute(element, Word::CadOrigin);
  }
  if (HasVersion()) {
    version_ = version;
    writeFlag_ = true;
  }
}

QELXVARDOSFullLRDObject::QELXVARDOSFullLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& node,
                                                 bool& /*fromFile*/)
    : StampedLRDObject(format), losesVersion_(format.version == RecordFormat::Version::Lost) {
  StampedLRDObject::Initialize(node);
  ReadStamps(node, true);
  if (const ZYMIDOMElement_var element(node); element && HasVersion()) {
    version_ = Attribute(element, Word::Version);
  }
}

QELXVARDOSFullLRDObject::~QELXVARDOSFullLRDObject() {
  for (const QELXIVARDOSLRDObject_var& subRecord : std::as_const(subRecords_)) {
    if (auto* own = dynamic_cast<QELXVARDOSLRDObject*>(subRecord.Get()); own != nullptr) {
      own->ForgetParentRelationships();
    }
  }
  ReleaseLater(subRecords_);
}

HRESULT QELXVARDOSFullLRDObject::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited,
                                              ZYMIDOMElement_var& element) {
  const Step step(Trace, format_.tracedWriting.CStr(), "GetXMLFormat");
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var object;
  return step.Return(UntilFailure(
      [&] { return BeginXML(visited, Word::Object, document, object); },
      [&] { return HasVersion() ? object->setAttribute(Word::Version, losesVersion_ ? Lost : version_) : S_OK; },
      [&] { return AddValues(document, object); }, [&] { return AppendChildren(visited, object, element); }));
}

HRESULT QELXVARDOSFullLRDObject::AppendChildren(const QELXIVARDOSLRDObject_varList& visited,
                                                const ZYMIDOMElement_var& object, ZYMIDOMElement_var& element) {
  if (children_.Size() == 0) {
    element = object;
    return S_OK;
  }
  QELXIVARDOSLRDObject_varList path(visited);
  path.Append(QELXIVARDOSLRDObject_var(this));
  HRESULT status = S_OK;
  for (const QELXIVARDOSLRDObject_var& child : std::as_const(children_)) {
    if (FAILED(status)) {
      break;
    }
    if (visited.Locate(child) != 0) {
      continue;
    }
    status = AppendChild(child, path, object);
  }
  element = object;
  return status;
}

void QELXVARDOSFullLRDObject::AddChild(const ZYMBaseUnknown_var& child) {
  if (!format_.compositionsAlone) {
    QELXVARDOSLRDObject::AddChild(child);
    return;
  }
  const QELXIVARDOSLRDObject_var record(child);
  if (record && record->IsAKindOf(ClassName::Composition.CStr())) {
    children_.Append(record);
    Trace.Write(ClassName::Composition, " kind of child is added");
  }
}

void QELXVARDOSFullLRDObject::updateLRDObject(const QELXIVARDOSLRDObject_var& other) {
  QELXVARDOSLRDObject::updateLRDObject(other);
  for (const QELXIVARDOSLRDObject_var& subRecord : std::as_const(subRecords_)) {
    subRecord->updateLRDObject(other);
  }
  if (!HasVersion()) {
    return;
  }
  UpdateStamps(other);
  Trace.Write(Word::MacroCEStamp, " updated with value: ", stamps_.macroCE);
  if (action_ == Word::SetCadOrigin) {
    cadOrigin_ = other->GetCadOrigin();
    Trace.Write(Word::CadOrigin, " updated with value: ", cadOrigin_);
    typeClasses_ = other->GetTypeClasses();
    Trace.Write("classification updated");
  }
}

void QELXVARDOSFullLRDObject::FindSubRecord(const ZYMUnicodeString& className, QELXIVARDOSLRDObject_var& record) const {
  for (const QELXIVARDOSLRDObject_var& subRecord : subRecords_) {
    if (subRecord->IsAKindOf(className.CStr())) {
      Trace.Write("has ", className, subRecord);
      // Last of all: the handle may have been the only one to this record.
      record = subRecord;
      return;
    }
  }
}

HRESULT QELXVARDOSFullLRDObject::GetChildLRDObject(QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::GetChildLRDObject");
  FindSubRecord(ClassName::Child, record);
  return step.Return(S_OK);
}

HRESULT QELXVARDOSFullLRDObject::GetCompositionLRDObject(QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::GetCompositionLRDObject");
  FindSubRecord(ClassName::Composition, record);
  return step.Return(S_OK);
}

HRESULT QELXVARDOSFullLRDObject::UpdateLRDObjectFromXML(const ZYMIDOMNode_var& node) {
  const ZYMIDOMElement_var element(node);
  if (!HasVersion()) {
    return UpdateCoreFromXML(element);
  }
  const Step step(Trace, format_.tracedWriting.CStr(), "UpdateLRDObjectFromXML");
  const HRESULT status = UpdateCoreFromXML(element);
  if (element) {
    for (const RecordFormat::Holding& held : format_.stamps) {
      UpdateFromAttribute(element, held.stamp.value.word, stamps_.*held.stamp.field);
      if (&held == format_.stamps.begin()) {
        UpdateFromAttribute(element, Word::Action, action_);
      }
    }
  }
  return step.Return(status);
}

HRESULT QELXVARDOSFullLRDObject::UpdateCoreFromXML(const ZYMIDOMElement_var& element) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::UpdateLRDObjectFromXML");
  if (element) {
    UpdateFromAttribute(element, Word::Phid, physicalId_);
    UpdateFromAttribute(element, Word::CEStamp, ceStamp_);
  }
  return step.Return(S_OK);
}
