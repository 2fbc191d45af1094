#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "recognition/QELXVARDOSIdentifier.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"

namespace {

class LookupTest : public ModuleTest {
 protected:
  const ZYMHandle<QELXVARDOSRecognitionHandler> handler_ = ZYMMakeComponent<QELXVARDOSRecognitionHandler>();
};

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

}  // namespace
