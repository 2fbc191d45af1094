#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/QELVARDOSSystemUtils.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestLayer.h"
#include "tests/support/TraceLines.h"

namespace {

constexpr int Many = 100'000;
const ZYMUnicodeString I("I");

class RecordTest : public ModuleTest {};

Record Entry(const std::string& id, const std::string& phid = "P") {
  return Made<QELXVARDOSChildLRDObject>("<o phid='" + phid + "'/>", ZYMUnicodeString(id));
}
std::string Located(const std::string& folder, const std::string& file) {
  return "<o dirname='" + folder + "' filename='" + file + "'/>";
}
template <typename Class>
Record Full(const std::string& xml) {
  return Made<Class>(xml, ZYMUnicodeString("V"));
}

std::string Found(const Record& top, const std::string& id) {
  Record found;
  const HRESULT status = top->GetChildObject(id, found);
  EXPECT_EQ(FAILED(status), found.IsNull());
  return found.IsNull() ? "" : found->GetPhysicalId().Str();
}

TEST_F(RecordTest, the_stamp_is_the_file_s_whole_second_and_stays_when_the_file_goes) {
  const ScratchFolder folder;
  folder.PutFile("part", -2);
  const Record record = Plain("<o filename='part' dirname='" + folder.Root() + "'/>");
  EXPECT_EQ(record->GetObjectChangeStamp(), "-2");
  EXPECT_EQ(Plain("<o dirname='" + folder.Root() + "'/>")->GetObjectChangeStamp(), "") << "a folder is no object file";
  ZYMUnicodeString stamp;
  folder.PutFile("part", 1'700'000'001);
  EXPECT_EQ(record->ComputeObjectChangeStamp(stamp), S_OK);
  EXPECT_EQ(stamp, "1700000001");
  record->SetObjectFilePath(QELVARDOSPath(folder.At("none")));
  EXPECT_EQ(record->ComputeObjectChangeStamp(stamp), S_OK);
  EXPECT_EQ(stamp, "");
  EXPECT_EQ(record->GetObjectChangeStamp(), "1700000001");
}

TEST_F(RecordTest, a_child_is_to_be_written_when_its_object_has_no_file) {
  const ScratchFolder folder;
  folder.PutFile("part", 1);
  for (const auto& [file, written] : {std::pair{"part", false}, std::pair{"none", true}, std::pair{"", true}}) {
    const std::string object = Located(folder.Root(), file);
    EXPECT_EQ(Made<QELXVARDOSChildLRDObject_V4>(object, I)->GetWriteFlag(), written) << file;
  }
}

TEST_F(RecordTest, a_child_whose_file_was_out_of_sight_for_one_moment_is_not_written_without_its_stamp) {
  const ScratchFolder folder;
  folder.PutFile("part", 1);
  for (const int look : {0, 1}) {
    Record child;
    {
      const TestLayer layer([left = look](const std::string& operation, const std::string&) mutable {
        return operation == "Stat" && left-- == 0 ? make_error_code(std::errc::io_error) : std::error_code();
      });
      child = Made<QELXVARDOSChildLRDObject_V4>(Located(folder.Root(), "part"), I);
    }
    ZYMIDOMElement_var element;
    EXPECT_EQ(child->GetXMLFormat({}, element), E_FAIL) << look;
    EXPECT_EQ(QELVARDOSSystemUtils::LastError(), folder.At("part") + ": Input/output error") << look;
  }
}

TEST_F(RecordTest, a_copy_takes_what_describes_the_object_and_neither_id_nor_relationships_nor_state) {
  const Record original = Made<QELXVARDOSChildLRDObject_V4>(
      "<o phid='P' cadid='c' ceStamp='CE' macroceStamp='M' xsStamp='XS' hashcode='H' selected='true' mxtype='MX' "
      "type='T' "
      "filename='f' dirname='/d'/>",
      I);
  original->SetObjectChangeStamp("7");
  original->SetStateFlag(true);
  original->AddTypeClass("TYPE");
  const Record child = Entry("1");
  original->AddChild(child);
  original->AddParentRelationship(child);
  original->AddChildRelationship(child);
  original->AddRelatedChild(child);
  const Record copy = Plain();
  EXPECT_EQ(copy->CopyFromLRDObject(original), S_OK);
  EXPECT_EQ(Fields(copy), "phid=P stamp=7 ce=CE hash=H cadid=c type=T mxtype=MX selected=true flags=write");
  EXPECT_EQ(Joined(copy->GetTypeClasses()), "TYPE ");
  EXPECT_EQ(copy->GetLRDFilePath() + copy->GetLRDFolderPath(), "/d/.KORVANTHEMIX/f.xml/d/.KORVANTHEMIX");
  EXPECT_EQ(copy->GetObjectFilePath().ToString(), "/d/f");
  EXPECT_TRUE(copy->GetChildren() == Records{child});
  EXPECT_EQ(copy->GetParentRelationships().Size() + copy->GetChildRelationships().Size(), 0);
  EXPECT_EQ(copy->GetRelatedChildren().Size(), 0);
}

TEST_F(RecordTest, a_record_may_be_handed_a_handle_that_lies_in_its_own_lists) {
  const Record top = FullV4("<o phid='top'/>");
  const auto own = [&top]() -> const Record& { return *top->GetChildren().begin(); };
  top->AddChild(FullV4("<o phid='child' macroceStamp='M' selected='true' cadorigin='O'/>"));
  own()->AddTypeClass("TYPE");
  own()->AddChild(FullV4("<o phid='grandchild'/>"));
  own()->AddChild(FullV4("<o phid='another'/>"));
  // Only the list that the copy replaces holds the child.
  EXPECT_EQ(top->CopyFromLRDObject(own()), S_OK);
  EXPECT_EQ(top->GetPhysicalId() + top->GetSelectedFlag() + Joined(top->GetTypeClasses()), "childtrueTYPE ");
  EXPECT_EQ(Phids(top->GetChildren()), "grandchild another ");
  for (int count = 0; count < 9; ++count) {
    top->AddChild(own());
    top->AddChildRelationship(own());
    top->AddRelatedChild(top->GetChildRelationships().begin()[count]);
    top->AddParentRelationship(top->GetRelatedChildren().begin()[count]);
    top->AddTypeClass(top->GetTypeClasses().begin()[count]);
  }
  EXPECT_EQ(top->GetChildren().Size(), 11);
  EXPECT_EQ(Joined(top->GetTypeClasses()).size(), 10 * std::string("TYPE ").size());
  top->UpdateLRDObjectFromXML(Tree("<o action='setcadorigin'/>"));
  top->updateLRDObject(own());
  EXPECT_EQ(top->GetPhysicalId() + top->GetCadOrigin(), "grandchildnull");
  top->updateLRDObject(top);
  EXPECT_EQ(top->CopyFromLRDObject(top), S_OK);
  EXPECT_EQ(top->GetChildren().Size(), 11);

  // The handle that receives the sub-record may be the last one to the record that is asked.
  const TraceLines lines;
  Record asked = FullV4("<o/>");
  asked->AddCompositionObject(Entry("sub", "sub"));
  EXPECT_EQ(asked->GetChildLRDObject(asked), S_OK);
  EXPECT_EQ(asked->GetPhysicalId(), "sub");
}

TEST_F(RecordTest, an_update_takes_what_the_server_changes_down_to_the_sub_records) {
  const Record answer =
      FullV4("<o phid='P2' ceStamp='CE2' macroceStamp='M2' xsStamp='XS2' hashcode='H2' cadorigin='O2'/>");
  const std::string object = "<o phid='P' ceStamp='CE' macroceStamp='M' xsStamp='XS' hashcode='H' cadorigin='O'/>";
  const std::vector<std::pair<Record, std::string>> cases = {
      {Plain(object), "phid=P2 ce=CE2 hash=H"},
      {Made<QELXVARDOSFullLRDObject>(object), "phid=P2 ce=CE2 hash=H origin=O"},
      {Full<QELXVARDOSFullLRDObject_V1>(object), "phid=P2 ce=CE2 macro=M2 hash=H version=V origin=O flags=write"},
      {Full<QELXVARDOSFullLRDObject_V2>(object), "phid=P2 ce=CE2 macro=M2 hash=H version=V origin=O flags=write"},
      {Full<QELXVARDOSFullLRDObject_V4>(object),
       "phid=P2 ce=CE2 macro=M2 xs=XS2 hash=H version=V origin=O flags=write"},
      {Made<QELXVARDOSChildLRDObject>(object, I), "phid=P2 ce=CE2 hash=H id=I flags=write"},
      {Made<QELXVARDOSChildLRDObject_V1>(object, I), "phid=P2 ce=CE2 macro=M2 hash=H id=I flags=write"},
      {Made<QELXVARDOSChildLRDObject_V4>(object, I), "phid=P2 ce=CE2 macro=M2 xs=XS2 hash=H id=I flags=write"},
      {Made<QELXVARDOSRelLRDObject>(object), "phid=P2 ce=CE2 hash=H flags=write"}};
  for (const auto& [record, updated] : cases) {
    const Record sub = Entry("sub", "before");
    record->AddCompositionObject(sub);
    record->updateLRDObject(answer);
    EXPECT_EQ(Fields(record), updated) << record->IsA();
    EXPECT_EQ(sub->GetPhysicalId(), record->IsAKindOf("QELXVARDOSFullLRDObject") ? "P2" : "before") << record->IsA();
    EXPECT_THROW(record->updateLRDObject(nullptr), ZYMNullHandleError);
    EXPECT_EQ(record->updateLRDObjectCEStampOnly(Plain("<o ceStamp='3' phid='P3' macroceStamp='M3'/>")), S_OK);
    std::string stamped = updated;
    EXPECT_EQ(Fields(record), stamped.replace(stamped.find("CE2"), 3, "3")) << record->IsA();
  }
}

TEST_F(RecordTest, a_child_is_found_by_its_id_depth_first_parents_before_children) {
  const Record top = Plain();
  EXPECT_EQ(Found(top, "x"), "");
  const Record left = Entry("left");
  left->AddChild(Entry("x", "below left"));
  left->AddChild(Entry("y", "below left"));
  top->AddChild(left);
  top->AddChild(Entry("x", "right"));
  const Record y = Entry("y", "right");
  y->AddChild(Entry("z", "below y"));
  top->AddChild(y);
  for (const auto& [id, found] :
       Rows<2>{{"x", "below left"}, {"y", "below left"}, {"z", "below y"}, {"left", "P"}, {"none", ""}}) {
    EXPECT_EQ(Found(top, id), found) << id;
  }
  EXPECT_EQ(Found(y, "y"), "") << "not the record itself";
}

TEST_F(RecordTest, a_search_ends_in_circles_and_does_not_mind_depth) {
  const Record a = Entry("a", "a");
  const Record b = Entry("b", "b");
  a->AddChild(b);
  b->AddChild(a);
  EXPECT_EQ(Found(a, "none"), "");
  EXPECT_EQ(Found(a, "a"), "a");
  b->CopyFromLRDObject(Plain());

  const Record top = Plain();
  const ZYMIDOMNode_var object = Tree("<o phid='deep'/>");
  Record last = top;
  for (int depth = 1; depth <= Many; ++depth) {
    const Record next =
        ZYMMakeComponent<QELXVARDOSChildLRDObject>(object, ZYMUnicodeString(depth == Many ? "deepest" : ""));
    last->AddChild(next);
    last = next;
  }
  EXPECT_EQ(Found(top, "deepest"), "deep");
  EXPECT_EQ(Found(top, "deeper"), "");
}

TEST_F(RecordTest, releasing_a_long_chain_frees_all_of_it_through_whatever_list_it_is_linked) {
  using Link = void (QELXIVARDOSLRDObject::*)(const Record&);
  const ZYMIDOMNode_var object = Tree("<o/>");
  const auto made = [&object] { return Record(ZYMMakeComponent<QELXVARDOSFullLRDObject>(object)); };
  for (const Link link : {&QELXIVARDOSLRDObject::AddParentRelationship, &QELXIVARDOSLRDObject::AddChildRelationship,
                          &QELXIVARDOSLRDObject::AddRelatedChild, &QELXIVARDOSLRDObject::AddCompositionObject}) {
    const Record first = made();
    Record last = first;
    for (int count = 0; count < Many; ++count) {
      const Record next = made();
      (last.Get()->*link)(next);
      last = next;
    }
    // Released before the chain, each with a few of its own.
    for (int count = 0; count < 100; ++count) {
      const Record twig = made();
      first->AddChild(twig);
      twig->AddChild(made());
      twig->AddChild(made());
    }
  }
}

TEST_F(RecordTest, the_circle_of_a_child_record_and_its_relationship_dies_with_the_object) {
  Record full = FullV4("<o/>");
  const Record parent = FullV4("<o/>");
  {
    const Record child = Entry("");
    const Record rel = Made<QELXVARDOSRelLRDObject>("<o/>");
    full->AddCompositionObject(child);
    parent->AddChild(rel);
    parent->AddChild(child);
    rel->AddChild(child);
    child->AddParentRelationship(rel);
  }
  full = nullptr;
  EXPECT_EQ(parent->GetChildren().Size(), 2) << "what the parent holds stays as long as the parent";
  EXPECT_EQ(parent->GetChildren()[2]->GetParentRelationships().Size(), 0);
}

}  // namespace
