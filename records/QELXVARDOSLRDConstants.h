#pragma once

#include "platform/ZYMUnicodeString.h"

/// Every word that the module compares or writes, once. Other source files spell none of them. The constants are set
/// when the module is loaded, in the order of ZYMLoadOrder, and never change. A new word is a line here and one in the
/// source.

/// Words of records, requests and responses. Three texts stand twice because they are read for two purposes.
namespace Word {
// Record files.
extern const ZYMUnicodeString Object;  // "object": the root of a record file, and a full record nested in one
extern const ZYMUnicodeString Phid;    // "phid": physical id
extern const ZYMUnicodeString ObjectChangeStamp;  // "objectChangeStamp": the object file's modification time
extern const ZYMUnicodeString CEStamp;            // "ceStamp"
extern const ZYMUnicodeString Hashcode;           // "hashcode"
extern const ZYMUnicodeString MacroCEStamp;       // "macroceStamp": from format "1.0" on
extern const ZYMUnicodeString XSStamp;            // "xsStamp": from format "4.0" on
extern const ZYMUnicodeString Version;            // "version": the format version of a record file
extern const ZYMUnicodeString Action;             // "action": what an update element wants done
extern const ZYMUnicodeString SetCadOrigin;  // "setcadorigin": the action that lets an update take the CAD origin over
extern const ZYMUnicodeString CadOrigin;     // "cadorigin"
extern const ZYMUnicodeString NoCadOrigin;   // "null": the CAD origin of an object whose element names none
extern const ZYMUnicodeString Id;            // "id"
extern const ZYMUnicodeString
    Structure;  // "structure": the element of a child record; in responses the assembly structure
extern const ZYMUnicodeString Composition;  // "composition": the element of a composition record
extern const ZYMUnicodeString Rel;          // "rel": the element of a relationship record
extern const ZYMUnicodeString RelUuid;      // "reluuid"
extern const ZYMUnicodeString Rid;          // "rid"
extern const ZYMUnicodeString TopNode;      // "topnode": which end of a relationship is the parent: Dpt or Dpe
extern const ZYMUnicodeString ChildPhid;    // "childPhid": from format "3.0" on

// Commands and responses.
extern const ZYMUnicodeString Command;               // "command": root of a command
extern const ZYMUnicodeString Response;              // "response": root of a server response
extern const ZYMUnicodeString CName;                 // "cname": the command's name
extern const ZYMUnicodeString CheckinEx;             // "checkinEx"
extern const ZYMUnicodeString CheckoutEx;            // "checkoutEx"
extern const ZYMUnicodeString CheckoutExPath;        // "checkoutExPath"
extern const ZYMUnicodeString LockUnlockEx;          // "lockunlockEx"
extern const ZYMUnicodeString CadObjDetails;         // "cadobjdetails"
extern const ZYMUnicodeString SyncLocalRecognition;  // "synclocalrecognition"
extern const ZYMUnicodeString Mode;                  // "mode": read when a handler is chosen
extern const ZYMUnicodeString
    ModeOfVersion;                   // "mode": read when a format version is chosen and when a record is classified
extern const ZYMUnicodeString Path;  // "path": the mode that asks for records of format "2.0"
extern const ZYMUnicodeString NoCompletion;      // "nocompletion"
extern const ZYMUnicodeString DownloadFileOnly;  // "downloadfileonly"
extern const ZYMUnicodeString Info;              // "info"
extern const ZYMUnicodeString StreamKind;        // "streamkind": set on an object that is a stream of another

// Objects and relationships.
extern const ZYMUnicodeString CadObjectList;        // "cadobjectlist"
extern const ZYMUnicodeString CadObject;            // "cadobject"
extern const ZYMUnicodeString RelationshipList;     // "relationshiplist"
extern const ZYMUnicodeString Relationship;         // "relationship"
extern const ZYMUnicodeString CadRelationship;      // "cadrelationship": a relationship's type
extern const ZYMUnicodeString CadId;                // "cadid"
extern const ZYMUnicodeString Selected;             // "selected"
extern const ZYMUnicodeString Download;             // "download"
extern const ZYMUnicodeString MxType;               // "mxtype": the type's name on the server
extern const ZYMUnicodeString Type;                 // "type": read into a record
extern const ZYMUnicodeString TypeOfDerivedOutput;  // "type": read when derived outputs are told apart
extern const ZYMUnicodeString FileName;             // "filename"
extern const ZYMUnicodeString DirName;              // "dirname"
extern const ZYMUnicodeString Active;               // "active"
extern const ZYMUnicodeString Family;               // "family"
extern const ZYMUnicodeString Dpt;                  // "dpt": the parent is the enclosing object
extern const ZYMUnicodeString Dpe;                  // "dpe": the parent is the object itself
extern const ZYMUnicodeString Oid;                  // "oid"
extern const ZYMUnicodeString ParentId;             // "parentid"
extern const ZYMUnicodeString FamilyId;             // "familyid"
extern const ZYMUnicodeString ComposerId;           // "composerid"
extern const ZYMUnicodeString LRDFile;              // "lrdfile"
extern const ZYMUnicodeString ObjectFile;           // "objectfile"
extern const ZYMUnicodeString HashcodeOfRequest;    // "hashcode": written into a request from a record
extern const ZYMUnicodeString HashcodeFromLRD;      // "hashcodefromlrd"
extern const ZYMUnicodeString
    Import;  // "import": the mode in which the platform's own objects are classified like others

// Verdicts.
extern const ZYMUnicodeString Status;           // "status": receives the verdict
extern const ZYMUnicodeString Exists;           // "EXISTS": the server knows the object unchanged
extern const ZYMUnicodeString ModifiedVerdict;  // "MODIFIED": the server knows it, it was changed locally
extern const ZYMUnicodeString Unknown;          // "UNKNOWN": the server does not know it
extern const ZYMUnicodeString Modified;         // "modified"
extern const ZYMUnicodeString RecognizeAsNew;   // "recognizeasnew"
extern const ZYMUnicodeString NotPresent;       // "notPresent": stands for an "xsStamp" that a request does not have

// Plain values.
extern const ZYMUnicodeString True;       // "true"
extern const ZYMUnicodeString UpperTrue;  // "TRUE"
extern const ZYMUnicodeString False;      // "false": read by no operation
extern const ZYMUnicodeString Creo;       // "CREO": the CAD system whose file names carry versions
}  // namespace Word

/// Type classes of objects and relationships. Three identifiers differ from their texts; traces print the identifiers.
namespace QELXVARDOSLRDConstants {
extern const ZYMUnicodeString TYPE_OBJECTWITHOUTFILE_LIKE;  // "TYPE_OBJECT_WITHOUT_FILE": no file of its own
extern const ZYMUnicodeString TYPE_KORVANTHEMIX_LIKE;       // "TYPE_KORVANTHEMIX_LIKE": native to the PLM platform
extern const ZYMUnicodeString TYPE_EMBEDEDCOMPONENT_LIKE;   // "TYPE_EMBEDDED_COMPONENT_LIKE"
extern const ZYMUnicodeString TYPE_FAMILYITEM_LIKE;         // "TYPE_FAMILY_ITEM_LIKE": item of a family table
extern const ZYMUnicodeString TYPE_DERIVED_OUTPUT_LIKE;     // "TYPE_DERIVED_OUTPUT_LIKE"
extern const ZYMUnicodeString TYPE_DO_DOCUMENT_LIKE;        // "TYPE_DO_DOCUMENT_LIKE": derived-output document
extern const ZYMUnicodeString TYPE_VISUALIZATION_LIKE;      // "TYPE_VISUALIZATION_LIKE"
extern const ZYMUnicodeString TYPE_BREP_LIKE;               // "TYPE_BREP_LIKE": boundary representation
extern const ZYMUnicodeString REL_DERIVED_OUTPUT_LIKE;      // "REL_DERIVED_OUTPUT_LIKE"
extern const ZYMUnicodeString REL_DO_DOCUMENT_LIKE;         // "REL_DO_DOCUMENT_LIKE"
extern const ZYMUnicodeString REL_VISUALIZATION_LIKE;       // "REL_VISUALIZATION_LIKE"
extern const ZYMUnicodeString REL_BREP_LIKE;                // "REL_BREP_LIKE"
}  // namespace QELXVARDOSLRDConstants

/// Names on disk.
namespace FileName {
extern const ZYMUnicodeString RecordFolder;  // ".KORVANTHEMIX": the hidden folder beside the object files
extern const ZYMUnicodeString RecordSuffix;  // ".xml": appended to the object file's name
}  // namespace FileName

/// LRD format versions.
namespace FormatVersion {
extern const ZYMUnicodeString V0;         // "0.0"
extern const ZYMUnicodeString V1;         // "1.0"
extern const ZYMUnicodeString V2;         // "2.0"
extern const ZYMUnicodeString V3;         // "3.0"
extern const ZYMUnicodeString V4;         // "4.0"
extern const ZYMUnicodeString Default;    // "0.0": of a record file that names none
extern const ZYMUnicodeString Attribute;  // "lrdversion"
}  // namespace FormatVersion

/// What a format version lets the server and the client do.
namespace Capability {
extern const ZYMUnicodeString Baseline;                // "SupportForBaseline"
extern const ZYMUnicodeString DeleteFromWebUsingMCES;  // "SupportForDeleteFromWebUsingMCES"
extern const ZYMUnicodeString CheckoutExModePath;      // "SupportForCheckoutExModePath"
extern const ZYMUnicodeString RelUUIDRecognition;      // "SupportForRelUUIDRecognition"
extern const ZYMUnicodeString MacroCEStamp;            // "SupportForMacroCEStamp": in no list and read by no operation
}  // namespace Capability

/// The four kinds of records.
namespace KindName {
extern const ZYMUnicodeString Full;         // "QELWUBFullLRDObject"
extern const ZYMUnicodeString Child;        // "QELWUBChildLRDObject"
extern const ZYMUnicodeString Composition;  // "QELWUBCompositionLRDObject"
extern const ZYMUnicodeString Rel;          // "QELWUBRelLRDObject"
}  // namespace KindName

/// The record classes. Later formats reuse a class where they changed nothing, so numbers are missing.
namespace ClassName {
extern const ZYMUnicodeString Plain;          // "QELXVARDOSLRDObject"
extern const ZYMUnicodeString Full;           // "QELXVARDOSFullLRDObject"
extern const ZYMUnicodeString FullV1;         // "QELXVARDOSFullLRDObject_V1"
extern const ZYMUnicodeString FullV2;         // "QELXVARDOSFullLRDObject_V2"
extern const ZYMUnicodeString FullV4;         // "QELXVARDOSFullLRDObject_V4"
extern const ZYMUnicodeString Child;          // "QELXVARDOSChildLRDObject"
extern const ZYMUnicodeString ChildV1;        // "QELXVARDOSChildLRDObject_V1"
extern const ZYMUnicodeString ChildV4;        // "QELXVARDOSChildLRDObject_V4"
extern const ZYMUnicodeString Composition;    // "QELXVARDOSCompositionLRDObject"
extern const ZYMUnicodeString CompositionV1;  // "QELXVARDOSCompositionLRDObject_V1"
extern const ZYMUnicodeString CompositionV4;  // "QELXVARDOSCompositionLRDObject_V4"
extern const ZYMUnicodeString Rel;            // "QELXVARDOSRelLRDObject"
extern const ZYMUnicodeString RelV3;          // "QELXVARDOSRelLRDObject_V3"
}  // namespace ClassName
