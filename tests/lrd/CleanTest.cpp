#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "platform/QELVARDOSFileLayer.h"
#include "tests/lrd/Terminal.h"

using nlohmann::json;
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

TEST_F(CleanTest, only_what_is_proved_left_over_is_removed) {
  const auto before = State();
  const std::string found = dead_ + ": left-over temporary file\n" + unclaimed_ +
                            ": temporary file; left over, unless somebody writes there now\n";
  EXPECT_EQ(Lrd({"check", "work"}).out, found + "1 record, 2 findings\n");
  EXPECT_EQ(State(), before);
  const Ran ran = Lrd({"check", "work", "--clean", "--yes"});
  EXPECT_EQ(ran.status, 1) << "one is left";
  EXPECT_EQ(ran.out, found + dead_ + ": removed\n1 record, 2 findings, 1 removed\n");
  EXPECT_FALSE(fs::exists(dead_));
  EXPECT_TRUE(fs::exists(unclaimed_));

  fs::remove(unclaimed_);
  Put(dead_, "<obj");
  const Ran all = Lrd({"check", "work", "--clean", "--yes", "--json"});
  EXPECT_EQ(all.status, 0);
  EXPECT_EQ(json::parse(all.out),
            json::parse(R"({"findings": [{"file": ")" + dead_ +
                        R"(", "kind": "leftOver", "words": "left-over temporary file"}], "removed": [{"file": ")" +
                        dead_ + R"("}], "totals": {"records": 1, "findings": 1, "removed": 1}})"));
}

TEST_F(CleanTest, the_folder_of_a_living_writer_is_left_alone) {
  QELVARDOSFolderClaim writer;
  ASSERT_FALSE(QELVARDOSFileLayer::System().ClaimFolder("work/.KORVANTHEMIX", QELVARDOSFolderUse::Write, writer));
  const auto before = State();
  EXPECT_THAT(Lrd({"check", "work", "--clean", "--yes"}).out, HasSubstr("1 record, 1 finding, 0 removed\n"));
  EXPECT_EQ(State(), before);
}

TEST_F(CleanTest, a_person_is_asked_once_and_without_one_nothing_goes) {
  const auto before = State();
  const Ran nobody = Run({"/bin/sh", "-c", "exec \"$@\" </dev/null", "sh", LRD_PROGRAM, "check", "work", "--clean"});
  EXPECT_EQ(nobody.status, 2);
  EXPECT_EQ(nobody.out, "");
  EXPECT_EQ(nobody.err,
            "lrd: --clean asks before it removes anything, and there is no terminal to ask on; --yes removes without "
            "asking\n");
  const Ran no = Clean("n\n");
  EXPECT_EQ(no.status, 1);
  EXPECT_THAT(no.out, HasSubstr("lrd: remove 1 temporary file? [y/N] "));
  EXPECT_EQ(Clean("\x03").status, 130) << "Ctrl-C is an answer too";
  EXPECT_EQ(State(), before);
  fs::remove(unclaimed_);
  EXPECT_EQ(Clean("y\n").status, 0);
  EXPECT_FALSE(fs::exists(dead_));
  EXPECT_THAT(Clean("").out, Not(HasSubstr("[y/N]")));
}

TEST_F(CleanTest, nothing_but_a_plain_yes_removes_anything) {
  const auto before = State();
  for (const std::string answer : {"\n", " y\n", "yy\n", "no\n", "yesterday\n", "\x04", "y\x04\x04"}) {
    EXPECT_EQ(Clean(answer).status, 1) << answer;
  }
  EXPECT_EQ(Clean(std::string(3000, 'y') + "\n").status, 1);
  EXPECT_EQ(State(), before);
  fs::remove(unclaimed_);
  for (const std::string answer : {"y\n", "Y\n", "yes\n"}) {
    Put(dead_, "<obj");
    EXPECT_EQ(Clean(answer).status, 0) << answer;
    EXPECT_FALSE(fs::exists(dead_));
  }
}

TEST_F(CleanTest, records_where_nobody_looks_for_them_are_reported) {
  fs::remove(dead_);
  fs::remove(unclaimed_);
  Put("work/.KORVANTHEMIX/sub/deep/x.xml", Record("PH-2"));
  Put("work/.KORVANTHEMIX/sub/note.txt", "no record");
  Put("work/.KORVANTHEMIX/.xml", Record("PH-3"));
  const Ran ran = Lrd({"check", "work"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out,
            "work/.KORVANTHEMIX/sub/deep/x.xml: lies in a folder inside the record folder, where no record is looked "
            "for\n"
            "work/.KORVANTHEMIX/.xml: has no name, so it is the record of no object\n"
            "1 record, 2 findings\n");
}

}  // namespace
