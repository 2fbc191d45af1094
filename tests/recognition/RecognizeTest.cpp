#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMCheckFailure.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "recognition/QELXVARDOSRecognitionHandlerNoLRD.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "tests/support/TestLayer.h"
#include "tests/support/TraceLines.h"

using testing::Contains;
using testing::IsEmpty;

namespace {

class RecognizeTest : public ModuleTest {
 protected:
  ZYMHandle<QELXVARDOSRecognitionHandler> Handler(const char* command,
                                                  const QELIVARDOSGlobalConfigObject_var& config) const {
    return ZYMMakeComponent<QELXVARDOSRecognitionHandler>(ZYMUnicodeString(command), config);
  }
  std::string Object(const std::string& cadId, const std::string& attributes = "") const {
    return "<cadobject cadid='" + cadId + "' filename='" + cadId + ".prt' dirname='" + folder_.Root() + "' " +
           attributes + "/>";
  }
  static ZYMIDOMElement_var Request(const std::string& objects, const std::string& behind = "",
                                    const std::string& command = "cname='checkinEx'") {
    return Tree("<command " + command + "><cadobjectlist>" + objects + "</cadobjectlist>" + behind + "</command>");
  }
  ZYMIDOMElement_var Recognized(const ZYMIDOMElement_var& request) {
    RecordMap records;
    EXPECT_EQ(handler_->Recognize(request, records), S_OK);
    return request;
  }
  static std::string Brief(const ZYMIDOMElement_var& request, const char* cadId) {
    return Show(request, cadId, {"status", "phid"});
  }

  ScratchFolder folder_;
  const TestConfiguration_var config_ = ZYMMakeComponent<TestConfiguration>();
  const ZYMHandle<QELXVARDOSRecognitionHandler> handler_ = Handler("CREO", config_);
};

std::string RecordV4(const std::string& phid, const std::string& stamp, const std::string& nested = "") {
  return "<object version='4.0'>" + Core(phid, stamp, MacroAndXS) + nested + "</object>";
}
std::string Entry(const std::string& id, const std::string& phid) {
  return "<structure id='" + id + "'>" + Core(phid, "1", MacroAndXS) + "</structure>";
}
std::string Rel(const std::string& id, const std::string& phid, const std::string& childPhid = "") {
  return "<rel id='" + id + "'><phid>" + phid + "</phid><childPhid>" + childPhid + "</childPhid></rel>";
}
/// Object o below object asm, through a relationship "U".
const std::string OBelowAsm =
    "<relationshiplist><relationship rid='1' reluuid='U' topnode='dpt'/></relationshiplist><structure><cadobject "
    "cadid='asm'>"
    "<cadobject cadid='o'><relationship rid='1'/></cadobject></cadobject></structure>";

TEST_F(RecognizeTest, a_relationship_that_request_and_record_share_leads_to_the_entry_before_the_identifier_does) {
  for (const auto& [rels, phid] : Rows<2>{{Rel("U", "R", "BY-REL"), "BY-REL"},
                                          {"", "BY-ID"},
                                          {Rel("V", "R", "BY-REL"), "BY-ID"},
                                          {Rel("U", "R") + Rel("U", "R", "BY-REL"), "BY-ID"},
                                          {Rel("U", "R", "GONE"), "BY-ID"}}) {
    folder_.PutRecord("asm.prt", RecordV4("ASM", "1", rels + Entry("o.prt", "BY-ID") + Entry("other", "BY-REL")));
    const ZYMIDOMElement_var request = Request(Object("asm") + Object("o", "type='part' composerid='asm'"), OBelowAsm);
    EXPECT_EQ(Brief(Recognized(request), "o"), "status=EXISTS phid=" + phid) << rels;
  }
}

TEST_F(RecognizeTest, a_shared_record_is_read_once_in_a_call_and_nothing_on_disk_changes) {
  std::string entries;
  std::string objects = Object("f");
  for (int number = 0; number < 20; ++number) {
    const std::string name = std::to_string(number);
    entries += Entry(name, "P" + name);
    objects += Object("o" + name, "type='instance' name='" + name + "' familyid='f'");
  }
  folder_.PutFile("f.prt", 100);
  folder_.PutRecord("f.prt", RecordV4("F", "100", entries));
  const TestLayer layer;
  for (const std::size_t round : {1U, 2U}) {
    const ZYMIDOMElement_var request = Recognized(Request(objects));
    EXPECT_EQ(Show(request, "o19", {"status", "phid", "lrdversion"}), "status=EXISTS phid=P19 lrdversion=4.0");
    EXPECT_THAT(layer.calls, Contains("Read " + folder_.At(".KORVANTHEMIX/f.prt.xml")).Times(2 * round))
        << "as its own, and for all its entries";
  }
  EXPECT_THAT(layer.Changes(), IsEmpty());
}

TEST_F(RecognizeTest, empty_physical_ids_of_relationships_are_filled_from_own_records) {
  folder_.PutFile("a.prt", 1);
  folder_.PutFile("b.prt", 1);
  folder_.PutRecord("a.prt", RecordV4("A", "1", Rel("1", "R1") + Rel("2", "") + Rel("2", "R2") + Rel("", "NO")));
  folder_.PutRecord("b.prt", RecordV4("B", "1", Rel("1", "LATE") + Rel("3", "R3")));
  const ZYMIDOMElement_var request = Recognized(Request(
      Object("a") + Object("b"),
      "<relationshiplist><r/>text<r reluuid='1'/><r reluuid='2' phid=''/><r reluuid='3' phid='set'/>"
      "<r reluuid='4'/><r reluuid='1'/></relationshiplist><relationshiplist><r reluuid='1'/></relationshiplist>"));
  EXPECT_EQ(Text(Tagged(request, "relationshiplist")),
            "<relationshiplist><r/>text<r reluuid=\"1\" phid=\"R1\"/><r reluuid=\"2\" phid=\"R2\"/><r reluuid=\"3\" "
            "phid=\"set\"/>"
            "<r reluuid=\"4\"/><r reluuid=\"1\" phid=\"R1\"/></relationshiplist>");
  EXPECT_EQ(Text(Tagged(request, "relationshiplist", 1)), "<relationshiplist><r reluuid=\"1\"/></relationshiplist>");
}

TEST_F(RecognizeTest, relationships_that_share_an_id_are_each_emptied_once) {
  constexpr int Count = 300;
  std::string asked;
  std::string known;
  for (int number = 0; number < Count; ++number) {
    asked += "<r reluuid='1'/>";
    known += Rel("1", "");
  }
  folder_.PutFile("a.prt", 1);
  folder_.PutRecord("a.prt", RecordV4("A", "1", known));
  const ZYMIDOMElement_var request =
      FailingDom::Wrap(Request(Object("a"), "<relationshiplist>" + asked + "</relationshiplist>"));
  {
    const FailingDom dom(50 * Count);
    Recognized(request);
    EXPECT_FALSE(dom.HasFailed()) << "the calls of the tree grow faster than the request";
  }
  const ZYMIDOMElement_var list = Tagged(FailingDom::Inner(request), "relationshiplist");
  EXPECT_EQ(Show(Tagged(list, "r", 0), {"phid"}) + Show(Tagged(list, "r", Count - 1), {"phid"}), "phid=phid=");
}

TEST_F(RecognizeTest, a_damaged_record_ends_the_call_behind_its_object_and_the_handler_stays_usable) {
  for (const char* name : {"good.prt", "bad.prt", "last.prt"}) {
    folder_.PutFile(name, 1);
    folder_.PutRecord(name, RecordV4("P", "1"));
  }
  const std::string all = Object("good") + Object("bad") + Object("last");
  ZYMIDOMElement_var request = Request(all);
  RecordMap records;
  folder_.PutRecord("bad.prt", RecordV4("P", "1").substr(0, 60));
  EXPECT_EQ(handler_->Recognize(request, records), E_FAIL);
  EXPECT_EQ(Brief(request, "good") + Brief(request, "bad") + Brief(request, "last"),
            "status=EXISTS phid=Pstatus=UNKNOWN phid=");
  folder_.PutRecord("bad.prt", "<object version='4.0'><phid/><objectChangeStamp/><hashcode/></object>");
  request = Request(all);
  EXPECT_THROW(handler_->Recognize(request, records), ZYMNullHandleError);
  EXPECT_EQ(Brief(request, "good") + Brief(request, "bad"), "status=EXISTS phid=P");

  const Record record = Plain();
  record->AddChildRelationship(FromFile("QELXVARDOSRelLRDObject", Rel("U", "R")));
  request = Request("", OBelowAsm);
  EXPECT_EQ(handler_->UpdateRelNode(request, record), S_OK);
  EXPECT_EQ(Show(Tagged(request, "relationship"), {"phid"}), "phid=R");
  folder_.PutRecord("bad.prt", RecordV4("P", "1"));
  EXPECT_EQ(Brief(Recognized(Request(all)), "last"), "status=EXISTS phid=P");
}

TEST_F(RecognizeTest, the_name_of_the_cad_system_comes_from_the_command_or_the_configuration) {
  for (const char* name : {"a.prt", "a.prt.3"}) {
    folder_.PutFile(name, 1);
    folder_.PutRecord(name, RecordV4(name, "1"));
  }
  for (const auto& [command, cad, phid] : Rows<3>{{"CREO", "OTHER", "a.prt"},
                                                  {"checkinEx", "CREO", "a.prt"},
                                                  {"checkinEx", "OTHER", "a.prt.3"},
                                                  {"CREO", "none", "a.prt"},
                                                  {"Creo", "none", "a.prt.3"}}) {
    config_->cadName = cad;
    const QELIVARDOSGlobalConfigObject_var config = cad == "none" ? nullptr : QELIVARDOSGlobalConfigObject_var(config_);
    const ZYMIDOMElement_var request =
        Request("<cadobject cadid='a' filename='a.prt.3' dirname='" + folder_.Root() + "'/>", "", "");
    RecordMap records;
    EXPECT_EQ(Handler(command.c_str(), config)->Recognize(request, records), S_OK);
    EXPECT_EQ(Brief(request, "a"), "status=EXISTS phid=" + phid) << command << " " << cad;
  }
}

TEST_F(RecognizeTest, a_failing_tree_ends_in_a_status_or_a_null_handle_error_and_leaves_nothing) {
  folder_.PutFile("asm.prt", 1);
  folder_.PutRecord("asm.prt", RecordV4("A", "1", Rel("U", "R", "O") + Entry("o.prt", "O")));
  const std::string objects = Object("asm") + Object("o", "type='part' composerid='asm'") + Object("p", "phid='P'");
  ZYMObserveCheckFailures([](std::string_view, std::string_view, int) {});
  std::string withoutFailure;
  FailingDom::FailEach([&](const FailingDom& dom) {
    const ZYMIDOMElement_var request = FailingDom::Wrap(Request(objects, OBelowAsm));
    RecordMap records;
    try {
      handler_->Recognize(request, records);
      withoutFailure = Text(FailingDom::Inner(request));
    } catch (const ZYMNullHandleError&) {
      EXPECT_TRUE(dom.HasFailed());
    }
  });
  ZYMObserveCheckFailures(nullptr);
  const ZYMIDOMElement_var recognized = Recognized(Request(objects, OBelowAsm));
  EXPECT_EQ(Brief(recognized, "o"), "status=EXISTS phid=O");
  EXPECT_EQ(Text(recognized), withoutFailure) << "which is a tree without short cuts";
}

TEST_F(RecognizeTest, a_value_that_the_tree_does_not_take_is_the_status_and_nothing_is_told_of_its_object) {
  folder_.PutFile("asm.prt", 1);
  folder_.PutRecord("asm.prt", RecordV4("A", "1", Rel("U", "R", "O") + Entry("o.prt", "O")));
  const std::string objects = Object("asm") + Object("p", "phid='P'") + Object("o", "type='part' composerid='asm'");
  struct : QELXIVARDOSObserver {
    void Decided(const ZYMIDOMElement_var& /*object*/, const QELXVARDOSReason& /*reason*/) override { ++told; }
    int told = 0;
  } observer;
  const QELXIVARDOSRecognitionHandler_var withoutRecords =
      ZYMMakeComponent<QELXVARDOSRecognitionHandlerNoLRD>(ZYMUnicodeString("x"));
  for (const QELXIVARDOSRecognitionHandler_var& handler :
       {QELXIVARDOSRecognitionHandler_var(handler_), withoutRecords}) {
    handler->SetObserver(&observer);
    bool failed = true;
    for (int before = 0; failed; ++before) {
      ASSERT_LT(before, 100);
      const ZYMIDOMElement_var request = FailingDom::Wrap(Request(objects, OBelowAsm));
      const FailingDom dom(before, "setAttribute");
      RecordMap records;
      observer.told = 0;
      const HRESULT status = handler->Recognize(request, records);
      failed = dom.HasFailed();
      EXPECT_EQ(status, failed ? FailingDom::Status : S_OK) << before << " values are taken";
      EXPECT_EQ(observer.told == 3, !failed) << before << " values are taken";
    }
    handler->SetObserver(nullptr);
  }
}

TEST_F(RecognizeTest, a_place_that_could_not_be_looked_at_takes_the_verdict_only_where_it_might_change_it) {
  const std::string file = folder_.At("o.prt");
  const std::string own = folder_.At(".KORVANTHEMIX/o.prt.xml");
  const std::string asm1 = folder_.At(".KORVANTHEMIX/asm.prt.xml");
  const std::string asm2 = folder_.At(".KORVANTHEMIX/other.prt.xml");
  const std::string found = "status=EXISTS phid=O";
  // Where recognition ends the status is empty.
  const std::string none = "status= phid=";
  const Rows<5> cases = {
      {"the own record", "", "own", own, none},
      {"the own record of what is modified anyway", "modified='TRUE'", "own", own, none},
      {"the own record of what is new anyway", "recognizeasnew='TRUE'", "own", own, "status=UNKNOWN phid="},
      {"the own record of what the request knows", "phid='P'", "own", own, "status=EXISTS phid=P"},
      {"the file of what has a record", "", "own", file, none},
      {"the file of what has none", "", "", file, "status=UNKNOWN phid="},
      {"the file, new anyway", "recognizeasnew='TRUE' composerid='asm'", "own", file, "status=UNKNOWN phid="},
      {"the file, with a composition and a record", "composerid='asm'", "own", file, none},
      {"the file, with a composition alone", "composerid='asm'", "", file, found},
      {"the file, of a type without", "composerid='asm' type='bare' name='o.prt'", "own", file, found},
      {"the own record beside a composition", "composerid='asm'", "own", own, none},
      {"the same of a type without file", "composerid='asm' type='bare' name='o.prt'", "own", own, found},
      {"the first composition", "composerid='other,asm'", "", asm2, none},
      {"the second composition", "composerid='asm,other'", "", asm2, found},
      {"a composition that nobody asks for", "", "own", asm1, "status=MODIFIED phid=OWN"}};
  for (const char* name : {"o.prt", "asm.prt", "other.prt"}) {
    folder_.PutFile(name, 1);
  }
  folder_.PutRecord("asm.prt", RecordV4("A", "1", Entry("o.prt", "O")));
  for (const auto& [story, attributes, hasOwnRecord, unseen, verdict] : cases) {
    SCOPED_TRACE(story);
    std::filesystem::remove(own);
    if (!hasOwnRecord.empty()) {
      folder_.PutRecord("o.prt", RecordV4("OWN", "2"));
    }
    const std::string type = attributes.find("type=") == std::string::npos ? " type='part'" : "";
    const ZYMIDOMElement_var request = Request(Object("asm", "phid='A'") + Object("other", "phid='B'") +
                                               Object("o", attributes + type) + Object("behind", "phid='C'"));
    TestLayer layer;
    layer.Hide(unseen, std::errc::permission_denied);
    QELVARDOSSystemUtils::SetLastError("before");
    RecordMap records;
    const bool ends = verdict == none;
    EXPECT_EQ(handler_->Recognize(request, records), ends ? E_FAIL : S_OK);
    EXPECT_EQ(Brief(request, "o"), verdict);
    EXPECT_EQ(QELVARDOSSystemUtils::LastError(), ends ? unseen + ": Permission denied" : "before");
    EXPECT_EQ(Brief(request, "asm"), "status=EXISTS phid=A") << "what was decided before stands";
    EXPECT_EQ(Brief(request, "behind"), ends ? "phid=C" : "status=EXISTS phid=C");
  }
}

TEST_F(RecognizeTest, what_changes_between_two_looks_and_what_is_damaged_are_told_apart) {
  folder_.PutFile("asm.prt", 1);
  folder_.PutRecord("asm.prt", RecordV4("A", "1", Entry("o.prt", "O")));
  folder_.Put(".KORVANTHEMIX/a.prt.xml/folder", "");
  folder_.PutFile("a.prt", 1);
  TestLayer layer;
  RecordMap records;
  const std::string record = folder_.At(".KORVANTHEMIX/asm.prt.xml");
  layer.failing["Read " + record] = std::errc::no_such_file_or_directory;
  const ZYMIDOMElement_var vanishing = Request(Object("asm", "phid='A'") + Object("o", "type='part' familyid='asm'"));
  EXPECT_EQ(handler_->Recognize(vanishing, records), E_FAIL);
  EXPECT_EQ(Brief(vanishing, "o"), "status= phid=");
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(), record + ": Changed while it was looked at");

  layer.failing["Read " + record] = std::errc::io_error;
  const ZYMIDOMElement_var failing = Request(Object("asm"));
  EXPECT_EQ(handler_->Recognize(failing, records), E_FAIL);
  EXPECT_EQ(Brief(failing, "asm"), "status= phid=") << "a file that cannot be read is not known to be damaged";

  const ZYMIDOMElement_var damaged = Request(Object("a"));
  EXPECT_EQ(handler_->Recognize(damaged, records), E_FAIL);
  EXPECT_EQ(Brief(damaged, "a"), "status=UNKNOWN phid=") << "a folder in the place of a record is";
}

class TestContext : public QELIVARDOSClientContext {
 public:
  ZYMUnicodeStringList GetCommandsWithoutLRD() override { return {"export", "print"}; }
};

TEST_F(RecognizeTest, a_listed_command_or_a_request_for_files_alone_does_without_records) {
  const QELIVARDOSClientContext_var context = ZYMMakeComponent<TestContext>();
  for (const auto& [command, request, with, handlerName] :
       Rows<4>{{"print", "<c/>", "context", "HandlerNoLRD"},
               {"Print", "<c/>", "context", "Handler"},
               {"print", "<c/>", "", "Handler"},
               {"x", "<c downloadfileonly='TRUE'/>", "", "HandlerNoLRD"},
               {"x", "<c downloadfileonly='TRUE'/>", "context", "HandlerNoLRD"},
               {"x", "<c downloadfileonly='true'/>", "context", "Handler"}}) {
    QELXVARDOSRecognitionFactory factory =
        with.empty() ? QELXVARDOSRecognitionFactory() : QELXVARDOSRecognitionFactory(context);
    QELXIVARDOSRecognitionHandler_var handler;
    const ZYMIDOMElement_var root = Tree(request);
    const TraceLines trace;
    EXPECT_EQ(factory.GetRecognitionHandler(command, config_, root, handler), S_OK);
    EXPECT_EQ(handler->IsA(), "QELXVARDOSRecognition" + handlerName) << command << request;
    EXPECT_THAT(trace.all, Contains("LRD recognition object of type : ZYMBaseUnknown created"));
    handler = nullptr;
    EXPECT_EQ(factory.GetRecognitionHandler(command, config_, TextNode(), handler), S_OK);
    EXPECT_TRUE(handler.IsNull());
  }
}

}  // namespace
