#pragma once

#include <array>
#include <system_error>

#include "component/QELXIVARDOSLRDObject.h"
#include "platform/QELVARDOSPath.h"
#include "platform/ZYMIDOM.h"
#include "records/RecordFormat.h"

/// The base of all records. By itself it is a plain record: it has the fields that every record shares, writes its four
/// core values and nests those of its children whose write flag is set.
class QELXVARDOSLRDObject : public QELXIVARDOSLRDObject {
 public:
  static ZYMMetaObject* MetaObject() { return Format::Plain.meta(); }

  /// Everything empty, both flags false.
  QELXVARDOSLRDObject();
  /// From the attributes of an object in a request or a response; a missing attribute reads as empty. The stamp is the
  /// object file's own. A node that is no element leaves the record empty.
  explicit QELXVARDOSLRDObject(const ZYMIDOMNode_var& cadobject);
  ~QELXVARDOSLRDObject() override;

  /// The class is that of the record's format, whatever its class in C++.
  ZYMMetaObject* GetMetaObject() const override { return format_.meta(); }
  const char* IsA() const override { return GetMetaObject()->IsA(); }
  bool IsAKindOf(const char* className) const override { return GetMetaObject()->IsAKindOf(className); }

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
  ZYMUnicodeStringList GetStampNames() const override;

 protected:
  explicit QELXVARDOSLRDObject(const RecordFormat& format);
  QELXVARDOSLRDObject(const RecordFormat& format, const ZYMIDOMNode_var& cadobject);

  /// The steps of an operation, each of these classes calling the one behind it.
  static void TraceSteps(RecordFormat::Classes classes, const char* operation);
  static HRESULT TraceReturns(RecordFormat::Classes classes, HRESULT status);

  /// The stamp of the file that the element names; empty without "filename" and without a file.
  HRESULT GetLocalFileStamp(const ZYMIDOMElement_var& element, ZYMUnicodeString& stamp);

  /// Adds the values that the record has in a file, all in their order.
  HRESULT AddValues(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const;
  HRESULT AddPhysicalIdNode(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const;
  /// Adds those that formats brought after the first.
  virtual HRESULT AddStamps(const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const;
  /// An element with one text node, which is there even when the text is empty. adder: of the class that the trace
  /// names for it.
  static HRESULT AddValue(const RecordFormat& adder, const RecordValue& value, const ZYMUnicodeString& text,
                          const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);
  /// The same without a line that tells the text.
  static HRESULT AppendTextNode(const ZYMUnicodeString& tag, const ZYMUnicodeString& value,
                                const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent);
  /// Nests the XML of a child into object. path: visited and this record.
  static HRESULT AppendChild(const QELXIVARDOSLRDObject_var& child, const QELXIVARDOSLRDObject_varList& path,
                             const ZYMIDOMElement_var& object);
  /// A new document with its document element for the XML of this record. Nothing is made, and the answer is E_FAIL
  /// with the reason as the last error, when there are more records around it, visited, than a file can be nested deep,
  /// and when the object's file could not be looked at: the record would say what is not known.
  HRESULT BeginXML(const QELXIVARDOSLRDObject_varList& visited, const ZYMUnicodeString& rootName,
                   ZYMIDOMDocument_var& document, ZYMIDOMElement_var& root) const;

  /// Reads what every file must have; a missing element raises ZYMNullHandleError.
  void ReadPhysicalId(const ZYMIDOMElement_var& element);

  /// Drops the list's references. However long the chain of records that dies with them, none is destroyed within
  /// another's destruction.
  static void ReleaseLater(QELXIVARDOSLRDObject_varList& records) noexcept;
  /// For the record that owns this one as a sub-record: undoes the circle of a child record and its relationship.
  void ForgetParentRelationships() noexcept { ReleaseLater(parentRelationships_); }

  const RecordFormat& format_;
  ZYMUnicodeString physicalId_;
  ZYMUnicodeString ceStamp_;
  ZYMUnicodeString cadId_;
  ZYMUnicodeString objectChangeStamp_;
  ZYMUnicodeString hashcode_;
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
  bool writeFlag_ = false;
  bool stateFlag_ = false;
  /// Why the object's file could not be looked at when its stamp was last asked for.
  std::error_code unseen_;

 private:
  /// A value of every record: an element that every file must have.
  struct CoreValue : RecordValue {
    ZYMUnicodeString QELXVARDOSLRDObject::*field = nullptr;
  };
  static const std::array<CoreValue, 4> CoreValues;

  void Read(const CoreValue& value, const ZYMIDOMElement_var& element);
  HRESULT Add(const CoreValue& value, const ZYMIDOMDocument_var& document, const ZYMIDOMElement_var& parent) const;

  friend class QELXVARDOSFullLRDObject;
};
