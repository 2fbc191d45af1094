#pragma once

#include "records/QELXVARDOSLRDObject.h"

/// A full record stands for one CAD object file. Its element is "object". It nests every child whatever the child's
/// write flag, and keeps the child and composition records of its own object beside them: those never stand in its own
/// file. Format "0.0".
class QELXVARDOSFullLRDObject : public QELXVARDOSLRDObject {
  ZYM_DECLARE_COMPONENT(QELXVARDOSFullLRDObject);

 public:
  /// From an object of a request or a response. The write flag stays false.
  explicit QELXVARDOSFullLRDObject(const ZYMIDOMNode_var& cadobject);
  /// From an element of a record file; the flag is not read.
  QELXVARDOSFullLRDObject(const ZYMIDOMNode_var& element, bool& fromFile);
  ~QELXVARDOSFullLRDObject() override;

  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  ZYMUnicodeString GetCadOrigin() const override { return cadOrigin_; }
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;
  /// The sub-records take the other record's physical id and CE stamp too.
  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override;
  HRESULT GetChildLRDObject(QELXIVARDOSLRDObject_var& record) override;
  HRESULT GetCompositionLRDObject(QELXIVARDOSLRDObject_var& record) override;
  HRESULT UpdateLRDObjectFromXML(const ZYMIDOMNode_var& element) override;
  void AddCompositionObject(const QELXIVARDOSLRDObject_var& record) override { subRecords_.Append(record); }

 protected:
  QELXVARDOSFullLRDObject() = default;

  /// The "object" element with its core values and its children; addVersion and addLaterStamps put in their places what
  /// came after the first format.
  template <typename AddVersion, typename AddLaterStamps>
  HRESULT WriteObject(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element,
                      const AddVersion& addVersion, const AddLaterStamps& addLaterStamps);
  /// Takes an attribute into a field and traces it.
  static void UpdateFromAttribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name,
                                  ZYMUnicodeString& field);

  QELXIVARDOSLRDObject_varList subRecords_;
  ZYMUnicodeString cadOrigin_;
  /// What the last update element wanted done.
  ZYMUnicodeString action_;

 private:
  /// Appends the XML of the children to object and hands object out, whatever becomes of the children.
  HRESULT AppendChildren(const QELXIVARDOSLRDObject_varList& visited, const ZYMIDOMElement_var& object,
                         ZYMIDOMElement_var& element);
  void FindSubRecord(const char* className, QELXIVARDOSLRDObject_var& record) const;
};

/// Formats "1.0" and "3.0": "macroceStamp", and "version" on the element.
class QELXVARDOSFullLRDObject_V1 : public QELXVARDOSFullLRDObject {
  ZYM_DECLARE_COMPONENT(QELXVARDOSFullLRDObject_V1);

 public:
  /// The write flag is true.
  QELXVARDOSFullLRDObject_V1(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& version);
  QELXVARDOSFullLRDObject_V1(const ZYMIDOMNode_var& element, bool& fromFile);

  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  /// Of a record made from a file what the file says; GetXMLFormat nevertheless writes it with an empty version.
  ZYMUnicodeString GetVersion() const override { return version_.IsEmpty() ? versionInFile_ : version_; }
  ZYMUnicodeString GetMacroCEStamp() const override { return macroCEStamp_; }
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;
  /// The CAD origin and the type classes are taken over only after an update element with action="setcadorigin".
  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override;
  HRESULT UpdateLRDObjectFromXML(const ZYMIDOMNode_var& element) override;
  HRESULT AddMacroCEStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);

 protected:
  QELXVARDOSFullLRDObject_V1() = default;

  void TakeVersionInFile(const ZYMIDOMNode_var& element);
  void UpdateMacroStampAndOrigin(const QELXIVARDOSLRDObject_var& other);

  ZYMUnicodeString version_;
  ZYMUnicodeString macroCEStamp_;

 private:
  ZYMUnicodeString versionInFile_;
};

/// Format "2.0", for check-out by path: takes composition records alone as children.
class QELXVARDOSFullLRDObject_V2 : public QELXVARDOSFullLRDObject_V1 {
  ZYM_DECLARE_COMPONENT(QELXVARDOSFullLRDObject_V2);

 public:
  QELXVARDOSFullLRDObject_V2(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& version);
  QELXVARDOSFullLRDObject_V2(const ZYMIDOMNode_var& element, bool& fromFile);

  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  /// Any other record is dropped without a word.
  void AddChild(const ZYMBaseUnknown_var& child) override;
};

/// Format "4.0": "xsStamp". A record made from a file keeps its version when it is written again.
class QELXVARDOSFullLRDObject_V4 : public QELXVARDOSFullLRDObject_V1 {
  ZYM_DECLARE_COMPONENT(QELXVARDOSFullLRDObject_V4);

 public:
  QELXVARDOSFullLRDObject_V4(const ZYMIDOMNode_var& cadobject, const ZYMUnicodeString& version);
  QELXVARDOSFullLRDObject_V4(const ZYMIDOMNode_var& element, bool& fromFile);

  ZYMUnicodeString GetXSStamp() const override { return xsStamp_; }
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;
  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override;
  HRESULT UpdateLRDObjectFromXML(const ZYMIDOMNode_var& element) override;
  HRESULT AddXCADSyncroStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);

 private:
  ZYMUnicodeString xsStamp_;
};
