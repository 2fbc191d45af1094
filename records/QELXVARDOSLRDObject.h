#pragma once

#include <system_error>

#include "component/QELXIVARDOSLRDObject.h"
#include "platform/QELVARDOSPath.h"
#include "platform/ZYMIDOM.h"

/// The base of all records. By itself it is a plain record: it has the fields that every record shares, writes its four
/// core values and nests those of its children whose write flag is set.
class QELXVARDOSLRDObject : public QELXIVARDOSLRDObject {
  ZYM_DECLARE_COMPONENT(QELXVARDOSLRDObject);

 public:
  /// Everything empty, both flags false.
  QELXVARDOSLRDObject();
  /// From the attributes of an object in a request or a response; a missing attribute reads as empty. The stamp is the
  /// object file's own. A node that is no element leaves the record empty.
  explicit QELXVARDOSLRDObject(const ZYMIDOMNode_var& cadobject);
  ~QELXVARDOSLRDObject() override;

  HRESULT Initialize(const ZYMIDOMNode_var& element) override;
  const ZYMUnicodeString& GetSelectedFlag() const override { return selectedFlag_; }
  const ZYMUnicodeString& GetPhysicalId() const override { return physicalId_; }
  void SetPhysicalId(const ZYMUnicodeString& physicalId) override { physicalId_ = physicalId; }
  const ZYMUnicodeString& GetObjectChangeStamp() const override { return objectChangeStamp_; }
  void SetObjectChangeStamp(const ZYMUnicodeString& stamp) override {
    objectChangeStamp_ = stamp;
    unseen_.clear();
  }
  const ZYMUnicodeString& GetCadId() const override { return cadId_; }
  const ZYMUnicodeString& GetHashcode() const override { return hashcode_; }
  void SetHashcode(const ZYMUnicodeString& hashcode) override { hashcode_ = hashcode; }
  const ZYMUnicodeString& GetMxType() const override { return mxType_; }
  void SetMxType(const ZYMUnicodeString& type) override { mxType_ = type; }
  const ZYMUnicodeString& GetType() const override { return type_; }
  ZYMUnicodeString GetLRDFolderPath() const override { return recordFolder_.ToString(); }
  ZYMUnicodeString GetLRDFilePath() const override { return recordFile_.ToString(); }
  void SetLRDFilePath(const QELVARDOSPath& path) override;
  const QELVARDOSPath& GetObjectFilePath() const override { return objectFile_; }
  void SetObjectFilePath(const QELVARDOSPath& path) override { objectFile_ = path; }
  const ZYMUnicodeString& GetCEStamp() const override { return ceStamp_; }
  void SetCEStamp(const ZYMUnicodeString& stamp) override { ceStamp_ = stamp; }
  const ZYMUnicodeString& GetId() const override;
  ZYMUnicodeString GetTopNode() const override { return {}; }
  void SetStateFlag(bool foundInParent) override { stateFlag_ = foundInParent; }
  const bool& GetStateFlag() const override { return stateFlag_; }
  const bool& GetWriteFlag() const override { return writeFlag_; }
  const QELXIVARDOSLRDObject_varList& GetChildren() const override { return children_; }
  const ZYMUnicodeStringList& GetTypeClasses() const override { return typeClasses_; }
  void AddTypeClass(const ZYMUnicodeString& typeClass) override { typeClasses_.Append(typeClass); }
  ZYMUnicodeStringList GetCompositionList() const override { return {}; }
  ZYMUnicodeString GetVersion() const override { return {}; }
  ZYMUnicodeString GetMacroCEStamp() const override { return {}; }
  ZYMUnicodeString GetChildPhid() const override { return {}; }
  ZYMUnicodeString GetCadOrigin() const override { return {}; }
  void AddParentRelationship(const QELXIVARDOSLRDObject_var& relationship) override;
  const QELXIVARDOSLRDObject_varList& GetParentRelationships() const override { return parentRelationships_; }
  void AddChildRelationship(const QELXIVARDOSLRDObject_var& relationship) override;
  const QELXIVARDOSLRDObject_varList& GetChildRelationships() const override { return childRelationships_; }
  void AddRelatedChild(const QELXIVARDOSLRDObject_var& child) override { relatedChildren_.Append(child); }
  const QELXIVARDOSLRDObject_varList& GetRelatedChildren() const override { return relatedChildren_; }
  HRESULT ComputeObjectChangeStamp(ZYMUnicodeString& stamp) override;
  HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) override;
  HRESULT GetRootDocument(ZYMIDOMDocument_var& document) override;
  HRESULT GetChildObject(const ZYMUnicodeString& id, QELXIVARDOSLRDObject_var& record) override;
  void AddChild(const ZYMBaseUnknown_var& child) override;
  HRESULT CopyFromLRDObject(const QELXIVARDOSLRDObject_var& other) override;
  void updateLRDObject(const QELXIVARDOSLRDObject_var& other) override;
  HRESULT GetChildLRDObject(QELXIVARDOSLRDObject_var& record) override;
  HRESULT GetCompositionLRDObject(QELXIVARDOSLRDObject_var& record) override;
  HRESULT UpdateLRDObjectFromXML(const ZYMIDOMNode_var& element) override;
  void AddCompositionObject(const QELXIVARDOSLRDObject_var& record) override;
  ZYMUnicodeString GetXSStamp() const override { return {}; }
  HRESULT updateLRDObjectCEStampOnly(const QELXIVARDOSLRDObject_var& other) override;

 protected:
  /// The stamp of the file that the element names; empty without "filename" and without a file.
  HRESULT GetLocalFileStamp(const ZYMIDOMElement_var& element, ZYMUnicodeString& stamp);

  HRESULT AddPhysicalIdNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);
  HRESULT AddObjectChangeStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);
  HRESULT AddCEStampNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);
  HRESULT AddHashcodeNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);
  /// What the four above and their like in later formats do.
  HRESULT AddTextNode(const ZYMUnicodeString& tag, const ZYMUnicodeString& value, const ZYMIDOMDocument_var& document,
                      const ZYMIDOMElement_var& parent);
  /// The same without a line in the trace.
  HRESULT AppendTextNode(const ZYMUnicodeString& tag, const ZYMUnicodeString& value,
                         const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);
  /// A new document with its document element.
  static HRESULT CreateDocument(const ZYMUnicodeString& rootName, ZYMIDOMDocument_var& document,
                                ZYMIDOMElement_var& root);
  /// The same for the XML of this record. Nothing is made, and the answer is E_FAIL with the reason as the last error,
  /// when there are more records around it, visited, than a file can be nested deep, and when the object's file could
  /// not be looked at: the record would say what is not known.
  HRESULT BeginXML(const QELXIVARDOSLRDObject_varList& visited, const ZYMUnicodeString& rootName,
                   ZYMIDOMDocument_var& document, ZYMIDOMElement_var& root) const;

  /// Takes the text of the first element of that name below element, as TakeTextOfFirst does; a missing element raises
  /// ZYMNullHandleError: a record file must have it.
  static void ReadRequiredText(const ZYMIDOMElement_var& element, const ZYMUnicodeString& tag, ZYMUnicodeString& value);

  /// Drops the list's references. However long the chain of records that dies with them, none is destroyed within
  /// another's destruction.
  static void ReleaseLater(QELXIVARDOSLRDObject_varList& records) noexcept;
  /// For the record that owns this one as a sub-record: undoes the circle of a child record and its relationship.
  void ForgetParentRelationships() noexcept { ReleaseLater(parentRelationships_); }

  ZYMUnicodeString physicalId_;
  ZYMUnicodeString ceStamp_;
  ZYMUnicodeString cadId_;
  ZYMUnicodeString objectChangeStamp_;
  ZYMUnicodeString hashcode_;
  bool writeFlag_ = false;
  QELXIVARDOSLRDObject_varList children_;
  ZYMUnicodeStringList typeClasses_;
  ZYMUnicodeString selectedFlag_;
  ZYMUnicodeString mxType_;
  ZYMUnicodeString type_;
  QELVARDOSPath recordFolder_;
  QELVARDOSPath recordFile_;
  QELVARDOSPath objectFile_;
  QELXIVARDOSLRDObject_varList parentRelationships_;
  QELXIVARDOSLRDObject_varList childRelationships_;
  QELXIVARDOSLRDObject_varList relatedChildren_;
  bool stateFlag_ = false;
  /// Why the object's file could not be looked at when its stamp was last asked for.
  std::error_code unseen_;

  friend class QELXVARDOSFullLRDObject;
};
