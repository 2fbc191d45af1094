#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "tests/support/Client.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Trees.h"

namespace {

using Looks = std::vector<QELVARDOSFileLook>;
using Kind = QELVARDOSFileLook::Kind;

/// Notes what it is told of, once it wants to know, and what is looked at.
class ToldLayer : public QELVARDOSFileLayerFilter {
 public:
  ToldLayer() : QELVARDOSFileLayerFilter(Current()) {}

  QELVARDOSFileFacts Stat(const std::string& path) override {
    Take({path, Kind::Facts});
    return Next().Stat(path);
  }
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override {
    Take({path, Kind::Content});
    return Next().Read(path, bytes, atMost);
  }
  bool WantsNotice() const override { return looks >= wantedFrom; }
  void LookAhead(Looks&& coming) override {
    told.insert(told.end(), coming.begin(), coming.end());
    ahead.insert(ahead.end(), coming.begin(), coming.end());
    most = std::max(most, ahead.size());
  }

  int wantedFrom = 0;
  int looks = 0;
  Looks told;
  /// What was told of and not looked at yet.
  Looks ahead;
  std::size_t most = 0;
  int untold = 0;

 private:
  void Take(const QELVARDOSFileLook& look) {
    ++looks;
    untold += std::erase(ahead, look) == 0 ? 1 : 0;
  }

  const QELVARDOSUseFileLayer use_{*this};
};

class NoticeTest : public ModuleTest {
 protected:
  static std::string Objects(int count) {
    std::string text;
    for (int number = 0; number < count; ++number) {
      text += "<!-- no object --><cadobject filename='p" + std::to_string(number) + "' dirname='/none'/>";
    }
    return text;
  }
  HRESULT Recognize(const std::string& objects) {
    return client_.Recognize(Tree("<command><cadobjectlist>" + objects + "</cadobjectlist></command>"));
  }

  const Client client_;
};

TEST_F(NoticeTest, every_look_at_an_object_is_told_of_once_but_not_far_ahead) {
  ToldLayer layer;
  ASSERT_EQ(Recognize(Objects(1000)), S_OK);
  EXPECT_EQ(layer.told.size(), 2000U);
  EXPECT_EQ(layer.looks, 2000);
  EXPECT_EQ(layer.untold, 0);
  EXPECT_LE(layer.most, 2 * 257U);
}

TEST_F(NoticeTest, whoever_wants_to_know_late_is_told_of_what_still_comes) {
  ToldLayer layer;
  layer.wantedFrom = 8;
  ASSERT_EQ(Recognize(Objects(400)), S_OK);
  EXPECT_EQ(layer.untold, 8);
  EXPECT_TRUE(layer.ahead.empty());
}

TEST_F(NoticeTest, what_no_look_will_follow_is_not_told_of) {
  ToldLayer layer;
  ASSERT_EQ(Recognize("<cadobject phid='P' filename='a' dirname='d'/>"
                      "<cadobject recognizeasnew='TRUE' filename='b' dirname='d'/>"),
            S_OK);
  EXPECT_EQ(layer.told, (Looks{{"d/b", Kind::Facts}, {"d/.KORVANTHEMIX/b.xml", Kind::Facts}}));
  EXPECT_TRUE(layer.ahead.empty());
}

TEST_F(NoticeTest, recording_tells_of_the_files_that_it_stamps_and_the_records_that_it_compares) {
  ToldLayer layer;
  ASSERT_EQ(client_.RecordAnswer(client_.Root("answer.xml")), S_OK);
  const QELVARDOSFileLook a{client_.folder.At("a.prt"), Kind::Facts};
  const QELVARDOSFileLook b{client_.folder.At("b.prt"), Kind::Facts};
  EXPECT_EQ(layer.told, (Looks{a,
                               b,
                               a,
                               b,
                               {client_.folder.At(".KORVANTHEMIX/a.prt.xml"), Kind::Content},
                               {client_.folder.At(".KORVANTHEMIX/b.prt.xml"), Kind::Content}}));
  EXPECT_TRUE(layer.ahead.empty());
}

}  // namespace
