#include "records/QELXVARDOSFullLRDObject.h"

#include <utility>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/Steps.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSFullLRDObject, QELXVARDOSLRDObject)
ZYM_DEFINE_COMPONENT(QELXVARDOSFullLRDObject_V1, QELXVARDOSFullLRDObject)
ZYM_DEFINE_COMPONENT(QELXVARDOSFullLRDObject_V2, QELXVARDOSFullLRDObject_V1)
ZYM_DEFINE_COMPONENT(QELXVARDOSFullLRDObject_V4, QELXVARDOSFullLRDObject_V1)

namespace {

ZYM_LOADED_AS(TraceChannels) const QELXVARDOSTraceChannels Channels;
const QELVARDOSClientTrace& Trace = Channels.details;

using Step = QELVARDOSClientTraceStep;

}  // namespace

QELXVARDOSFullLRDObject::QELXVARDOSFullLRDObject(const ZYMIDOMNode_var& cadobject)
    : QELXVARDOSLRDObject(cadobject), cadOrigin_(Word::NoCadOrigin) {
  const ZYMIDOMElement_var element(cadobject);
  bool named = false;
  if (element && SUCCEEDED(element->hasAttribute(Word::CadOrigin, named)) && named) {
    cadOrigin_ = Attribute(element, Word::CadOrigin);
  }
}

QELXVARDOSFullLRDObject::QELXVARDOSFullLRDObject(const ZYMIDOMNode_var& element, bool& /*fromFile*/) {
  QELXVARDOSFullLRDObject::Initialize(element);
}

QELXVARDOSFullLRDObject::~QELXVARDOSFullLRDObject() {
  for (const QELXIVARDOSLRDObject_var& subRecord : std::as_const(subRecords_)) {
    if (auto* own = dynamic_cast<QELXVARDOSLRDObject*>(subRecord.Get()); own != nullptr) {
      own->ForgetParentRelationships();
    }
  }
  ReleaseLater(subRecords_);
}

HRESULT QELXVARDOSFullLRDObject::Initialize(const ZYMIDOMNode_var& element) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::Initialize");
  return step.Return(QELXVARDOSLRDObject::Initialize(element));
}

HRESULT QELXVARDOSFullLRDObject::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited,
                                              ZYMIDOMElement_var& element) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::GetXMLFormat");
  const auto nothing = [](auto&&...) { return S_OK; };
  return step.Return(WriteObject(visited, element, nothing, nothing));
}

template <typename AddVersion, typename AddLaterStamps>
HRESULT QELXVARDOSFullLRDObject::WriteObject(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element,
                                             const AddVersion& addVersion, const AddLaterStamps& addLaterStamps) {
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var object;
  return UntilFailure(
      [&] { return BeginXML(visited, Word::Object, document, object); }, [&] { return addVersion(object); },
      [&] { return AddPhysicalIdNode(document, object); }, [&] { return AddObjectChangeStampNode(document, object); },
      [&] { return AddCEStampNode(document, object); }, [&] { return addLaterStamps(document, object); },
      [&] { return AddHashcodeNode(document, object); }, [&] { return AppendChildren(visited, object, element); });
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
    ZYMIDOMElement_var nested;
    status = child->GetXMLFormat(path, nested);
    if (SUCCEEDED(status) && nested) {
      ZYMIDOMNode_var appended;
      status = object->appendChild(nested, appended);
    }
  }
  element = object;
  return status;
}

void QELXVARDOSFullLRDObject::updateLRDObject(const QELXIVARDOSLRDObject_var& other) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::updateLRDObject");
  QELXVARDOSLRDObject::updateLRDObject(other);
  for (const QELXIVARDOSLRDObject_var& subRecord : std::as_const(subRecords_)) {
    subRecord->updateLRDObject(other);
  }
}

void QELXVARDOSFullLRDObject::FindSubRecord(const char* className, QELXIVARDOSLRDObject_var& record) const {
  for (const QELXIVARDOSLRDObject_var& subRecord : subRecords_) {
    if (subRecord->IsAKindOf(className)) {
      Trace.Write("has ", className, subRecord);
      // Last of all: the handle may have been the only one to this record.
      record = subRecord;
      return;
    }
  }
}

HRESULT QELXVARDOSFullLRDObject::GetChildLRDObject(QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::GetChildLRDObject");
  FindSubRecord(ClassName::Child.CStr(), record);
  return step.Return(S_OK);
}

HRESULT QELXVARDOSFullLRDObject::GetCompositionLRDObject(QELXIVARDOSLRDObject_var& record) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::GetCompositionLRDObject");
  FindSubRecord(ClassName::Composition.CStr(), record);
  return step.Return(S_OK);
}

void QELXVARDOSFullLRDObject::UpdateFromAttribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name,
                                                  ZYMUnicodeString& field) {
  field = Attribute(element, name);
  Trace.Write(name, " updated with value: ", field);
}

HRESULT QELXVARDOSFullLRDObject::UpdateLRDObjectFromXML(const ZYMIDOMNode_var& node) {
  const Step step(Trace, "QELXVARDOSFullLRDObject::UpdateLRDObjectFromXML");
  if (const ZYMIDOMElement_var element(node); element) {
    UpdateFromAttribute(element, Word::Phid, physicalId_);
    UpdateFromAttribute(element, Word::CEStamp, ceStamp_);
  }
  return step.Return(S_OK);
}

QELXVARDOSFullLRDObject_V1::QELXVARDOSFullLRDObject_V1(const ZYMIDOMNode_var& cadobject,
                                                       const ZYMUnicodeString& version)
    : QELXVARDOSFullLRDObject(cadobject), version_(version) {
  if (const ZYMIDOMElement_var element(cadobject); element) {
    macroCEStamp_ = Attribute(element, Word::MacroCEStamp);
  }
  writeFlag_ = true;
}

QELXVARDOSFullLRDObject_V1::QELXVARDOSFullLRDObject_V1(const ZYMIDOMNode_var& element, bool& /*fromFile*/) {
  QELXVARDOSFullLRDObject_V1::Initialize(element);
  TakeVersionInFile(element);
}

void QELXVARDOSFullLRDObject_V1::TakeVersionInFile(const ZYMIDOMNode_var& node) {
  if (const ZYMIDOMElement_var element(node); element) {
    versionInFile_ = Attribute(element, Word::Version);
  }
}

HRESULT QELXVARDOSFullLRDObject_V1::Initialize(const ZYMIDOMNode_var& node) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V1::Initialize");
  const HRESULT status = QELXVARDOSFullLRDObject::Initialize(node);
  if (const ZYMIDOMElement_var element(node); element) {
    TakeTextOfFirst(element, Word::MacroCEStamp, macroCEStamp_);
  }
  return step.Return(status);
}

HRESULT QELXVARDOSFullLRDObject_V1::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited,
                                                 ZYMIDOMElement_var& element) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V1::GetXMLFormat");
  return step.Return(WriteObject(
      visited, element, [this](const auto& object) { return object->setAttribute(Word::Version, version_); },
      [this](const auto& document, const auto& object) { return AddMacroCEStampNode(document, object); }));
}

HRESULT QELXVARDOSFullLRDObject_V1::AddMacroCEStampNode(const ZYMIDOMDocument_var& document,
                                                        const ZYMIDOMElement_var& parent) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V1::AddMacroCEStampNode");
  return step.Return(AddTextNode(Word::MacroCEStamp, macroCEStamp_, document, parent));
}

void QELXVARDOSFullLRDObject_V1::updateLRDObject(const QELXIVARDOSLRDObject_var& other) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V1::updateLRDObject");
  QELXVARDOSFullLRDObject::updateLRDObject(other);
  UpdateMacroStampAndOrigin(other);
}

void QELXVARDOSFullLRDObject_V1::UpdateMacroStampAndOrigin(const QELXIVARDOSLRDObject_var& other) {
  macroCEStamp_ = other->GetMacroCEStamp();
  Trace.Write("macroceStamp updated with value: ", macroCEStamp_);
  if (action_ == Word::SetCadOrigin) {
    cadOrigin_ = other->GetCadOrigin();
    Trace.Write("cadorigin updated with value: ", cadOrigin_);
    typeClasses_ = other->GetTypeClasses();
    Trace.Write("classification updated");
  }
}

HRESULT QELXVARDOSFullLRDObject_V1::UpdateLRDObjectFromXML(const ZYMIDOMNode_var& node) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V1::UpdateLRDObjectFromXML");
  const HRESULT status = QELXVARDOSFullLRDObject::UpdateLRDObjectFromXML(node);
  if (const ZYMIDOMElement_var element(node); element) {
    UpdateFromAttribute(element, Word::MacroCEStamp, macroCEStamp_);
    UpdateFromAttribute(element, Word::Action, action_);
  }
  return step.Return(status);
}

QELXVARDOSFullLRDObject_V2::QELXVARDOSFullLRDObject_V2(const ZYMIDOMNode_var& cadobject,
                                                       const ZYMUnicodeString& version)
    : QELXVARDOSFullLRDObject_V1(cadobject, version) {}

QELXVARDOSFullLRDObject_V2::QELXVARDOSFullLRDObject_V2(const ZYMIDOMNode_var& element, bool& /*fromFile*/) {
  QELXVARDOSFullLRDObject_V2::Initialize(element);
  TakeVersionInFile(element);
}

HRESULT QELXVARDOSFullLRDObject_V2::Initialize(const ZYMIDOMNode_var& element) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V2::Initialize");
  return step.Return(QELXVARDOSFullLRDObject_V1::Initialize(element));
}

void QELXVARDOSFullLRDObject_V2::AddChild(const ZYMBaseUnknown_var& child) {
  const QELXIVARDOSLRDObject_var record(child);
  if (record->IsAKindOf(ClassName::Composition.CStr())) {
    children_.Append(record);
    Trace.Write(ClassName::Composition, " kind of child is added");
  }
}

QELXVARDOSFullLRDObject_V4::QELXVARDOSFullLRDObject_V4(const ZYMIDOMNode_var& cadobject,
                                                       const ZYMUnicodeString& version)
    : QELXVARDOSFullLRDObject_V1(cadobject, version) {
  if (const ZYMIDOMElement_var element(cadobject); element) {
    xsStamp_ = Attribute(element, Word::XSStamp);
  }
}

QELXVARDOSFullLRDObject_V4::QELXVARDOSFullLRDObject_V4(const ZYMIDOMNode_var& node, bool& fromFile)
    : QELXVARDOSFullLRDObject_V1(node, fromFile) {
  if (const ZYMIDOMElement_var element(node); element) {
    version_ = Attribute(element, Word::Version);
    TakeTextOfFirst(element, Word::XSStamp, xsStamp_);
  }
}

HRESULT QELXVARDOSFullLRDObject_V4::GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited,
                                                 ZYMIDOMElement_var& element) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V4::GetXMLFormat");
  return step.Return(WriteObject(
      visited, element, [this](const auto& object) { return object->setAttribute(Word::Version, version_); },
      [this](const auto& document, const auto& object) {
        return UntilFailure([&] { return AddMacroCEStampNode(document, object); },
                            [&] { return AddXCADSyncroStampNode(document, object); });
      }));
}

HRESULT QELXVARDOSFullLRDObject_V4::AddXCADSyncroStampNode(const ZYMIDOMDocument_var& document,
                                                           const ZYMIDOMElement_var& parent) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V4::AddXCADSyncroStampNode");
  return step.Return(AddTextNode(Word::XSStamp, xsStamp_, document, parent));
}

void QELXVARDOSFullLRDObject_V4::updateLRDObject(const QELXIVARDOSLRDObject_var& other) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V4::updateLRDObject");
  QELXVARDOSFullLRDObject::updateLRDObject(other);
  UpdateMacroStampAndOrigin(other);
  xsStamp_ = other->GetXSStamp();
}

HRESULT QELXVARDOSFullLRDObject_V4::UpdateLRDObjectFromXML(const ZYMIDOMNode_var& node) {
  const Step step(Trace, "QELXVARDOSFullLRDObject_V4::UpdateLRDObjectFromXML");
  const HRESULT status = QELXVARDOSFullLRDObject::UpdateLRDObjectFromXML(node);
  if (const ZYMIDOMElement_var element(node); element) {
    UpdateFromAttribute(element, Word::MacroCEStamp, macroCEStamp_);
    UpdateFromAttribute(element, Word::Action, action_);
    UpdateFromAttribute(element, Word::XSStamp, xsStamp_);
  }
  return step.Return(status);
}
