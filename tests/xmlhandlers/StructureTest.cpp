#include <gtest/gtest.h>

#include <string>

#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/TestConfiguration.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

namespace {

class StructureTest : public ModuleTest {
 protected:
  RecordMap Build(const std::string& objects, const std::string& relationships, const std::string& structure) {
    RecordMap records;
    const ZYMIDOMElement_var root =
        Tree("<info><cadobjectlist>" + objects + "</cadobjectlist><relationshiplist>" + relationships +
             "</relationshiplist><structure>" + structure + "</structure></info>");
    EXPECT_EQ(handler_->GetLRDObjects(root, records), S_OK);
    return records;
  }

  const TestConfiguration_var config_ = ZYMMakeComponent<TestConfiguration>();
  const ZYMHandle<QELXVARDOSLRDXMLHandler> handler_ = ZYMMakeComponent<QELXVARDOSLRDXMLHandler>(config_);
};

std::string Object(const std::string& id, const std::string& attributes) {
  return "<cadobject cadid='" + id + "' phid='" + id + "' " + attributes + "/>";
}
/// An object for each letter; its physical id is its CAD id.
std::string Objects(const std::string& ids, const std::string& attributes = "") {
  std::string xml;
  for (const char id : ids) {
    xml += Object(std::string(1, id), attributes);
  }
  return xml;
}
std::string Relation(const std::string& rid, const std::string& topnode = "dpt") {
  return "<relationship rid='" + rid + "' topnode='" + topnode + "'/>";
}
std::string In(const std::string& id, const std::string& content) {
  return "<cadobject cadid='" + id + "'>" + content + "</cadobject>";
}
std::string By(const std::string& rid) { return "<relationship rid='" + rid + "'/>"; }

/// For each record with children "id:" and the children: relationships by "rid", others by physical id, compositions
/// with +.
std::string Links(const RecordMap& records) {
  std::string links;
  for (const RecordMap::Entry& entry : records) {
    links += entry.second->GetChildren().Size() == 0 ? "" : " " + entry.first.Str() + ":";
    for (const Record& child : entry.second->GetChildren()) {
      const bool composition = child->IsAKindOf("QELXVARDOSCompositionLRDObject");
      links += child->IsAKindOf("QELXVARDOSRelLRDObject") ? child->GetCadId().Str()
                                                          : (composition ? "+" : "") + child->GetPhysicalId().Str();
    }
  }
  return links;
}

TEST_F(StructureTest, links_follow_the_structure_innermost_first) {
  const std::string two = Relation("1") + Relation("2");
  const std::string b1 = In("b", By("1"));
  const std::string c2 = In("c", By("2"));
  for (const auto& [what, relationships, structure, links] :
       Rows<4>{{"no structure", two, "", ""},
               {"in document order", two, In("a", c2 + b1), " a:2c1b"},
               {"innermost first", two, In("a", In("b", By("1") + c2)), " a:1b b:2c"},
               {"the same object twice", two, In("a", b1 + In("b", By("2"))), " a:1b2b"},
               {"in any case", Relation("1", "DpT") + Relation("2", "DPE"), In("a", b1 + c2), " a:1b c:2a"},
               {"no direction", Relation("1", "") + Relation("2", "top"), In("a", b1 + c2), ""},
               {"an unknown relationship", two, In("a", In("b", By("9")) + c2), " a:2c"},
               {"no relationships", "", In("a", b1), ""},
               {"an unknown parent", two, In("z", In("b", By("1") + c2)), " b:2c"},
               {"an unknown child", two, In("a", In("z", By("1")) + c2), " a:2c"},
               {"a top-level object", Relation("1", "dpe"), b1, ""},
               {"without a relationship of its own", two, In("a", In("b", c2)), " a:2b b:2c"},
               {"its own behind a nested one", two, In("a", In("b", c2 + By("1"))), " a:2b b:2c"},
               {"one within another element", two, In("a", In("b", "<x>" + By("1") + "</x>" + c2)), " a:1b b:2c"},
               {"among other nodes", two,
                "<!--1--> " + In("a", "text<!--2-->" + In("b", "<!--3-->" + By("1"))) + "<?p?>", " a:1b"},
               {"names in any case", two, In("a", "<CadObject cadid='b'>" + By("1") + "</CadObject>"), " a:1b"},
               {"not through other elements", two, In("a", "<x>" + b1 + "</x>"), ""},
               {"active, then family", two,
                "<family>" + In("a", c2) + "</family><active>" + In("a", b1) + "</active>" + In("b", c2), " a:1b2c"},
               {"a family alone", two, "<family>" + In("b", c2) + "</family>" + In("a", b1), " a:1b b:2c"},
               {"below itself", two, In("a", In("a", By("1"))), " a:1a"}}) {
    EXPECT_EQ(Links(Build(Objects("abc"), relationships, structure)), links) << what;
  }
}

TEST_F(StructureTest, both_ends_of_a_link_know_it) {
  const RecordMap records = Build(Objects("ab"), Relation("1"), In("a", In("b", By("1"))));
  const Record a = records["a"];
  Record child;
  records["b"]->GetChildLRDObject(child);
  const Record rel = a->GetChildRelationships()[1];
  EXPECT_TRUE(a->GetChildren() == (Records{rel, child}));
  EXPECT_TRUE(a->GetChildRelationships() == Records{rel});
  EXPECT_TRUE(a->GetRelatedChildren() == Records{child});
  EXPECT_TRUE(rel->GetChildren() == Records{child});
  EXPECT_TRUE(child->GetParentRelationships() == Records{rel});
}

TEST_F(StructureTest, a_composition_stands_in_each_member_and_links_reach_the_members_that_lack_it) {
  const std::string members = Objects("fg") + Objects("i", "familyid='f' composerid='g'");
  EXPECT_EQ(Links(Build(members + Objects("a"), Relation("1"), In("a", In("i", By("1"))))), " f:+i g:+i a:1i");
  EXPECT_EQ(Links(Build(Objects("f") + Objects("i", "familyid='f,f'"), "", "")), " f:+i+i");
  EXPECT_THROW(Build(Objects("f") + Objects("i", "familyid='f,z'"), "", ""), ZYMNullHandleError);

  RecordMap records;
  RecordMap relationships;
  const ZYMIDOMElement_var root =
      Tree("<r><l>" + members + Objects("a") + "</l><m>" + Relation("1") + "</m>" + In("a", In("i", By("1"))) + "</r>");
  handler_->GetCadIdLrdObject(root, Tagged(root, "l"), records);
  handler_->GetCadIdLrdObject(root, Tagged(root, "m"), relationships);
  const ZYMIDOMNode_var parent = Tagged(root, "cadobject", 4);
  const ZYMIDOMNode_var object = Tagged(root, "cadobject", 5);
  EXPECT_EQ(handler_->createRelationship(object, parent, records, RecordMap()), E_FAIL);
  EXPECT_EQ(handler_->createRelationship(object, parent, records, relationships), S_OK);
  EXPECT_EQ(Links(records), " f:1i g:1i a:1i");
}

TEST_F(StructureTest, derived_outputs_have_no_record_and_so_no_link) {
  const RecordMap records =
      Build(Objects("ab") + Objects("v", "type='preview'") + Objects("w", "type='part' cadrelationship='shows'") +
                Objects("x", "cadrelationship='shows'"),
            Relation("1") + "<relationship rid='2' topnode='dpt' cadrelationship='shows'/>",
            In("a", In("b", By("2")) + In("v", By("1")) + In("w", By("1"))));
  EXPECT_EQ(Links(records), " a:1w");
  EXPECT_EQ(records.Size(), 3);
  for (const std::string kind : {"DERIVED_OUTPUT", "DO_DOCUMENT", "VISUALIZATION", "BREP"}) {
    config_->classes = {{"t", "TYPE_" + kind + "_LIKE"}, {"r", "REL_" + kind + "_LIKE"}};
    EXPECT_TRUE(handler_->IsDerivedOutputLike(Tree("<o type='t'/>"))) << kind;
    EXPECT_TRUE(handler_->IsDerivedOutputLike(Tree("<o cadrelationship='r'/>"))) << kind;
    EXPECT_FALSE(handler_->IsDerivedOutputLike(Tree("<o type='r' cadrelationship='r'/>"))) << kind;
  }
}

TEST_F(StructureTest, a_structure_may_be_100_000_deep) {
  constexpr int Depth = 100'000;
  std::string objects;
  std::string structure;
  std::string ends;
  for (int depth = 0; depth < Depth; ++depth) {
    const std::string start = "<cadobject cadid='" + std::to_string(depth);
    objects.append(start).append("'/>");
    structure.append(start).append("'>");
    ends += "</cadobject>";
  }
  int linked = 0;
  const RecordMap records = Build(objects, Relation("1"), structure.append(By("1")).append(ends));
  for (const RecordMap::Entry& entry : records) {
    linked += entry.second->GetRelatedChildren().Size();
  }
  EXPECT_EQ(linked, Depth - 1);
}

}  // namespace
