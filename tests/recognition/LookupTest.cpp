#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "recognition/QELXVARDOSIdentifier.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"

namespace {

using CacheInformation = ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico;

class LookupTest : public ModuleTest {
 protected:
  const ZYMHandle<QELXVARDOSRecognitionHandler> handler_ = ZYMMakeComponent<QELXVARDOSRecognitionHandler>(
      ZYMUnicodeString("CREO"), QELIVARDOSGlobalConfigObject_var(ZYMMakeComponent<TestConfiguration>()));
};

ZYMIDOMElement_var Command(const std::string& objects) {
  return Tree("<command cname='checkinEx'><cadobjectlist>" + objects + "</cadobjectlist></command>");
}

/// One record, by that key.
RecordMap Known(const std::string& key) {
  RecordMap records;
  records.Insert(key, FullV4("<o cadid='a' phid='P' hashcode='H' mxtype='T' filename='a.prt' dirname='/old'/>"));
  return records;
}

Record Rel(const std::string& id, const std::string& phid) {
  return FromFile("QELXVARDOSRelLRDObject_V3", "<rel id='" + id + "'><phid>" + phid + "</phid></rel>");
}

TEST_F(LookupTest, an_object_names_its_composition_and_its_parents) {
  for (const auto& [attributes, composition, parents] :
       Rows<3>{{"familyid='F' composerid='C1,C2' parentid='P1,P2'", "0 F C1 C2 ", "0 P1 P2 "},
               {"familyid='' composerid='' parentid=''", "0 ", "0 "},
               {"familyid=',a,,b,' parentid=',a,,b,'", "0 a b ", "0  a  b  "},
               {"familyid=' a , b' parentid=' '", "0  a   b ", "0   "}}) {
    QELXVARDOSIdentifier identifier(Tree("<o " + attributes + "/>"));
    ZYMUnicodeStringList found{"0"};
    EXPECT_EQ(identifier.IdentifyComposition(found), S_OK);
    EXPECT_EQ(Joined(found), composition) << attributes;
    found = {"0"};
    EXPECT_EQ(identifier.IdentifyParent(found), S_OK);
    EXPECT_EQ(Joined(found), parents) << attributes;
  }
  ZYMUnicodeStringList none;
  QELXVARDOSIdentifier text(TextNode());
  EXPECT_EQ(text.IdentifyComposition(none) + text.IdentifyParent(none) + none.Size(), 0);
}

TEST_F(LookupTest, the_map_of_objects_leaves_out_the_nameless_and_keeps_the_last_of_equal_ids) {
  ZYMIDOMNode_varZYMUnicodeStringDico nodes;
  const ZYMIDOMElement_var list =
      Tree("<l>text<o cadid='a' n='1'/><o cadid='' n='2'/><x cadid='b'/><o cadid='a' n='3'/></l>");
  EXPECT_EQ(handler_->getCadidObjectNodeMap(list, nodes), S_OK);
  EXPECT_EQ(nodes.Size(), 2);
  EXPECT_EQ(Show(nodes["a"], {"n"}), "n=3");
  const ZYMIDOMElement_var wrapped = FailingDom::Wrap(list);
  for (const int failing : {2, 3}) {
    const FailingDom dom(failing, "getAttribute");
    EXPECT_EQ(handler_->getCadidObjectNodeMap(wrapped, nodes), failing == 3 ? FailingDom::Status : S_OK)
        << "that of the last";
  }
}

TEST_F(LookupTest, a_record_file_is_found_in_the_composition_or_at_the_first_parent) {
  const ScratchFolder folder;
  const auto object = [&folder](const std::string& id) {
    return "<cadobject cadid='" + id + "' filename='" + id + "' dirname='" + folder.Root() + "'/>";
  };
  std::string list;
  for (const std::string id : {"none", "none2", "f", "g", "p"}) {
    list += object(id);
    if (!id.starts_with("none")) {
      folder.PutRecord(id, "");
    }
  }
  ZYMIDOMNode_varZYMUnicodeStringDico nodes;
  handler_->getCadidObjectNodeMap(Tree("<l>" + list + "</l>"), nodes);
  for (const auto& [attributes, byComposition, byParent] :
       Rows<3>{{"familyid='none,none2' composerid='g,f'", "g", ""},
               {"familyid='unlisted,f' composerid='g' parentid='p,none'", "f", "p"},
               {"familyid='none2,f' parentid='none,p'", "f", "f"},
               {"familyid='none,unlisted' parentid='none,p'", "", ""},
               {"familyid='f' parentid='unlisted,p'", "f", ""}}) {
    const ZYMIDOMElement_var child = Tree(Element("o", attributes));
    const auto name = [&](const ZYMUnicodeStringZYMUnicodeStringDico& paths) {
      const std::string file = paths["objectfile"].Str();
      std::string found = file.empty() ? "" : file.substr(folder.Root().size() + 1);
      EXPECT_EQ(paths.Size(), file.empty() ? 0 : 2);
      EXPECT_EQ(paths["lrdfile"], file.empty() ? "" : folder.At(".KORVANTHEMIX/" + found + ".xml"));
      return found;
    };
    ZYMUnicodeStringZYMUnicodeStringDico composition;
    EXPECT_EQ(handler_->GetObjectFileLRDFileFromComposition(child, nodes, composition), S_OK);
    EXPECT_EQ(name(composition), byComposition) << attributes;
    ZYMUnicodeStringZYMUnicodeStringDico parent;
    EXPECT_EQ(handler_->GetObjectFileLRDFileFromParent(child, nodes, parent), S_OK);
    EXPECT_EQ(name(parent), byParent) << attributes;
  }
}

TEST_F(LookupTest, of_two_lists_the_match_of_the_last_counts_and_empty_ids_match_nothing) {
  const Records wanted{Rel("1", ""), Rel("2", ""), Rel("3", ""), Rel("", "")};
  const auto find = [&](const Records& among) {
    Record entry = Rel("before", "before");
    EXPECT_EQ(handler_->GetchildLRDObjStructureLrdList(wanted, among, entry), S_OK);
    return entry->GetPhysicalId();
  };
  EXPECT_EQ(find({Rel("2", "first"), Rel("2", "second"), Rel("1", "one")}), "first");
  EXPECT_EQ(find({Rel("", "empty"), Rel("9", "nine")}), "before");
}

TEST_F(LookupTest, a_failing_search_for_the_information_is_the_status_and_leaves_all_as_it_was) {
  const ZYMIDOMElement_var tree = Command("<cadobject cadid='a' phid='P'/>");
  const std::string before = Text(tree);
  const RecordMap byCadId = Known("a");
  const RecordMap byPhid = Known("P");
  using Step = std::function<HRESULT(const ZYMIDOMNode_var&, RecordMap&)>;
  for (const Step& step : {
           Step([&](const auto&root, auto&) {
             return handler_->UpdateRequestAndLRDObjects(root, byCadId, CacheInformation());
           }),
           Step([&](const auto&root, auto&) { return handler_->UpdateLRDObjects(root, byCadId); }),
           Step([&](const auto&root, auto&out) { return handler_->GetCadidLRDMap(root, byPhid, out, {}); }),
           Step([&](const auto&root, auto&out) { return handler_->GetCadidLRDMapForCache(root, byPhid, out); }),
       }) {
    RecordMap out;
    EXPECT_EQ(step(TextNode(), out), S_OK);
    const ZYMIDOMElement_var wrapped = FailingDom::Wrap(tree);
    const FailingDom dom(0, "getElementsByTagName");
    EXPECT_EQ(step(wrapped, out), FailingDom::Status);
    EXPECT_EQ(out.Size(), 0);
  }
  EXPECT_EQ(Text(tree), before);
  EXPECT_EQ(byCadId["a"]->GetObjectFilePath().ToString(), "/old/a.prt");
  EXPECT_EQ(handler_->UpdateInformationFromCache(TextNode(), byPhid), S_OK);
  EXPECT_THROW(handler_->UpdateInformationFromCache(Command("<cadobject phid='unknown'/>"), byPhid),
               ZYMNullHandleError);
}

TEST_F(LookupTest, a_value_that_the_tree_does_not_take_is_the_status_and_the_others_are_written) {
  RecordMap records;
  std::string objects;
  for (const std::string id : {"a", "b"}) {
    const std::string names = std::string("cadid='").append(id).append("' phid='").append(id);
    objects += Element("cadobject", names + "'");
    records.Insert(id, FullV4(Element("o", names + "' hashcode='H' mxtype='T' filename='f.prt'")));
  }
  const auto failEach = [&](int values, const auto& operation) {
    for (int before = 0; before <= values; ++before) {
      const ZYMIDOMElement_var tree = Command(objects);
      const FailingDom dom(before, "setAttribute");
      EXPECT_EQ(operation(FailingDom::Wrap(tree)), before < values ? FailingDom::Status : S_OK) << before;
      EXPECT_EQ(Show(tree, "b", {"mxtype"}) == "mxtype=T", before != 5) << "the sixth value";
    }
  };
  failEach(6,
           [&](const auto& root) { return handler_->UpdateRequestAndLRDObjects(root, records, CacheInformation()); });
  failEach(8, [&](const auto& root) { return handler_->UpdateInformationFromCache(root, records); });
}

TEST_F(LookupTest, what_no_handler_serves_is_not_recorded) {
  const RecordMap records = Known("a");
  EXPECT_THROW(handler_->CreateOrUpdateLRD(Tree("<response cname='print'/>"), records), ZYMNullHandleError);
  EXPECT_EQ(handler_->CreateOrUpdateLRD(Tree("<command cname='checkinEx'/>"), records), E_NOTIMPL);
}

}  // namespace
