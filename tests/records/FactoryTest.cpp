#include <gtest/gtest.h>

#include <string>

#include "records/QELXVARDOSLRDConstants.h"
#include "records/QELXVARDOSLRDVersionInfo.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/TestConfiguration.h"

namespace {

class FactoryTest : public ModuleTest {
 protected:
  Record Make(const std::string& command, const std::string& object) {
    Record record;
    EXPECT_EQ(factory_.GetLRDObject(config_, Tree(command), Tree(object), record), S_OK);
    return record;
  }

  QELXVARDOSLRDFactory factory_;
  const QELXVARDOSLRDVersionInfo versions_{};
  const TestConfiguration_var config_ = ZYMMakeComponent<TestConfiguration>();
};

const std::string ByPath = "<command mode='path' nocompletion='true'/>";

std::string Located(const std::string& folder, const std::string& file) {
  return Element("o", "dirname='" + folder + "' filename='" + file + "'");
}

/// The class names of a record and of its child and composition records, without what they share.
std::string Classes(const Record& record) {
  if (record.IsNull()) {
    return "";
  }
  Record child;
  Record composition;
  record->GetChildLRDObject(child);
  record->GetCompositionLRDObject(composition);
  std::string names;
  for (const Record& part : {record, child, composition}) {
    const std::string name = part.IsNull() ? "" : part->IsA();
    names += name.empty() ? "-" : name.substr(10).replace(name.find("LRD") - 10, 9, "") + " ";
  }
  return names;
}

TEST_F(FactoryTest, a_version_tells_its_capabilities_and_its_classes) {
  const std::string mces = "SupportForBaseline SupportForDeleteFromWebUsingMCES ";
  for (const auto& [version, capabilities, full, entry, rel] :
       Rows<5>{{"0.0", "SupportForBaseline ", "", "", ""},
               {"1.0", mces, "_V1", "_V1", ""},
               {"2.0", mces + "SupportForCheckoutExModePath ", "_V2", "_V1", ""},
               {"3.0", mces + "SupportForRelUUIDRecognition ", "_V1", "_V1", "_V3"},
               {"4.0", "none", "_V4", "_V4", "_V3"}}) {
    const auto* found = versions_.GetCapabilities(version);
    EXPECT_EQ(found == nullptr ? "none" : Joined(*found), capabilities) << version;
    EXPECT_EQ(versions_.GetClassName(version, KindName::Full), "QELXVARDOSFullLRDObject" + full);
    EXPECT_EQ(versions_.GetClassName(version, KindName::Child), "QELXVARDOSChildLRDObject" + entry);
    EXPECT_EQ(versions_.GetClassName(version, KindName::Composition), "QELXVARDOSCompositionLRDObject" + entry);
    EXPECT_EQ(versions_.GetClassName(version, KindName::Rel), "QELXVARDOSRelLRDObject" + rel);
    EXPECT_EQ(versions_.GetClassName(version, ClassName::Full), "");
  }
  for (const char* unknown : {"5.0", "", "4.0 "}) {
    EXPECT_EQ(versions_.GetCapabilities(unknown), nullptr);
    EXPECT_EQ(versions_.GetClassName(unknown, KindName::Full), "");
  }
  EXPECT_EQ(FormatVersion::Default, "0.0");
}

TEST_F(FactoryTest, a_command_calls_for_a_format_and_a_composition_for_its_record) {
  for (const auto& [command, object, classes] :
       Rows<3>{{"<command/>", "<cadobject parentid='p' familyid=','/>", "Full_V4 Child_V4 -"},
               {"<command mode='path'/>", "<cadobject familyid='f'/>", "Full_V4 Child_V4 Composition_V4 "},
               {"<command nocompletion='true'/>", "<cadobject composerid='c'/>", "Full_V4 Child_V4 Composition_V4 "},
               {"<command mode='Path' nocompletion='true'/>", "<cadobject/>", "Full_V4 Child_V4 -"},
               {"<command mode='path' nocompletion='TRUE'/>", "<cadobject/>", "Full_V4 Child_V4 -"},
               {ByPath, "<cadobject/>", "Full_V2 --"},
               {ByPath, "<cadobject familyid='f'/>", "Full_V2 -Composition_V1 "},
               {"<command/>", "<relationship/>", "Rel --"},
               {ByPath, "<relationship/>", "Rel --"},
               {"<command/>", "<object/>", ""},
               {"<command/>", "<CADOBJECT/>", ""}}) {
    EXPECT_EQ(Classes(Make(command, object)), classes) << command << object;
  }
  Record none;
  EXPECT_EQ(factory_.GetLRDObject(config_, Tree("<command/>"), nullptr, none), S_OK);
  EXPECT_TRUE(none.IsNull());
  EXPECT_EQ(versions_.GetLRDVersion(TextNode()), "");
}

TEST_F(FactoryTest, a_caller_s_errors_raise) {
  const ZYMIDOMNode_var object = Tree("<cadobject/>");
  Record record;
  for (const char* cad : {"CREO", "OTHER"}) {
    config_->cadName = cad;
    EXPECT_THROW(factory_.GetLRDObject(config_, TextNode(), object, record), ZYMNullHandleError);
  }
  EXPECT_THROW(factory_.GetLRDObject(nullptr, object, object, record), ZYMNullHandleError);
  EXPECT_THROW(factory_.ClassifyLRDObject(config_, object, nullptr), ZYMNullHandleError);
  EXPECT_THROW(factory_.SetLRDFile(config_, object, nullptr), ZYMNullHandleError);
}

TEST_F(FactoryTest, the_platform_s_own_objects_have_one_class_and_all_others_those_of_their_type) {
  config_->classes.insert({{"both", "TYPE_FAMILY_ITEM_LIKE"}, {"both", "TYPE_EMBEDDED_COMPONENT_LIKE"}});
  for (const auto& [mode, object, classes] :
       Rows<3>{{"", "type='both'", "TYPE_EMBEDDED_COMPONENT_LIKE TYPE_FAMILY_ITEM_LIKE "},
               {"", "type='bare' cadorigin='x'", "TYPE_OBJECT_WITHOUT_FILE "},
               {"", "type='bare' cadorigin=''", "TYPE_KORVANTHEMIX_LIKE "},
               {"mode='Import'", "type='bare' cadorigin=''", "TYPE_KORVANTHEMIX_LIKE "},
               {"mode='import'", "type='bare' cadorigin=''", "TYPE_OBJECT_WITHOUT_FILE "},
               {"", "", ""}}) {
    const Record record = Make(Element("command", mode), Element("cadobject", object));
    EXPECT_EQ(Joined(record->GetTypeClasses()), classes) << mode << " " << object;
  }
}

TEST_F(FactoryTest, the_type_names_the_attribute_that_identifies_an_object) {
  for (const auto& [cad, object, identifier] : Rows<3>{{"CREO", "<o type='part' filename='a.prt.3'/>", "a.prt"},
                                                       {"OTHER", "<o type='part' filename='a.prt.3'/>", "a.prt.3"},
                                                       {"CREO", "<o type='instance' name='a.prt.3'/>", "a.prt.3"},
                                                       {"CREO", "<o type='none' filename='a'/>", ""},
                                                       {"CREO", "<o filename='a' name='b'/>", ""}}) {
    config_->cadName = cad;
    EXPECT_EQ(factory_.GetIdentifier(config_, Tree(object)), identifier) << cad << object;
  }
  EXPECT_EQ(factory_.GetIdentifier(nullptr, Tree("<o type='part' filename='a'/>")), "");
  EXPECT_EQ(factory_.GetIdentifier(config_, TextNode()), "");
}

TEST_F(FactoryTest, all_versions_of_a_creo_file_share_a_record_file_and_both_paths_are_always_given) {
  for (const auto& [cad, folder, file, object, record] :
       Rows<5>{{"CREO", "/d", "a.prt.3", "/d/a.prt.3", "/d/.KORVANTHEMIX/a.prt.xml"},
               {"CREO", "/d/", "a.prt.12", "/d/a.prt.12", "/d/.KORVANTHEMIX/a.prt.xml"},
               {"Creo", "d", "a.prt.3", "d/a.prt.3", "d/.KORVANTHEMIX/a.prt.3.xml"},
               {"", "", "", "", ".KORVANTHEMIX/.xml"},
               {"CREO", "d", "", "d", "d/.KORVANTHEMIX/.xml"}}) {
    ZYMUnicodeStringZYMUnicodeStringDico paths;
    const ZYMIDOMElement_var tree = Tree(Located(folder, file));
    EXPECT_EQ(factory_.GetObjectFileLRDFile(cad, tree, paths), S_OK);
    EXPECT_EQ(paths["objectfile"], object);
    EXPECT_EQ(paths["lrdfile"], record);
  }
}

}  // namespace
