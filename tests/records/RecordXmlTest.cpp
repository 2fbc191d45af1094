#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"

namespace {

class RecordXmlTest : public ModuleTest {
 protected:
  RecordXmlTest() { folder_.PutFile("part.prt.1", 100); }

  /// An object and a relationship at once, with everything that any record reads.
  std::string Everything() const {
    return "<o phid='P' cadid='c' ceStamp='CE' macroceStamp='M' xsStamp='XS' hashcode='H' selected='true' mxtype='MX' "
           "type='T' cadorigin='O' reluuid='U' rid='r' topnode='dpt' filename='part.prt.1' dirname='" +
           folder_.Root() + "'/>";
  }

  ScratchFolder folder_;
};

template <typename Class>
Record FromObject(const ZYMIDOMNode_var& object) {
  return ZYMMakeComponent<Class>(object);
}
template <typename Class>
Record Full(const ZYMIDOMNode_var& object) {
  return ZYMMakeComponent<Class>(object, ZYMUnicodeString("V"));
}
template <typename Class>
Record Child(const ZYMIDOMNode_var& object) {
  return ZYMMakeComponent<Class>(object, ZYMUnicodeString("I"));
}
template <typename Class>
Record Composition(const ZYMIDOMNode_var& object) {
  return ZYMMakeComponent<Class>(object, ZYMUnicodeString("I"), ZYMUnicodeStringList{"a", "b"});
}

using Maker = Record (*)(const ZYMIDOMNode_var& object);

/// What a class makes of an object that has everything, writes of it, and reads back.
struct ClassCase {
  std::string name;
  Maker make;
  std::string madeFields, xml, readFields;
};

const std::string OfObject = " cadid=c type=T mxtype=MX selected=true";

std::string Stamps(int format) { return format == 4 ? MacroAndXS : format == 0 ? "" : Macro; }
std::string Kept(int format) {
  const std::string stamps = format == 4 ? "macro=M xs=XS " : format == 0 ? "" : "macro=M ";
  return "phid=P stamp=100 ce=CE " + stamps + "hash=H";
}
ClassCase FullCase(const char* name, Maker make, int format) {
  const std::string version = format == 0 ? "" : " version=V";
  const std::string xml =
      (format == 0 ? "<object>" : "<object version=\"V\">") + Core("P", "100", Stamps(format)) + "</object>";
  const std::string flags = format == 0 ? "" : " flags=write";
  return {name, make, Kept(format) + version + OfObject + " origin=O" + flags, xml, Kept(format) + version};
}
ClassCase ChildCase(const char* name, Maker make, int format) {
  const std::string xml = "<structure id=\"I\">" + Core("P", "100", Stamps(format)) + "</structure>";
  return {name, make, Kept(format) + " id=I" + OfObject, xml, Kept(format) + " id=I"};
}
ClassCase CompositionCase(const char* name, Maker make, int format) {
  const std::string xml = "<composition id=\"I\">" + Core("P", "100", Stamps(format)) + "</composition>";
  return {name, make, Kept(format) + " id=I" + OfObject + " members=a b  flags=write", xml, Kept(format) + " id=I"};
}
ClassCase RelCase(const char* name, Maker make) {
  return {name, make, Kept(0) + " id=U cadid=r type=T mxtype=MX selected=true top=dpt flags=write",
          "<rel id=\"U\"><phid>P</phid></rel>", "phid=P id=U"};
}

const std::vector<ClassCase>& Classes() {
  static const std::vector<ClassCase> classes = {
      FullCase("QELXVARDOSFullLRDObject", FromObject<QELXVARDOSFullLRDObject>, 0),
      FullCase("QELXVARDOSFullLRDObject_V1", Full<QELXVARDOSFullLRDObject_V1>, 1),
      FullCase("QELXVARDOSFullLRDObject_V2", Full<QELXVARDOSFullLRDObject_V2>, 2),
      FullCase("QELXVARDOSFullLRDObject_V4", Full<QELXVARDOSFullLRDObject_V4>, 4),
      ChildCase("QELXVARDOSChildLRDObject", Child<QELXVARDOSChildLRDObject>, 0),
      ChildCase("QELXVARDOSChildLRDObject_V1", Child<QELXVARDOSChildLRDObject_V1>, 1),
      ChildCase("QELXVARDOSChildLRDObject_V4", Child<QELXVARDOSChildLRDObject_V4>, 4),
      CompositionCase("QELXVARDOSCompositionLRDObject", Composition<QELXVARDOSCompositionLRDObject>, 0),
      CompositionCase("QELXVARDOSCompositionLRDObject_V1", Composition<QELXVARDOSCompositionLRDObject_V1>, 1),
      CompositionCase("QELXVARDOSCompositionLRDObject_V4", Composition<QELXVARDOSCompositionLRDObject_V4>, 4),
      RelCase("QELXVARDOSRelLRDObject", FromObject<QELXVARDOSRelLRDObject>),
      RelCase("QELXVARDOSRelLRDObject_V3", FromObject<QELXVARDOSRelLRDObject_V3>)};
  return classes;
}

/// The text without the elements of that name.
std::string Without(std::string xml, const std::string& tag) {
  const std::string end = "</" + tag + ">";
  for (std::size_t at = 0; (at = xml.find("<" + tag + ">")) != std::string::npos;) {
    xml.erase(at, xml.find(end) + end.size() - at);
  }
  return xml;
}

std::string Object(const std::string& phid, const std::string& nested = "") {
  return "<object>" + Core(phid) + nested + "</object>";
}

TEST_F(RecordXmlTest, each_class_keeps_and_writes_its_fields_and_no_others) {
  for (const auto& [name, make, madeFields, xml, readFields] : Classes()) {
    const Record record = make(Tree(Everything()));
    EXPECT_EQ(record->IsA(), name);
    EXPECT_EQ(Fields(record), madeFields) << name;
    EXPECT_EQ(Xml(record), xml) << name;
    const Record read = FromFile(name, xml);
    EXPECT_EQ(Fields(read), readFields) << name;
    const bool losesVersion = name.ends_with("FullLRDObject_V1") || name.ends_with("V2");
    EXPECT_EQ(Xml(read), losesVersion ? "<object version=\"\">" + Core("P", "100", Macro) + "</object>" : xml) << name;
    EXPECT_EQ(Fields(FromFile(name, TextNode())), "") << name;
  }
}

TEST_F(RecordXmlTest, a_missing_core_element_raises_and_a_missing_later_stamp_does_not) {
  for (const auto& [name, make, madeFields, xml, readFields] : Classes()) {
    for (const std::string tag : {"phid", "objectChangeStamp", "ceStamp", "hashcode", "macroceStamp", "xsStamp"}) {
      const std::string without = Without(xml, tag);
      if (without != xml && tag != "macroceStamp" && tag != "xsStamp") {
        EXPECT_THROW(FromFile(name, without), ZYMNullHandleError) << name << " " << tag;
      } else {
        EXPECT_EQ(FromFile(name, without)->GetPhysicalId(), "P") << name << " " << tag;
      }
    }
  }
}

TEST_F(RecordXmlTest, text_is_that_of_the_first_child_of_the_first_element_of_that_name) {
  const Record record =
      FromFile("QELXVARDOSFullLRDObject_V1",
               "<object version='1.0'><phid><b>deep</b></phid><objectChangeStamp><!--7-->8</objectChangeStamp>"
               "<ceStamp><![CDATA[<9>]]></ceStamp><ceStamp>second</ceStamp><hashcode/><structure>"
               "<macroceStamp>nested</macroceStamp></structure></object>");
  EXPECT_EQ(Fields(record), "stamp=7 ce=<9> macro=nested version=1.0");
}

TEST_F(RecordXmlTest, a_plain_record_hands_out_an_element_only_for_its_children_and_nests_those_to_be_written) {
  const Record plain = Plain(Everything());
  EXPECT_EQ(Xml(plain), "null");
  plain->AddChild(FromFile("QELXVARDOSChildLRDObject", "<structure>" + Core() + "</structure>"));
  EXPECT_EQ(Xml(plain), Object("P"));
  plain->AddChild(Made<QELXVARDOSRelLRDObject>("<relationship reluuid='U' phid='R'/>"));
  EXPECT_EQ(Xml(plain), Object("P", "<rel id=\"U\"><phid>R</phid></rel>"));
  plain->AddChild(ZYMBaseUnknown_var(Tree("<a/>")));
  EXPECT_THROW(Xml(plain), ZYMNullHandleError) << "what is no record is kept as a null handle";
}

TEST_F(RecordXmlTest, a_circle_is_written_once_and_a_record_under_two_parents_twice) {
  const auto object = [](const char* phid) { return FromFile("QELXVARDOSFullLRDObject", Object(phid)); };
  const Record top = object("top");
  const Record left = object("left");
  const Record right = object("right");
  const Record shared = object("shared");
  top->AddChild(left);
  top->AddChild(right);
  left->AddChild(shared);
  right->AddChild(shared);
  EXPECT_EQ(Xml(top), Object("top", Object("left", Object("shared")) + Object("right", Object("shared"))));
  shared->AddChild(top);
  EXPECT_EQ(Xml(top), Object("top", Object("left", Object("shared")) + Object("right", Object("shared"))));
  EXPECT_EQ(Xml(left), Object("left", Object("shared", Object("top", Object("right")))));
  shared->CopyFromLRDObject(object("no children"));
}

TEST_F(RecordXmlTest, a_relationship_takes_its_first_child_s_physical_id_and_keeps_it) {
  const Record rel =
      FromFile("QELXVARDOSRelLRDObject_V3", "<rel id='U'><phid>R</phid><childPhid>old</childPhid></rel>");
  EXPECT_EQ(Xml(rel), "<rel id=\"U\"><phid>R</phid><childPhid>old</childPhid></rel>");
  rel->AddChild(Plain("<o phid='new'/>"));
  rel->AddChild(Plain("<o phid='second'/>"));
  EXPECT_EQ(rel->GetChildPhid(), "old");
  EXPECT_EQ(Xml(rel), "<rel id=\"U\"><phid>R</phid><childPhid>new</childPhid></rel>");
  EXPECT_EQ(rel->GetChildPhid(), "new");
  EXPECT_EQ(Xml(FromFile("QELXVARDOSRelLRDObject_V3", "<rel><phid/><childPhid/></rel>")),
            "<rel id=\"\"><phid></phid></rel>");
}

TEST_F(RecordXmlTest, a_failure_of_any_step_is_passed_on_and_leaves_nothing) {
  std::vector<Record> records = {FullV4(Everything()), Plain(Everything())};
  // A child behind the one that fails does not hide that.
  for (const Record& nesting : records) {
    nesting->AddChild(Made<QELXVARDOSRelLRDObject>(Everything()));
    nesting->AddChild(Made<QELXVARDOSRelLRDObject>(Everything()));
  }
  for (const ClassCase& classCase : Classes()) {
    records.push_back(classCase.make(Tree(Everything())));
  }
  for (const Record& record : records) {
    const std::string xml = Xml(record);
    FailingDom::FailEach([&](const FailingDom& dom) {
      ZYMIDOMElement_var element;
      const HRESULT status = record->GetXMLFormat({}, element);
      const bool failed = dom.HasFailed();
      EXPECT_EQ(status, failed ? FailingDom::Status : S_OK) << record->IsA();
      EXPECT_TRUE(!failed || element.IsNull() || record->GetChildren().Size() != 0) << record->IsA();
      EXPECT_TRUE(failed || Text(FailingDom::Inner(element)) == xml);
    });
  }
}

}  // namespace
