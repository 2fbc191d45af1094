#pragma once

#include "records/QELXVARDOSLRDObject.h"

/// A record of a CAD object, full or entry: it has the stamps of its format.
class StampedLRDObject : public QELXVARDOSLRDObject {
 public:
  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  ZYMUnicodeString GetMacroCEStamp() const override { return stamps_.macroCE; }
  ZYMUnicodeString GetXSStamp() const override { return stamps_.xs; }
  ZYMUnicodeString GetStamp(const ZYMUnicodeString& name) const override;
  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override;

  HRESULT AddMacroCEStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const;
  HRESULT AddXCADSyncroStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const;

 protected:
  using QELXVARDOSLRDObject::QELXVARDOSLRDObject;
  /// From an object of a request or a response.
  StampedLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject);

  /// Those that Initialize reads, or those that it leaves to the constructor from a file; a missing one stays as it is.
  void ReadStamps(const ZYMIDOMNode_var& element, bool late);
  void UpdateStamps(const QELXIVARDOSLRDObject_var& other);
  /// Of that name; null when the format has none.
  const RecordFormat::Holding* Find(const ZYMUnicodeString& name) const;
  HRESULT AddStamps(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const override;

  Stamps stamps_;

 private:
  HRESULT AddStamp(const ZYMUnicodeString& word, const ZYMIDOMDocument_var& document,
                   const ZYMIDOMElement_var& parent) const;
};
