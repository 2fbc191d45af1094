#pragma once

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/Steps.h"
#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDObject.h"

/// What child and composition records share, told once: each is an entry in the record file of another object, an
/// element with an "id". The layers below are what the formats "0.0", "1.0" and "4.0" made of them; Self is the class
/// that is being defined, Base the class that it derives from.

/// The trace channel of both kinds.
const QELVARDOSClientTrace& EntryTrace();

/// Format "0.0". Self says with ElementName() which element it writes.
template <typename Self>
class EntryLRDObject : public QELXVARDOSLRDObject {
 public:
  EntryLRDObject(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier)
      : QELXVARDOSLRDObject(cadobject), id_(identifier) {}
  EntryLRDObject(const ZYMIDOMNode_var& element, bool& /*fromFile*/) { EntryLRDObject::Initialize(element); }

  HRESULT Initialize(const ZYMIDOMNode_var& node) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "Initialize");
    const HRESULT status = QELXVARDOSLRDObject::Initialize(node);
    if (const ZYMIDOMElement_var element(node); element) {
      id_ = Attribute(element, Word::Id);
    }
    return step.Return(status);
  }

  const ZYMUnicodeString& GetId() const override { return id_; }

  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "GetXMLFormat");
    return step.Return(
        WriteEntry(visited, element, [](const ZYMIDOMDocument_var&, const ZYMIDOMElement_var&) { return S_OK; }));
  }

 protected:
  EntryLRDObject() = default;

  /// The entry with its core values; addLaterStamps adds what came after the first format, before the hash code.
  template <typename AddLaterStamps>
  HRESULT WriteEntry(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element,
                     const AddLaterStamps& addLaterStamps) {
    ZYMIDOMDocument_var document;
    ZYMIDOMElement_var entry;
    return UntilFailure(
        [&] { return BeginXML(visited, Self::ElementName(), document, entry); },
        [&] { return entry->setAttribute(Word::Id, id_); }, [&] { return AddPhysicalIdNode(document, entry); },
        [&] { return AddObjectChangeStampNode(document, entry); }, [&] { return AddCEStampNode(document, entry); },
        [&] { return addLaterStamps(document, entry); }, [&] { return AddHashcodeNode(document, entry); },
        [&] {
          element = entry;
          return S_OK;
        });
  }

  ZYMUnicodeString id_;
};

/// Format "1.0" brought "macroceStamp".
template <typename Self, typename Base>
class EntryLRDObject_V1 : public Base {
 public:
  /// members: the CAD ids of a composition record; none for a child record.
  template <typename... Members>
  EntryLRDObject_V1(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier, const Members&... members)
      : Base(cadobject, identifier, members...) {
    if (const ZYMIDOMElement_var element(cadobject); element) {
      macroCEStamp_ = Attribute(element, Word::MacroCEStamp);
    }
  }
  EntryLRDObject_V1(const ZYMIDOMNode_var& element, bool& /*fromFile*/) { EntryLRDObject_V1::Initialize(element); }

  HRESULT Initialize(const ZYMIDOMNode_var& node) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "Initialize");
    const HRESULT status = Base::Initialize(node);
    if (const ZYMIDOMElement_var element(node); element) {
      TakeTextOfFirst(element, Word::MacroCEStamp, macroCEStamp_);
    }
    return step.Return(status);
  }

  ZYMUnicodeString GetMacroCEStamp() const override { return macroCEStamp_; }

  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "GetXMLFormat");
    return step.Return(this->WriteEntry(visited, element, [this](const auto& document, const auto& entry) {
      return this->AddMacroCEStampNode(document, entry);
    }));
  }

  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "updateLRDObject");
    Base::updateLRDObject(other);
    macroCEStamp_ = other->GetMacroCEStamp();
  }

  virtual HRESULT AddMacroCEStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "AddMacroCEStampNode");
    return step.Return(this->AddTextNode(Word::MacroCEStamp, macroCEStamp_, document, parent));
  }

 protected:
  EntryLRDObject_V1() = default;

 private:
  ZYMUnicodeString macroCEStamp_;
};

/// Format "4.0" brought "xsStamp", and a macro CE stamp of its own beside the inherited one: that is the one it answers
/// and writes. Both are filled from the same sources.
template <typename Self, typename Base>
class EntryLRDObject_V4 : public Base {
 public:
  template <typename... Members>
  EntryLRDObject_V4(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier, const Members&... members)
      : Base(cadobject, identifier, members...) {
    if (const ZYMIDOMElement_var element(cadobject); element) {
      macroCEStamp_ = Attribute(element, Word::MacroCEStamp);
      xsStamp_ = Attribute(element, Word::XSStamp);
    }
  }
  EntryLRDObject_V4(const ZYMIDOMNode_var& node, bool& fromFile) : Base(node, fromFile) {
    if (const ZYMIDOMElement_var element(node); element) {
      TakeTextOfFirst(element, Word::MacroCEStamp, macroCEStamp_);
      TakeTextOfFirst(element, Word::XSStamp, xsStamp_);
    }
  }

  ZYMUnicodeString GetMacroCEStamp() const override { return macroCEStamp_; }
  ZYMUnicodeString GetXSStamp() const override { return xsStamp_; }

  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "GetXMLFormat");
    return step.Return(this->WriteEntry(visited, element, [this](const auto& document, const auto& entry) {
      return UntilFailure([&] { return this->AddMacroCEStampNode(document, entry); },
                          [&] { return this->AddXCADSyncroStampNode(document, entry); });
    }));
  }

  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "updateLRDObject");
    Base::updateLRDObject(other);
    macroCEStamp_ = other->GetMacroCEStamp();
    xsStamp_ = other->GetXSStamp();
  }

  HRESULT AddMacroCEStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) override {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "AddMacroCEStampNode");
    return step.Return(this->AddTextNode(Word::MacroCEStamp, macroCEStamp_, document, parent));
  }
  HRESULT AddXCADSyncroStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) {
    const QELVARDOSClientTraceStep step(EntryTrace(), Self::MetaObject()->IsA(), "AddXCADSyncroStampNode");
    return step.Return(this->AddTextNode(Word::XSStamp, xsStamp_, document, parent));
  }

 private:
  ZYMUnicodeString macroCEStamp_;
  ZYMUnicodeString xsStamp_;
};
