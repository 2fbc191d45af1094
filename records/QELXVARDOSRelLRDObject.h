#pragma once

#include "records/QELXVARDOSLRDObject.h"

/// A relationship record stands for a link from one CAD object to another: an element "rel" in the record file of its
/// parent. It keeps no stamps in a file.
class QELXVARDOSRelLRDObject : public QELXVARDOSLRDObject {
 public:
  static ZYMMetaObject* MetaObject() { return Format::Rel.meta(); }

  /// From a relationship of a request or a response: its "rid" becomes the CAD id. The write flag is true.
  QELXVARDOSRelLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& relationship);
  /// From an element of a record file; the flag is not read.
  QELXVARDOSRelLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& element, bool& fromFile);
  /// Both in format "0.0".
  explicit QELXVARDOSRelLRDObject(const ZYMIDOMNode_var& relationship)
      : QELXVARDOSRelLRDObject(Format::Rel, relationship) {}
  QELXVARDOSRelLRDObject(const ZYMIDOMNode_var& element, bool& fromFile)
      : QELXVARDOSRelLRDObject(Format::Rel, element, fromFile) {}

  /// Reads "id" and "phid", and "childPhid" where the format has it; a missing "phid" element raises
  /// ZYMNullHandleError.
  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  const ZYMUnicodeString& GetId() const override { return relUuid_; }
  ZYMUnicodeString GetTopNode() const override { return topNode_; }
  ZYMUnicodeString GetChildPhid() const override { return childPhid_; }
  /// Takes the first child's physical id as "childPhid" before it writes, and keeps it.
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;

 private:
  HRESULT AddChildPhid(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& rel);

  ZYMUnicodeString relUuid_;
  /// Never read from a file.
  ZYMUnicodeString topNode_;
  ZYMUnicodeString childPhid_;
};

using QELXVARDOSRelLRDObject_V3 = RecordOf<QELXVARDOSRelLRDObject, Format::RelV3>;
