#pragma once

#include "records/QELXVARDOSLRDObject.h"

/// A relationship record stands for a link from one CAD object to another: an element "rel" in the record file of its
/// parent. It keeps no stamps in a file. Format "0.0".
class QELXVARDOSRelLRDObject : public QELXVARDOSLRDObject {
  ZYM_DECLARE_COMPONENT(QELXVARDOSRelLRDObject);

 public:
  /// From a relationship of a request or a response: its "rid" becomes the CAD id. The write flag is true.
  explicit QELXVARDOSRelLRDObject(const ZYMIDOMNode_var& relationship);
  /// From an element of a record file; the flag is not read.
  QELXVARDOSRelLRDObject(const ZYMIDOMNode_var& element, bool& fromFile);

  /// Reads "id" and "phid" alone; a missing "phid" element raises ZYMNullHandleError.
  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  const ZYMUnicodeString& GetId() const override { return relUuid_; }
  ZYMUnicodeString GetTopNode() const override { return topNode_; }
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;

 protected:
  QELXVARDOSRelLRDObject() = default;

  HRESULT CreateRelElement(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMDocument_var& document,
                           ZYMIDOMElement_var& rel);

 private:
  ZYMUnicodeString relUuid_;
  /// Never read from a file.
  ZYMUnicodeString topNode_;
};

/// Formats "3.0" and "4.0": "childPhid".
class QELXVARDOSRelLRDObject_V3 : public QELXVARDOSRelLRDObject {
  ZYM_DECLARE_COMPONENT(QELXVARDOSRelLRDObject_V3);

 public:
  explicit QELXVARDOSRelLRDObject_V3(const ZYMIDOMNode_var& relationship);
  QELXVARDOSRelLRDObject_V3(const ZYMIDOMNode_var& element, bool& fromFile);

  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  ZYMUnicodeString GetChildPhid() const override { return childPhid_; }
  /// Takes the first child's physical id as "childPhid" before it writes, and keeps it.
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;

 private:
  ZYMUnicodeString childPhid_;
};
