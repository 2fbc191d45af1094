#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/QELVARDOSSystemUtils.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "tests/support/TestLayer.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

using testing::HasSubstr;
using testing::UnorderedElementsAre;

namespace {

constexpr HRESULT Failure = FailingDom::Status;

class ResponseHandlerTest : public ModuleTest {
 protected:
  QELXIVARDOSLRDXMLHandler_var HandlerFor(const ZYMIDOMNode_var& root) {
    QELXIVARDOSLRDXMLHandler_var handler;
    EXPECT_EQ(QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config_, root, handler), S_OK);
    return handler;
  }
  /// An object of the scratch folder.
  std::string Object(const std::string& name, const std::string& attributes = "") const {
    return "<cadobject cadid='" + name + "' filename='" + name + "' dirname='" + folder_.Root() + "' " + attributes +
           "/>";
  }
  RecordMap Read(const ZYMIDOMElement_var& root) {
    RecordMap records;
    EXPECT_EQ(HandlerFor(root)->GetLRDObjects(root, records), S_OK);
    return records;
  }
  RecordMap Callers(const std::string& content) {
    return Read(Tree("<command cname='checkinEx'>" + content + "</command>"));
  }
  HRESULT Update(const std::string& command, const std::string& info, const RecordMap& records) {
    const ZYMIDOMElement_var root = Tree("<response cname='" + command + "'><info>" + info + "</info></response>");
    return HandlerFor(root)->CreateOrUpdateLRD(root, records);
  }

  ScratchFolder folder_;
  const TestConfiguration_var config_ = ZYMMakeComponent<TestConfiguration>();
};

std::string List(const std::string& objects) { return "<cadobjectlist>" + objects + "</cadobjectlist>"; }
/// Object a above object b, through a relationship with that "rid".
std::string AAboveB(const std::string& rid) {
  return "<relationshiplist><relationship rid='" + rid +
         "' reluuid='U' phid='before' topnode='dpt'/></relationshiplist>"
         "<structure><cadobject cadid='a'><cadobject cadid='b'><relationship rid='" +
         rid + "'/></cadobject></cadobject></structure>";
}
TEST_F(ResponseHandlerTest, root_and_command_choose_the_handler_joined_and_in_any_case) {
  for (const auto& [root, name] : Rows<2>{{"command cname='checkinEx'", "XMLHandler"},
                                          {"command cname='cadobjdetails'", "XMLHandler"},
                                          {"command cname='lockunlockEx'", "XMLHandler"},
                                          {"response cname='checkinEx'", "CheckinExResponseXMLHandler"},
                                          {"response cname='cadobjdetails'", "CadObjDetailsResponseXMLHandler"},
                                          {"response cname='checkoutEx' mode=''", "CheckoutExXMLHandler"},
                                          {"response cname='synclocalrecognition'", "CheckoutExXMLHandler"},
                                          {"response cname='checkoutExPath'", "CheckoutExPathXMLHandler"},
                                          {"response cname='anything' mode='PATH'", "CheckoutExPathXMLHandler"},
                                          {"response cname='checkoutEx' mode='paths'", "CheckoutExXMLHandler"},
                                          {"RESPONSE cname='CHECKINEX'", "CheckinExResponseXMLHandler"},
                                          {"comm cname='andcheckinEx'", "XMLHandler"},
                                          {"responsecheckoutEx", "CheckoutExXMLHandler"},
                                          {"command cname='checkinEx' mode='path'", ""},
                                          {"command cname='synclocalrecognition'", ""},
                                          {"response cname='lockunlockEx'", ""},
                                          {"response", ""}}) {
    const QELXIVARDOSLRDXMLHandler_var handler = HandlerFor(Tree("<" + root + "/>"));
    EXPECT_EQ(handler.IsNull() ? "" : std::string(handler->IsA()), name.empty() ? "" : "QELXVARDOSLRD" + name) << root;
  }
}

TEST_F(ResponseHandlerTest, what_no_handler_serves_leaves_the_handle) {
  QELXIVARDOSLRDXMLHandler_var handler;
  EXPECT_EQ(QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config_, handler), S_OK);
  const QELXIVARDOSLRDXMLHandler_var before = handler;
  EXPECT_STREQ(handler->IsA(), "QELXVARDOSLRDXMLHandler");
  EXPECT_EQ(handler->CreateOrUpdateLRD(Tree("<a/>"), RecordMap()), E_NOTIMPL);
  for (const ZYMIDOMNode_var& node : {ZYMIDOMNode_var(Tree("<response/>")), TextNode()}) {
    EXPECT_EQ(QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config_, node, handler), S_OK);
    EXPECT_EQ(handler, before);
  }
  EXPECT_THROW(HandlerFor(nullptr), ZYMNullHandleError);
}

TEST_F(ResponseHandlerTest, a_failing_search_for_the_information_has_the_status_of_its_handler) {
  struct Case {
    std::string command;
    HRESULT search, item, update;
    /// The searches that a call of CreateOrUpdateLRD makes before the one whose status it answers.
    int before;
  };
  for (const auto& [command, search, item, update, before] :
       {Case{"checkinEx", Failure, Failure, Failure, 2}, Case{"checkoutEx", S_OK, Failure, S_OK, 0},
        Case{"checkoutExPath", S_OK, Failure, S_OK, 0}, Case{"cadobjdetails", Failure, Failure, E_NOTIMPL, 0}}) {
    const ZYMIDOMElement_var root = FailingDom::Wrap(
        Tree("<response cname='" + command + "'><info>" + List(Object("a", "selected='true'")) + "</info></response>"));
    const QELXIVARDOSLRDXMLHandler_var handler = HandlerFor(root);
    RecordMap records;
    {
      const FailingDom dom(0, "getElementsByTagName");
      EXPECT_EQ(handler->GetLRDObjects(root, records), search) << command;
    }
    {
      const FailingDom dom(0, "item");
      EXPECT_EQ(handler->GetLRDObjects(root, records), item) << command;
    }
    const FailingDom dom(before, "getElementsByTagName");
    EXPECT_EQ(handler->CreateOrUpdateLRD(root, RecordMap()), update) << command;
    EXPECT_EQ(records.Size(), 0) << command;

    // Neither is there anything in a root without information.
    const ZYMIDOMElement_var bare =
        Tree("<response cname='" + command + "'>" + List(Object("a", "selected='true'")) + "</response>");
    EXPECT_EQ(Read(bare).Size(), 0) << command;
    for (const ZYMIDOMNode_var& node : {ZYMIDOMNode_var(bare), TextNode()}) {
      EXPECT_EQ(HandlerFor(bare)->CreateOrUpdateLRD(node, RecordMap()), update == E_NOTIMPL ? E_NOTIMPL : S_OK);
    }
    EXPECT_EQ(folder_.FileCount(), 0) << command;
  }
}

TEST_F(ResponseHandlerTest, only_a_check_out_links_what_it_reads) {
  for (const std::string command : {"checkinEx", "checkoutEx", "checkoutExPath", "cadobjdetails"}) {
    const RecordMap records = Read(Tree("<response cname='" + command + "'><info>" + List(Object("a") + Object("b")) +
                                        AAboveB("1") + "</info></response>"));
    EXPECT_EQ(records.Size(), 2) << command;
    EXPECT_EQ(records["a"]->GetChildren().Size(), command == "checkoutEx" ? 2 : 0) << command;
  }
}

TEST_F(ResponseHandlerTest, nothing_is_written_that_speaks_of_a_file_that_could_not_be_looked_at) {
  for (const char* name : {"a", "b", "c"}) {
    folder_.PutFile(name, 100);
  }
  TestLayer layer;
  layer.Hide(folder_.At("b"), std::errc::io_error);
  const std::string selected = "selected='true'";
  QELVARDOSSystemUtils::SetLastError("");
  EXPECT_EQ(
      Update("checkoutEx", List(Object("a", selected) + Object("b", selected) + Object("c", selected)) + AAboveB("1"),
             RecordMap()),
      S_OK);
  EXPECT_THAT(layer.fates,
              UnorderedElementsAre("a.xml: Input/output error", "b.xml: Input/output error", "c.xml: written"))
      << "the record of b would stand in that of a";
  EXPECT_EQ(folder_.Record("a") + folder_.Record("b"), "");
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(),
            folder_.At(".KORVANTHEMIX/b.xml") + ": " + folder_.At("b") + ": Input/output error");

  layer.failing.clear();
  QELVARDOSSystemUtils::SetLastError("before");
  EXPECT_EQ(Update("checkoutEx", List(Object("a", selected) + Object("b", selected)), RecordMap()), S_OK);
  EXPECT_EQ(layer.fates.back(), "b.xml: written");
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(), "before");
}

TEST_F(ResponseHandlerTest, a_relationship_is_never_updated_from_an_object_of_the_same_key) {
  const RecordMap callers = Callers(List(Object("a", "selected='true'") + Object("b")) + AAboveB("b"));
  EXPECT_EQ(Update("checkinEx", List(Object("a", "phid='A'") + Object("b", "phid='K'")), callers), S_OK);
  EXPECT_THAT(folder_.Record("a"),
              HasSubstr("<rel id=\"U\"><phid>before</phid></rel><structure id=\"\"><phid>K</phid>"));
}

}  // namespace
