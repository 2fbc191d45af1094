#include "records/StampedLRDObject.h"

#include <algorithm>

#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

StampedLRDObject::StampedLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject)
    : QELXVARDOSLRDObject(format, cadobject) {
  if (const ZYMIDOMElement_var element(cadobject); element) {
    for (const RecordFormat::Holding& held : format_.stamps) {
      stamps_.*held.stamp.field = Attribute(element, held.stamp.value.word);
    }
  }
}

HRESULT StampedLRDObject::Initialize(const ZYMIDOMNode_var& element) {
  const HRESULT status = QELXVARDOSLRDObject::Initialize(element);
  ReadStamps(element, false);
  return status;
}

void StampedLRDObject::ReadStamps(const ZYMIDOMNode_var& node, bool late) {
  if (const ZYMIDOMElement_var element(node); element) {
    for (const RecordFormat::Holding& held : format_.stamps) {
      if (held.readLate == late) {
        TakeTextOfFirst(element, held.stamp.value.word, stamps_.*held.stamp.field);
      }
    }
  }
}

void StampedLRDObject::updateLRDObject(const QELXIVARDOSLRDObject_var& other) {
  QELXVARDOSLRDObject::updateLRDObject(other);
  UpdateStamps(other);
}

void StampedLRDObject::UpdateStamps(const QELXIVARDOSLRDObject_var& other) {
  for (const RecordFormat::Holding& held : format_.stamps) {
    const RecordStamp& stamp = held.stamp;
    stamps_.*stamp.field = stamp.getter == nullptr ? other->GetStamp(stamp.value.word) : (*other.*stamp.getter)();
  }
}

HRESULT StampedLRDObject::AddStamps(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const {
  HRESULT status = S_OK;
  for (auto held = format_.stamps.begin(); SUCCEEDED(status) && held != format_.stamps.end(); ++held) {
    status = AddValue(held->adder, held->stamp.value, stamps_.*held->stamp.field, document, parent);
  }
  return status;
}

HRESULT StampedLRDObject::AddStamp(const ZYMUnicodeString& word, const ZYMIDOMDocument_var& document,
                                   const ZYMIDOMElement_var& parent) const {
  const RecordFormat::Holding* const held = Find(word);
  return held == nullptr ? S_OK
                         : AddValue(held->adder, held->stamp.value, stamps_.*held->stamp.field, document, parent);
}

const RecordFormat::Holding* StampedLRDObject::Find(const ZYMUnicodeString& name) const {
  const auto* const held =
      std::find_if(format_.stamps.begin(), format_.stamps.end(),
                   [&name](const RecordFormat::Holding& holding) { return holding.stamp.value.word == name; });
  return held == format_.stamps.end() ? nullptr : held;
}

ZYMUnicodeString StampedLRDObject::GetStamp(const ZYMUnicodeString& name) const {
  const RecordFormat::Holding* const held = Find(name);
  return held == nullptr ? ZYMUnicodeString() : stamps_.*held->stamp.field;
}

HRESULT StampedLRDObject::AddMacroCEStampNode(const ZYMIDOMDocument_var& document,
                                              const ZYMIDOMElement_var& parent) const {
  return AddStamp(Word::MacroCEStamp, document, parent);
}

HRESULT StampedLRDObject::AddXCADSyncroStampNode(const ZYMIDOMDocument_var& document,
                                                 const ZYMIDOMElement_var& parent) const {
  return AddStamp(Word::XSStamp, document, parent);
}
