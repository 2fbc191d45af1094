#include "records/QELXVARDOSLRDConstants.h"

#include "platform/ZYMLoadOrder.h"

namespace Word {
// Record files.
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Object("object");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Phid("phid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString ObjectChangeStamp("objectChangeStamp");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CEStamp("ceStamp");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Hashcode("hashcode");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString MacroCEStamp("macroceStamp");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString XSStamp("xsStamp");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Version("version");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Action("action");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString SetCadOrigin("setcadorigin");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CadOrigin("cadorigin");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString NoCadOrigin("null");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Id("id");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Structure("structure");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Composition("composition");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Rel("rel");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString RelUuid("reluuid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Rid("rid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TopNode("topnode");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString ChildPhid("childPhid");

// Commands and responses.
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Command("command");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Response("response");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CName("cname");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CheckinEx("checkinEx");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CheckoutEx("checkoutEx");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CheckoutExPath("checkoutExPath");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString LockUnlockEx("lockunlockEx");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CadObjDetails("cadobjdetails");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString SyncLocalRecognition("synclocalrecognition");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Mode("mode");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString ModeOfVersion("mode");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Path("path");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString NoCompletion("nocompletion");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString DownloadFileOnly("downloadfileonly");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Info("info");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString StreamKind("streamkind");

// Objects and relationships.
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CadObjectList("cadobjectlist");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CadObject("cadobject");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString RelationshipList("relationshiplist");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Relationship("relationship");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CadRelationship("cadrelationship");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString CadId("cadid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Selected("selected");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Download("download");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString MxType("mxtype");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Type("type");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TypeOfDerivedOutput("type");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString FileName("filename");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString DirName("dirname");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Active("active");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Family("family");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Dpt("dpt");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Dpe("dpe");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Oid("oid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString ParentId("parentid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString FamilyId("familyid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString ComposerId("composerid");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString LRDFile("lrdfile");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString ObjectFile("objectfile");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString HashcodeOfRequest("hashcode");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString HashcodeFromLRD("hashcodefromlrd");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Import("import");

// Verdicts.
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Status("status");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Exists("EXISTS");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString ModifiedVerdict("MODIFIED");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Unknown("UNKNOWN");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Modified("modified");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString RecognizeAsNew("recognizeasnew");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString NotPresent("notPresent");

// Plain values.
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString True("true");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString UpperTrue("TRUE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString False("false");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString Creo("CREO");
}  // namespace Word

namespace QELXVARDOSLRDConstants {
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_OBJECTWITHOUTFILE_LIKE("TYPE_OBJECT_WITHOUT_FILE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_KORVANTHEMIX_LIKE("TYPE_KORVANTHEMIX_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_EMBEDEDCOMPONENT_LIKE("TYPE_EMBEDDED_COMPONENT_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_FAMILYITEM_LIKE("TYPE_FAMILY_ITEM_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_DERIVED_OUTPUT_LIKE("TYPE_DERIVED_OUTPUT_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_DO_DOCUMENT_LIKE("TYPE_DO_DOCUMENT_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_VISUALIZATION_LIKE("TYPE_VISUALIZATION_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString TYPE_BREP_LIKE("TYPE_BREP_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString REL_DERIVED_OUTPUT_LIKE("REL_DERIVED_OUTPUT_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString REL_DO_DOCUMENT_LIKE("REL_DO_DOCUMENT_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString REL_VISUALIZATION_LIKE("REL_VISUALIZATION_LIKE");
ZYM_LOADED_AS(Vocabulary) const ZYMUnicodeString REL_BREP_LIKE("REL_BREP_LIKE");
}  // namespace QELXVARDOSLRDConstants

namespace FileName {
ZYM_LOADED_AS(FileNames) const ZYMUnicodeString RecordFolder(".KORVANTHEMIX");
ZYM_LOADED_AS(FileNames) const ZYMUnicodeString RecordSuffix(".xml");
}  // namespace FileName

namespace FormatVersion {
ZYM_LOADED_AS(FormatVersions) const ZYMUnicodeString V0("0.0");
ZYM_LOADED_AS(FormatVersions) const ZYMUnicodeString V1("1.0");
ZYM_LOADED_AS(FormatVersions) const ZYMUnicodeString V2("2.0");
ZYM_LOADED_AS(FormatVersions) const ZYMUnicodeString V3("3.0");
ZYM_LOADED_AS(FormatVersions) const ZYMUnicodeString V4("4.0");
ZYM_LOADED_AS(DefaultFormatVersion) const ZYMUnicodeString Default(V0);
ZYM_LOADED_AS(Capabilities) const ZYMUnicodeString Attribute("lrdversion");
}  // namespace FormatVersion

namespace Capability {
ZYM_LOADED_AS(Capabilities) const ZYMUnicodeString Baseline("SupportForBaseline");
ZYM_LOADED_AS(Capabilities) const ZYMUnicodeString DeleteFromWebUsingMCES("SupportForDeleteFromWebUsingMCES");
ZYM_LOADED_AS(Capabilities) const ZYMUnicodeString CheckoutExModePath("SupportForCheckoutExModePath");
ZYM_LOADED_AS(Capabilities) const ZYMUnicodeString RelUUIDRecognition("SupportForRelUUIDRecognition");
ZYM_LOADED_AS(Capabilities) const ZYMUnicodeString MacroCEStamp("SupportForMacroCEStamp");
}  // namespace Capability

namespace KindName {
ZYM_LOADED_AS(KindNames) const ZYMUnicodeString Full("QELWUBFullLRDObject");
ZYM_LOADED_AS(KindNames) const ZYMUnicodeString Child("QELWUBChildLRDObject");
ZYM_LOADED_AS(KindNames) const ZYMUnicodeString Composition("QELWUBCompositionLRDObject");
ZYM_LOADED_AS(KindNames) const ZYMUnicodeString Rel("QELWUBRelLRDObject");
}  // namespace KindName

namespace ClassName {
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString Plain("QELXVARDOSLRDObject");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString Full("QELXVARDOSFullLRDObject");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString FullV1("QELXVARDOSFullLRDObject_V1");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString FullV2("QELXVARDOSFullLRDObject_V2");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString FullV4("QELXVARDOSFullLRDObject_V4");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString Child("QELXVARDOSChildLRDObject");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString ChildV1("QELXVARDOSChildLRDObject_V1");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString ChildV4("QELXVARDOSChildLRDObject_V4");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString Composition("QELXVARDOSCompositionLRDObject");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString CompositionV1("QELXVARDOSCompositionLRDObject_V1");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString CompositionV4("QELXVARDOSCompositionLRDObject_V4");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString Rel("QELXVARDOSRelLRDObject");
ZYM_LOADED_AS(ClassNames) const ZYMUnicodeString RelV3("QELXVARDOSRelLRDObject_V3");
}  // namespace ClassName
