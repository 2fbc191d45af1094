#pragma once

#include "records/StampedLRDObject.h"

/// A full record stands for one CAD object file. Its element is "object". It nests every child whatever the child's
/// write flag, and keeps the child and composition records of its own object beside them: those never stand in its own
/// file.
class QELXVARDOSFullLRDObject : public StampedLRDObject {
 public:
  static ZYMMetaObject* MetaObject() { return Format::Full.meta(); }

  /// From an object of a request or a response. The write flag is true but in format "0.0", which has no version.
  QELXVARDOSFullLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject,
                          const ZYMUnicodeString& version);
  /// From an element of a record file; the flag is not read.
  QELXVARDOSFullLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& element, bool& fromFile);
  /// Both in format "0.0".
  explicit QELXVARDOSFullLRDObject(const ZYMIDOMNode_var& cadobject)
      : QELXVARDOSFullLRDObject(Format::Full, cadobject, {}) {}
  QELXVARDOSFullLRDObject(const ZYMIDOMNode_var& element, bool& fromFile)
      : QELXVARDOSFullLRDObject(Format::Full, element, fromFile) {}
  ~QELXVARDOSFullLRDObject() override;

  ZYMUnicodeString GetVersion() const override { return version_; }
  ZYMUnicodeString GetCadOrigin() const override { return cadOrigin_; }
  /// Of formats whose version gets lost, a record made from a file is written with an empty one.
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;
  /// Takes what its format lets it; any other record is dropped without a word.
  void AddChild(const ZYMBaseUnknown_var& child) override;
  /// The sub-records take the other record's physical id and stamps too. From format "1.0" on, the CAD origin and the
  /// type classes are taken over after an update element with action="setcadorigin".
  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override;
  HRESULT GetChildLRDObject(QELXIVARDOSLRDObject_var& record) override;
  HRESULT GetCompositionLRDObject(QELXIVARDOSLRDObject_var& record) override;
  HRESULT UpdateLRDObjectFromXML(const ZYMIDOMNode_var& element) override;
  void AddCompositionObject(const QELXIVARDOSLRDObject_var& record) override { subRecords_.Append(record); }

 private:
  /// Whether it has what "1.0" brought: a version, a macro CE stamp and an action.
  bool HasVersion() const { return format_.version != RecordFormat::Version::HasNone; }
  /// Appends the XML of the children to object and hands object out, whatever becomes of the children.
  HRESULT AppendChildren(const QELXIVARDOSLRDObject_varList& visited, const ZYMIDOMElement_var& object,
                         ZYMIDOMElement_var& element);
  void FindSubRecord(const ZYMUnicodeString& className, QELXIVARDOSLRDObject_var& record) const;
  HRESULT UpdateCoreFromXML(const ZYMIDOMElement_var& element);

  QELXIVARDOSLRDObject_varList subRecords_;
  ZYMUnicodeString cadOrigin_;
  /// What the last update element wanted done.
  ZYMUnicodeString action_;
  ZYMUnicodeString version_;
  bool losesVersion_ = false;
};

using QELXVARDOSFullLRDObject_V1 = RecordOf<QELXVARDOSFullLRDObject, Format::FullV1>;
using QELXVARDOSFullLRDObject_V2 = RecordOf<QELXVARDOSFullLRDObject, Format::FullV2>;
using QELXVARDOSFullLRDObject_V4 = RecordOf<QELXVARDOSFullLRDObject, Format::FullV4>;
