#pragma once

#include "component/QELXIVARDOSLRDObject_varList.h"
#include "platform/QELVARDOSPath.h"
#include "platform/ZYMHandle.h"
#include "platform/ZYMIDOM.h"
#include "platform/ZYMUnicodeString.h"
#include "platform/ZYMUnicodeStringList.h"

/// A record: what the module remembers of one CAD object, of its place in a structure, or of a relationship.
///
/// References that getters answer stay valid as long as the record lives and the field is not set. Time stamps are
/// decimal strings of whole seconds since 1970-01-01 UTC. Handing in a null record raises ZYMNullHandleError where its
/// fields are needed. Operations with a status answer 0 unless a DOM step fails; then they answer the DOM's status.
class ZYM_EXPORT QELXIVARDOSLRDObject : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(QELXIVARDOSLRDObject, "{58AF0FFD-4BFB-4675-BAFC-5F3DB3CBBE2C}");

 public:
  /// Reads the record from its element in a record file. Raises ZYMNullHandleError when an element that the record must
  /// have is missing.
  virtual HRESULT Initialize(const ZYMIDOMNode_var& element) = 0;

  /// "true" when the server's answer selected the object or had it downloaded, else empty.
  virtual const ZYMUnicodeString& GetSelectedFlag() const = 0;
  virtual const ZYMUnicodeString& GetPhysicalId() const = 0;
  virtual void SetPhysicalId(const ZYMUnicodeString& physicalId) = 0;
  /// The object file's modification time when the record was made; empty when there was no file.
  virtual const ZYMUnicodeString& GetObjectChangeStamp() const = 0;
  virtual void SetObjectChangeStamp(const ZYMUnicodeString& stamp) = 0;
  virtual const ZYMUnicodeString& GetCadId() const = 0;
  virtual const ZYMUnicodeString& GetHashcode() const = 0;
  virtual void SetHashcode(const ZYMUnicodeString& hashcode) = 0;
  virtual const ZYMUnicodeString& GetMxType() const = 0;
  virtual void SetMxType(const ZYMUnicodeString& type) = 0;
  virtual const ZYMUnicodeString& GetType() const = 0;

  virtual ZYMUnicodeString GetLRDFolderPath() const = 0;
  virtual ZYMUnicodeString GetLRDFilePath() const = 0;
  /// Also sets the record folder to the folder of the path.
  virtual void SetLRDFilePath(const QELVARDOSPath& path) = 0;
  virtual const QELVARDOSPath& GetObjectFilePath() const = 0;
  virtual void SetObjectFilePath(const QELVARDOSPath& path) = 0;

  virtual const ZYMUnicodeString& GetCEStamp() const = 0;
  virtual void SetCEStamp(const ZYMUnicodeString& stamp) = 0;
  /// What tells a child or composition record apart in its parent; of a relationship its "reluuid"; else empty.
  virtual const ZYMUnicodeString& GetId() const = 0;
  /// Of a relationship made from a server's answer: "dpt" or "dpe" tell which end is the parent; else empty.
  virtual ZYMUnicodeString GetTopNode() const = 0;

  /// true when recognition looked in this record for an entry of the object, and not at the record itself.
  virtual void SetStateFlag(bool foundInParent) = 0;
  virtual const bool& GetStateFlag() const = 0;
  /// Whether a plain record that holds this one as a child nests it into its XML. Full records nest every child.
  virtual const bool& GetWriteFlag() const = 0;

  /// The records that are nested under this one in its file.
  virtual const QELXIVARDOSLRDObject_varList& GetChildren() const = 0;
  virtual const ZYMUnicodeStringList& GetTypeClasses() const = 0;
  virtual void AddTypeClass(const ZYMUnicodeString& typeClass) = 0;
  /// The CAD ids of the objects that a composition record belongs to; never read from a file; else empty.
  virtual ZYMUnicodeStringList GetCompositionList() const = 0;
  /// The format version; empty for records that do not know it.
  virtual ZYMUnicodeString GetVersion() const = 0;
  /// Empty before format "1.0".
  virtual ZYMUnicodeString GetMacroCEStamp() const = 0;
  /// Of a relationship from format "3.0" on: the physical id of its child object; else empty.
  virtual ZYMUnicodeString GetChildPhid() const = 0;
  /// Of a full record made from a server's answer: "null" when the answer named no origin, empty for the platform's
  /// own.
  virtual ZYMUnicodeString GetCadOrigin() const = 0;

  /// Each keeps a reference to the record.
  virtual void AddParentRelationship(const QELXIVARDOSLRDObject_var& relationship) = 0;
  virtual const QELXIVARDOSLRDObject_varList& GetParentRelationships() const = 0;
  virtual void AddChildRelationship(const QELXIVARDOSLRDObject_var& relationship) = 0;
  virtual const QELXIVARDOSLRDObject_varList& GetChildRelationships() const = 0;
  virtual void AddRelatedChild(const QELXIVARDOSLRDObject_var& child) = 0;
  virtual const QELXIVARDOSLRDObject_varList& GetRelatedChildren() const = 0;

  /// Takes the object file's modification time as the stamp and hands it out. Without a file the result is empty and
  /// the record keeps the stamp that it had. Always 0.
  virtual HRESULT ComputeObjectChangeStamp(ZYMUnicodeString& stamp) = 0;
  /// The record as an element of a new document, nested records included. visited: the records whose XML is being built
  /// around this one; they are not nested again. A plain record without children leaves element as it was; every other
  /// class sets it. E_FAIL when a record would stand deeper than 256 below the outermost one, which no file may hold;
  /// QELVARDOSSystemUtils::LastError() then says so.
  virtual HRESULT GetXMLFormat(const QELXIVARDOSLRDObject_varList& visited, ZYMIDOMElement_var& element) = 0;
  /// A new document whose root is an empty "object" element.
  virtual HRESULT GetRootDocument(ZYMIDOMDocument_var& document) = 0;
  /// The first record with this id below this one, depth first. E_FAIL when there is none, and record is as it was.
  virtual HRESULT GetChildObject(const ZYMUnicodeString& id, QELXIVARDOSLRDObject_var& record) = 0;
  /// Keeps a reference. A component that is no record is appended as a null handle; a record of format "2.0" takes
  /// compositions alone.
  virtual void AddChild(const ZYMBaseUnknown_var& child) = 0;
  /// Takes over what describes the object, the children included; not the id, the relationships and the state flag.
  virtual HRESULT CopyFromLRDObject(const QELXIVARDOSLRDObject_var& other) = 0;
  /// Takes over the values that a server's answer changes.
  virtual void updateLRDObject(const QELXIVARDOSLRDObject_var& other) = 0;
  /// The first child record (composition record) that a full record keeps of its own object. record is as it was when
  /// there is none; the status is 0 all the same.
  virtual HRESULT GetChildLRDObject(QELXIVARDOSLRDObject_var& record) = 0;
  virtual HRESULT GetCompositionLRDObject(QELXIVARDOSLRDObject_var& record) = 0;
  /// Takes values from the attributes of an object's element; an absent attribute empties its value. Only full records
  /// do.
  virtual HRESULT UpdateLRDObjectFromXML(const ZYMIDOMNode_var& element) = 0;
  /// Gives a full record a child or composition record of its own object; keeps a reference. Others pass it over.
  virtual void AddCompositionObject(const QELXIVARDOSLRDObject_var& record) = 0;
  /// Empty before format "4.0".
  virtual ZYMUnicodeString GetXSStamp() const = 0;
  virtual HRESULT updateLRDObjectCEStampOnly(const QELXIVARDOSLRDObject_var& other) = 0;

  /// The names of the stamps that formats brought after the first, as record files have them and in their order. The
  /// same for every record, whatever its format.
  virtual ZYMUnicodeStringList GetStampNames() const { return {}; }
  /// The stamp of that name; empty when the record's format has none.
  virtual ZYMUnicodeString GetStamp(const ZYMUnicodeString& /*name*/) const { return {}; }
};
