#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "platform/QELVARDOSFileLayer.h"
#include "tests/lrd/Terminal.h"

using namespace std::string_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

namespace fs = std::filesystem;

/// Temporary files, of which only some are nobody's.
class CleanTest : public LrdTest {
 protected:
  CleanTest() {
    PutObject("work", "a.prt", "a.prt", Record("PH-1"));
    Put(dead_, "<obj");
    Put(unclaimed_, "<obj");
  }

  static Ran Clean(const std::string& answer) { return AtTerminal({"check", "work", "--clean"}, answer); }

  const std::string dead_ = "work/.KORVANTHEMIX/.~" + std::string(30, '0');
  const std::string unclaimed_ = "work/.KORVANTHEMIX/.~" + std::string(30, 'f');
};

TEST_F(CleanTest, the_folder_of_a_living_writer_is_left_alone) {
  QELVARDOSFolderClaim writer;
  ASSERT_FALSE(QELVARDOSFileLayer::System().ClaimFolder("work/.KORVANTHEMIX", QELVARDOSFolderUse::Write, writer));
  const auto before = State();
  EXPECT_THAT(Lrd({"check", "work", "--clean", "--yes"}).out, HasSubstr("1 record, 1 finding, 0 removed\n"));
  EXPECT_EQ(State(), before);
}

TEST_F(CleanTest, a_person_is_asked_once_and_nothing_but_a_plain_yes_removes_anything) {
  const auto before = State();
  const Ran no = Clean("n\n");
  EXPECT_EQ(no.status, 1);
  EXPECT_THAT(no.out, HasSubstr("lrd: remove 1 temporary file? [y/N] "));
  EXPECT_EQ(Clean("\x03").status, 130) << "Ctrl-C is an answer too";
  const std::string endless = std::string(3000, 'y') + "\n";
  for (const std::string& answer : {"\n"s, " y\n"s, "yy\n"s, "yesterday\n"s, "\x04"s, "y\x04\x04"s, endless}) {
    EXPECT_EQ(Clean(answer).status, 1) << answer;
  }
  EXPECT_EQ(State(), before);
  fs::remove(unclaimed_);
  for (const std::string answer : {"y\n", "Y\n", "yes\n"}) {
    Put(dead_, "<obj");
    EXPECT_EQ(Clean(answer).status, 0) << answer;
    EXPECT_FALSE(fs::exists(dead_));
  }
  EXPECT_THAT(Clean("").out, Not(HasSubstr("[y/N]")));
}

}  // namespace
