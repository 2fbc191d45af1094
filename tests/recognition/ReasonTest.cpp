#include <gtest/gtest.h>

#include <string>

#include "platform/ZYMNullHandleError.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "recognition/QELXVARDOSRecognitionHandlerNoLRD.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "tests/support/TestLayer.h"

namespace {

using Kind = QELXVARDOSReason::Kind;

/// What is told of each object, in a line of words.
class Listener : public QELXIVARDOSObserver {
 public:
  explicit Listener(std::string root) : root_(std::move(root)) {}

  void Decided(const ZYMIDOMElement_var& object, const QELXVARDOSReason& reason) override {
    told += Show(object, {"cadid", "status"}) + " " + std::to_string(static_cast<int>(reason.kind));
    Add(" in ", reason.recordFile);
    Add(" file ", reason.fileStamp ? std::to_string(*reason.fileStamp) : "");
    Add(" record ", reason.recordStamp);
    Add(" by ", reason.identifier);
    Add(": ", reason.failure);
    told += "\n";
  }

  std::string told;

 private:
  void Add(const char* before, const ZYMUnicodeString& fact) {
    std::string text = fact.Str();
    for (std::size_t at = 0; (at = text.find(root_ + "/")) != std::string::npos;) {
      text.erase(at, root_.size() + 1);
    }
    told += text.empty() ? "" : before + text;
  }

  std::string root_;
};

class ReasonTest : public ModuleTest {
 protected:
  std::string Object(const std::string& cadId, const std::string& attributes = "") const {
    return "<cadobject cadid='" + cadId + "' type='part' filename='" + cadId + ".prt' dirname='" + folder_.Root() +
           "' " + attributes + "/>";
  }
  static ZYMIDOMElement_var Request(const std::string& objects, const std::string& behind = "") {
    return Tree("<command cname='checkinEx'><cadobjectlist>" + objects + "</cadobjectlist>" + behind + "</command>");
  }
  template <typename Handler>
  std::string Told(const ZYMHandle<Handler>& handler, const ZYMIDOMElement_var& request, HRESULT status = S_OK) {
    Listener listener(folder_.Root());
    handler->SetObserver(&listener);
    RecordMap records;
    EXPECT_EQ(handler->Recognize(request, records), status);
    return listener.told;
  }
  static std::string Line(const std::string& object, Kind kind, const std::string& facts) {
    const std::size_t blank = object.find(' ');
    return "cadid=" + object.substr(0, blank) + " status=" + object.substr(blank + 1) + " " +
           std::to_string(static_cast<int>(kind)) + facts + "\n";
  }
  static std::string Own(const std::string& name) { return " in .KORVANTHEMIX/" + name + ".prt.xml"; }
  static std::string RecordOf(const std::string& stamp, const std::string& nested = "") {
    return "<object version='4.0'>" + Core("P", stamp, MacroAndXS) + nested + "</object>";
  }
  static std::string Entry(const std::string& id, const std::string& phid) {
    return "<structure id='" + id + "'>" + Core(phid, "1", MacroAndXS) + "</structure>";
  }

  ScratchFolder folder_;
  const ZYMHandle<QELXVARDOSRecognitionHandler> handler_ = ZYMMakeComponent<QELXVARDOSRecognitionHandler>(
      ZYMUnicodeString("CREO"), QELIVARDOSGlobalConfigObject_var(ZYMMakeComponent<TestConfiguration>()));
};

TEST_F(ReasonTest, the_request_alone_decides_for_what_it_marks_or_names) {
  folder_.PutFile("modified.prt", 100);
  folder_.PutRecord("modified.prt", RecordOf("100"));
  const std::string objects = Object("given", "phid='P'") + Object("changed", "phid='P' modified='TRUE'") +
                              Object("renewed", "phid='P' recognizeasnew='true'");
  const std::string byId = Line("given EXISTS", Kind::PhysicalIdGiven, "") +
                           Line("changed MODIFIED", Kind::MarkedAsModified, "") +
                           Line("renewed UNKNOWN", Kind::MarkedAsNew, "");
  EXPECT_EQ(
      Told(handler_, Request(objects + Object("modified", "modified='TRUE'") + Object("new", "recognizeasnew='TRUE'"))),
      byId + Line("modified MODIFIED", Kind::MarkedAsModified, Own("modified") + " file 100 record 100") +
          Line("new UNKNOWN", Kind::MarkedAsNew, Own("new")));
  EXPECT_EQ(Told(ZYMMakeComponent<QELXVARDOSRecognitionHandlerNoLRD>("x"), Request(objects + Object("none"))),
            byId + Line("none UNKNOWN", Kind::NoPhysicalId, ""));
}

TEST_F(ReasonTest, an_own_record_decides_by_stamps_or_is_none) {
  std::string objects;
  for (const auto& [name, stamp] : Rows<2>{{"same", "100"},
                                           {"newer", "99"},
                                           {"older", "101"},
                                           {"stampless", ""},
                                           {"timeless", "100 s"},
                                           {"odd", "0100"}}) {
    folder_.PutFile(name + ".prt", 100);
    folder_.PutRecord(name + ".prt", RecordOf(stamp));
    objects += Object(name);
  }
  folder_.PutRecord("gone.prt", RecordOf("100"));
  folder_.PutFile("none.prt", 100);
  folder_.PutFile("strange.prt", 100);
  folder_.PutRecord("strange.prt", "<object version='9.9'/>");
  EXPECT_EQ(Told(handler_, Request(objects + Object("gone") + Object("none") + Object("strange"))),
            Line("same EXISTS", Kind::StampsAgree, Own("same") + " file 100 record 100") +
                Line("newer MODIFIED", Kind::FileNewer, Own("newer") + " file 100 record 99") +
                Line("older MODIFIED", Kind::FileOlder, Own("older") + " file 100 record 101") +
                Line("stampless MODIFIED", Kind::RecordWithoutStamp, Own("stampless") + " file 100") +
                Line("timeless MODIFIED", Kind::StampIsNoTime, Own("timeless") + " file 100 record 100 s") +
                Line("odd MODIFIED", Kind::StampIsNoTime, Own("odd") + " file 100 record 0100") +
                Line("gone UNKNOWN", Kind::ObjectFileGone, Own("gone") + " by gone.prt") +
                Line("none UNKNOWN", Kind::NoRecord, Own("none") + " file 100") +
                Line("strange UNKNOWN", Kind::NoKnownRecord, Own("strange") + " file 100"));
}

TEST_F(ReasonTest, an_entry_decides_by_relationship_or_identifier) {
  folder_.PutFile("asm.prt", 100);
  folder_.PutRecord(
      "asm.prt", RecordOf("100", "<rel id='U'><phid>R</phid><childPhid>PR</childPhid></rel>" + Entry("another", "PR") +
                                     Entry("named.prt", "PN") + Entry("empty.prt", "")));
  const std::string relationship =
      "<relationshiplist><relationship rid='1' reluuid='U' topnode='dpt'/></relationshiplist><structure>"
      "<cadobject cadid='asm'><cadobject cadid='related'><relationship rid='1'/></cadobject></cadobject></structure>";
  std::string objects = Object("asm");
  for (const char* name : {"related", "named", "empty", "missing"}) {
    objects += Object(name, "familyid='asm'");
  }
  EXPECT_EQ(Told(handler_, Request(objects, relationship)),
            Line("asm EXISTS", Kind::StampsAgree, Own("asm") + " file 100 record 100") +
                Line("related EXISTS", Kind::EntryOfRelationship, Own("asm")) +
                Line("named EXISTS", Kind::EntryOfIdentifier, Own("asm") + " by named.prt") +
                Line("empty UNKNOWN", Kind::EntryWithoutPhysicalId, Own("asm") + " by empty.prt") +
                Line("missing UNKNOWN", Kind::NoSuchEntry, Own("asm") + " by missing.prt"));
}

TEST_F(ReasonTest, a_call_that_ends_early_says_at_what) {
  for (const char* name : {"torn.prt", "short.prt", "hidden.prt"}) {
    folder_.PutFile(name, 100);
  }
  folder_.PutRecord("torn.prt", "<object");
  folder_.PutRecord("short.prt", "<object version='4.0'><phid>P</phid></object>");
  EXPECT_EQ(Told(handler_, Request(Object("torn") + Object("short")), E_FAIL),
            Line("torn UNKNOWN", Kind::RecordDamaged,
                 Own("torn") + " file 100: .KORVANTHEMIX/torn.prt.xml:1:1: unclosed token"));

  TestLayer layer;
  layer.Hide(folder_.At(".KORVANTHEMIX/hidden.prt.xml"), std::errc::permission_denied);
  EXPECT_EQ(Told(handler_, Request(Object("hidden")), E_FAIL),
            Line("hidden ", Kind::CannotBeLookedAt,
                 Own("hidden") + " file 100: .KORVANTHEMIX/hidden.prt.xml: Permission denied"));

  folder_.PutFile("unseen.prt", 100);
  layer.Hide(folder_.At("unseen.prt"), std::errc::io_error);
  EXPECT_EQ(Told(handler_, Request(Object("unseen"))),
            Line("unseen UNKNOWN", Kind::NoRecord, Own("unseen") + ": unseen.prt: Input/output error"))
      << "the verdict does not rest on it";

  Listener listener(folder_.Root());
  handler_->SetObserver(&listener);
  RecordMap records;
  EXPECT_THROW(handler_->Recognize(Request(Object("short")), records), ZYMNullHandleError);
  EXPECT_EQ(listener.told,
            "cadid=short " + std::to_string(static_cast<int>(Kind::RecordDamaged)) + Own("short") +
                " file 100: .KORVANTHEMIX/short.prt.xml: <object> lacks the element <objectChangeStamp>\n");
}

}  // namespace
