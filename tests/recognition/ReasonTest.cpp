#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "platform/ZYMIDOMLook.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "tests/support/TestLayer.h"

namespace {

using Kind = QELXVARDOSReason::Kind;
using Doubt = QELXVARDOSReason::Doubt;

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
    Add(" over ", reason.relationship);
    Add(": ", reason.failure);
    for (const ZYMUnicodeString& path : reason.missingRecordFiles) {
      Add(" not ", path);
    }
    AddDetails(reason);
    told += "\n";
  }
  Reasons WantsReasons() override { return wantsDetails ? Reasons::Detailed : Reasons::Plain; }
  void SharedRecordFile(int first, int other) override {
    told += "shared by " + std::to_string(first) + " and " + std::to_string(other) + "\n";
  }

  std::string told;
  bool wantsDetails = false;

 private:
  void AddDetails(const QELXVARDOSReason& reason) {
    if (reason.details != nullptr) {
      for (const ZYMUnicodeString& id : reason.details->nearMisses) {
        Add(" near ", id);
      }
      for (const QELXVARDOSReason::Doubt doubt : reason.details->doubts) {
        told += " doubt " + std::to_string(static_cast<int>(doubt));
      }
      Add(" own version ", reason.details->ownFormatVersion);
    }
    // The newest says nothing.
    Add(" version ", reason.formatVersion == "4.0" ? "" : reason.formatVersion);
  }
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
    listener.wantsDetails = wantsDetails_;
    handler->SetObserver(&listener);
    RecordMap records;
    EXPECT_EQ(handler->Recognize(request, records), status);
    return listener.told;
  }
  static std::string Doubts(std::initializer_list<Doubt> doubts) {
    std::string text;
    for (const Doubt doubt : doubts) {
      text += " doubt " + std::to_string(static_cast<int>(doubt));
    }
    return text;
  }
  static std::string Line(const std::string& object, Kind kind, const std::string& facts) {
    const std::size_t blank = object.find(' ');
    return "cadid=" + object.substr(0, blank) + " status=" + object.substr(blank + 1) + " " +
           std::to_string(static_cast<int>(kind)) + facts + "\n";
  }
  static std::string Versions(const ZYMIDOMElement_var& request) {
    std::string versions;
    ForEachChildElement(FirstElement(request, "cadobjectlist"), [&versions](const ZYMIDOMElement_var& object) {
      versions += Attribute(object, "lrdversion").Str() + " ";
      return true;
    });
    return versions;
  }
  static std::string Own(const std::string& name) { return " in .KORVANTHEMIX/" + name + ".prt.xml"; }
  static std::string RecordOf(const std::string& stamp, const std::string& nested = "") {
    return "<object version='4.0'>" + Core("P", stamp, MacroAndXS) + nested + "</object>";
  }
  static std::string Entry(const std::string& id, const std::string& phid) {
    return "<structure id='" + id + "'>" + Core(phid, "1", MacroAndXS) + "</structure>";
  }

  ScratchFolder folder_;
  bool wantsDetails_ = false;
  const ZYMHandle<QELXVARDOSRecognitionHandler> handler_ = ZYMMakeComponent<QELXVARDOSRecognitionHandler>(
      ZYMUnicodeString("CREO"), QELIVARDOSGlobalConfigObject_var(ZYMMakeComponent<TestConfiguration>()));
};

TEST_F(ReasonTest, near_misses_differ_in_case_or_version_alone) {
  wantsDetails_ = true;
  folder_.PutFile("asm.prt", 100);
  folder_.PutRecord("asm.prt",
                    RecordOf("100", Entry("ITEM.prt", "P") + Entry("item.PRT.7", "P") + Entry("items.prt", "")));
  EXPECT_EQ(Told(handler_, Request(Object("asm") + Object("item", "familyid='asm'"))),
            Line("asm EXISTS", Kind::StampsAgree, Own("asm") + " file 100 record 100") +
                Line("item UNKNOWN", Kind::NoSuchEntry, Own("asm") + " by item.prt near ITEM.prt near item.PRT.7"));
}

TEST_F(ReasonTest, what_rests_on_sand_is_told_to_who_wants_details) {
  struct Row {
    const char* name;
    std::int64_t file;
    std::int32_t nanoseconds;
    std::int64_t recordWritten;
    std::int32_t recordNanoseconds;
    std::string record;
    std::string told;
  };
  const std::string future = "4102444800";
  const auto both = [](const std::string& file, const std::string& record) {
    return " file " + file + " record " + record;
  };
  const auto noId = "<object version='4.0'>" + Core("", "100", MacroAndXS) + "</object>";
  const std::vector<Row> rows = {
      {"EXISTS", 100, 1, 100, 2, RecordOf("100"), both("100", "100") + Doubts({Doubt::ChangedWithinSecond})},
      {"EXISTS", 100, 0, 100, 2, RecordOf("100"), both("100", "100")},
      {"EXISTS", 100, 0, 100, 0, RecordOf("100"), both("100", "100") + Doubts({Doubt::MayHaveChangedWithinSecond})},
      {"EXISTS", 100, 1, 101, 0, RecordOf("100"), both("100", "100")},
      {"EXISTS", 4102444800, 0, 100, 0, RecordOf(future), both(future, future) + Doubts({Doubt::TimeInFuture})},
      {"MODIFIED", 100, 0, 100, 0, RecordOf("101"), both("100", "101") + Doubts({Doubt::OlderThanRecord})},
      {"EXISTS", 100, 0, 101, 0, noId, both("100", "100") + Doubts({Doubt::RecordWithoutPhysicalId})},
  };
  for (const bool wants : {true, false}) {
    wantsDetails_ = wants;
    for (const Row& row : rows) {
      folder_.PutFile("a.prt", row.file, row.nanoseconds);
      folder_.PutRecord("a.prt", row.record);
      folder_.SetTime(".KORVANTHEMIX/a.prt.xml", row.recordWritten, row.recordNanoseconds);
      const Kind kind = row.told.starts_with(" file 100 record 101") ? Kind::FileOlder : Kind::StampsAgree;
      const std::string told = wants ? row.told : row.told.substr(0, row.told.find(" doubt"));
      EXPECT_EQ(Told(handler_, Request(Object("a"))), Line(std::string("a ") + row.name, kind, Own("a") + told));
    }
  }
  wantsDetails_ = true;
  TestLayer layer;
  layer.tellsNoNanoseconds = true;
  folder_.PutFile("a.prt", 100, 1);
  folder_.PutRecord("a.prt", RecordOf("100"));
  folder_.SetTime(".KORVANTHEMIX/a.prt.xml", 100, 1);
  EXPECT_EQ(
      Told(handler_, Request(Object("a"))),
      Line("a EXISTS", Kind::StampsAgree, Own("a") + both("100", "100") + Doubts({Doubt::MayHaveChangedWithinSecond})));
}

TEST_F(ReasonTest, two_objects_of_one_record_file_are_told_and_an_entry_older_than_the_own_record) {
  wantsDetails_ = true;
  folder_.PutFile("a.prt.1", 100);
  folder_.PutFile("a.prt.2", 100);
  folder_.PutRecord("a.prt", RecordOf("100"));
  const auto version = [&](const std::string& number) {
    return "<cadobject cadid='" + number + "' filename='a.prt." + number + "' dirname='" + folder_.Root() + "'/>";
  };
  const std::string facts = Own("a") + " file 100 record 100";
  EXPECT_EQ(Told(handler_, Request(Object("given", "phid='P'") + version("1") + version("2"))),
            Line("given EXISTS", Kind::PhysicalIdGiven, "") + Line("1 EXISTS", Kind::StampsAgree, facts) +
                Line("2 EXISTS", Kind::StampsAgree, facts) + "shared by 1 and 2\n");

  const std::string old =
      Core("P", "100", Macro) + "<structure id='item.prt'>" + Core("P", "1", Macro) + "</structure>";
  folder_.PutFile("old.prt", 100);
  folder_.PutRecord("old.prt", "<object version='1.0'>" + old + "</object>");
  folder_.PutRecord("item.prt", RecordOf("100"));
  EXPECT_EQ(
      Told(handler_, Request(Object("old") + Object("item", "familyid='old'"))),
      Line("old EXISTS", Kind::StampsAgree, Own("old") + " file 100 record 100 version 1.0") +
          Line("item EXISTS", Kind::EntryOfIdentifier,
               Own("old") + " by item.prt" + Doubts({Doubt::EntryOfOlderFormat}) + " own version 4.0 version 1.0"));
}

TEST_F(ReasonTest, who_keeps_going_loses_the_object_of_a_damaged_record_alone) {
  const std::string sound = "<object version='1.0'>" + Core("P", "100", Macro) + "</object>";
  for (const auto& [name, record] : Rows<2>{{"first", sound},
                                            {"torn", "<object"},
                                            {"short", "<object version='4.0'><phid>P</phid></object>"},
                                            {"hidden", RecordOf("100")},
                                            {"last", sound}}) {
    folder_.PutFile(name + ".prt", 100);
    folder_.PutRecord(name + ".prt", record);
  }
  TestLayer layer;
  layer.Hide(folder_.At(".KORVANTHEMIX/hidden.prt.xml"), std::errc::permission_denied);
  handler_->SetKeepGoing(true);
  // An entry of a record that is damaged is lost with each object that is looked for there.
  const ZYMIDOMElement_var request =
      Request(Object("first") + Object("torn", "modified='TRUE'") + Object("short") + Object("hidden") +
              Object("item", "familyid='torn'") + Object("thing", "familyid='short'") +
              Object("piece", "familyid='torn'") + Object("last"));
  const std::string incomplete = ": .KORVANTHEMIX/short.prt.xml: <object> lacks the element <objectChangeStamp>";
  const std::string torn = ": .KORVANTHEMIX/torn.prt.xml:1:1: unclosed token";
  const std::string good = " file 100 record 100 version 1.0";
  EXPECT_EQ(Told(handler_, request),
            Line("first EXISTS", Kind::StampsAgree, Own("first") + good) +
                Line("torn ", Kind::RecordDamaged, Own("torn") + " file 100" + torn) +
                Line("short ", Kind::RecordDamaged, Own("short") + " file 100" + incomplete) +
                Line("hidden ", Kind::CannotBeLookedAt,
                     Own("hidden") + " file 100: .KORVANTHEMIX/hidden.prt.xml: Permission denied") +
                Line("item ", Kind::RecordDamaged, Own("torn") + torn) +
                Line("thing ", Kind::RecordDamaged, Own("short") + incomplete) +
                Line("piece ", Kind::RecordDamaged, Own("torn") + torn) +
                Line("last EXISTS", Kind::StampsAgree, Own("last") + good));
  EXPECT_EQ(Versions(request), "1.0 1.0 1.0 1.0 1.0 1.0 1.0 1.0 ") << "carried over what was lost";
}

}  // namespace
