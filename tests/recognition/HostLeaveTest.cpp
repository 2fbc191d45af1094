#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "platform/QELVARDOSSystemUtils.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "recognition/QELXVARDOSRecognitionHandlerNoLRD.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Records.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestConfiguration.h"
#include "tests/support/TestLayer.h"

using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

/// Ends a call at a question of its choice and notes what it was asked.
class Leaver : public QELXIVARDOSObserver {
 public:
  explicit Leaver(int last) : last_(last) {}
  bool MayGoOn(Stage stage, int done, int all) override {
    asked.push_back((stage == Stage::Recognizing ? "object " : "record ") + std::to_string(done) + " of " +
                    std::to_string(all));
    return done != last_;
  }

  std::vector<std::string> asked;

 private:
  int last_;
};

class HostLeaveTest : public ModuleTest {
 protected:
  /// A tree with the objects a, b and c, as a request or as the answer to a check-out.
  ZYMIDOMElement_var Objects(const std::string& before, const std::string& behind) const {
    const std::string common = "dirname='" + folder_.At("work") + "' type='part' selected='true'";
    std::string text = before + "<cadobjectlist>\n";
    for (const char* names :
         {"cadid='a' filename='a.prt' ", "cadid='b' filename='b.prt' ", "cadid='c' filename='c.prt' "}) {
      text += Element("cadobject", names + common) + "\n";
    }
    return Tree(text + "</cadobjectlist>" + behind);
  }

  ScratchFolder folder_;
  const QELXIVARDOSRecognitionHandler_var recorder_ = ZYMMakeComponent<QELXVARDOSRecognitionHandler>(
      ZYMUnicodeString("CREO"), QELIVARDOSGlobalConfigObject_var(ZYMMakeComponent<TestConfiguration>()));
};

TEST_F(HostLeaveTest, recognition_ends_between_two_objects_and_leaves_the_rest_untouched) {
  const QELXIVARDOSRecognitionHandler_var withoutRecords =
      ZYMMakeComponent<QELXVARDOSRecognitionHandlerNoLRD>(ZYMUnicodeString("quick"));
  for (const auto& handler : {recorder_, withoutRecords}) {
    for (const int last : {2, 3}) {
      Leaver host(last);
      handler->SetObserver(&host);
      RecordMap records;
      const ZYMIDOMElement_var request = Objects("<command cname='checkinEx'>", "</command>");
      EXPECT_EQ(handler->Recognize(request, records), last == 2 ? E_ABORT : S_OK);
      EXPECT_THAT(host.asked, ElementsAre("object 1 of 3", "object 2 of 3"));
      EXPECT_EQ(Show(request, "b", {"status"}), "status=UNKNOWN");
      EXPECT_EQ(Show(request, "c", {"status"}), last == 2 ? "" : "status=UNKNOWN");
      EXPECT_EQ(QELVARDOSSystemUtils::LastError() == "ended by the host", last == 2);
      QELVARDOSSystemUtils::SetLastError("");
      handler->SetObserver(nullptr);
    }
  }
}

TEST_F(HostLeaveTest, recording_ends_before_the_first_file_changes_or_not_at_all) {
  const ZYMIDOMElement_var response = Objects("<response cname='checkoutEx'><info>", "</info></response>");
  for (const bool hasOldRecord : {false, true}) {
    if (hasOldRecord) {
      folder_.Put("work/.KORVANTHEMIX/b.prt.xml", "old");
    }
    for (const int last : {1, 2, 3}) {
      Leaver host(last);
      const TestLayer layer;
      recorder_->SetObserver(&host);
      EXPECT_EQ(recorder_->CreateOrUpdateLRD(response, RecordMap()), E_ABORT);
      EXPECT_EQ(host.asked.size(), static_cast<std::size_t>(last));
      EXPECT_EQ(host.asked.back(), "record " + std::to_string(last) + " of 3");
      EXPECT_EQ(QELVARDOSSystemUtils::LastError(), "ended by the host");
      EXPECT_THAT(layer.fates, UnorderedElementsAre("a.prt.xml: Operation canceled", "b.prt.xml: Operation canceled",
                                                    "c.prt.xml: Operation canceled"));
      EXPECT_EQ(std::filesystem::exists(folder_.At("work")), hasOldRecord) << "a folder made for nothing goes too";
      EXPECT_EQ(folder_.FileCount(), hasOldRecord ? 1 : 0);
    }
  }
  EXPECT_EQ(folder_.File("work/.KORVANTHEMIX/b.prt.xml"), "old");
  Leaver patient(4);
  const TestLayer layer;
  recorder_->SetObserver(&patient);
  EXPECT_EQ(recorder_->CreateOrUpdateLRD(response, RecordMap()), S_OK);
  EXPECT_THAT(layer.fates, UnorderedElementsAre("a.prt.xml: written", "b.prt.xml: written", "c.prt.xml: written"));
}

TEST_F(HostLeaveTest, every_way_to_record_tells_that_it_was_ended) {
  RecordMap records;
  recorder_->GetLRDMap(Objects("<command cname='checkinEx'>", "</command>"), records);
  ASSERT_EQ(records.Size(), 3);
  QELXIVARDOSLRDObject_varList list;
  for (const auto& entry : records) {
    list.Append(entry.second);
  }
  Leaver host(1);
  recorder_->SetObserver(&host);
  EXPECT_EQ(recorder_->CreateOrUpdateLRD(list), E_ABORT);
  for (const std::string command : {"checkinEx", "checkoutExPath"}) {
    EXPECT_EQ(recorder_->CreateOrUpdateLRD(Objects("<response cname='" + command + "'><info>", "</info></response>"),
                                           records),
              E_ABORT)
        << command;
  }
  EXPECT_EQ(host.asked.size(), 3U);
  EXPECT_EQ(folder_.FileCount(), 0);
}

}  // namespace
