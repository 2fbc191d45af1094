#pragma once

#include "records/StampedLRDObject.h"

/// What child and composition records share: each is an entry in the record file of another object, an element with an
/// "id".
class EntryLRDObject : public StampedLRDObject {
 public:
  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  const ZYMUnicodeString& GetId() const override { return id_; }
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;

 protected:
  EntryLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& identifier);
  EntryLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& element, bool& fromFile);

 private:
  ZYMUnicodeString id_;
};
