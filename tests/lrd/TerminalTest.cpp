#include <filesystem>
#include <string>

#include "tests/lrd/Terminal.h"

namespace {

/// What a person sees of work that takes long: a line that tells how far it is, and that makes room for every other.
class TerminalTest : public LrdTest {
 protected:
  TerminalTest() {
    PutObject("work/a", "first.prt.1", "first.prt", Record("P1"));
    PutObject("work/b", "new.prt.1", "last.prt", Record("P2"));
    Put("work/b/.KORVANTHEMIX/folder.prt.xml/note", "a folder in the place of a record");
  }

  static Ran Slowly(const Arguments& arguments) {
    return AtTerminal(arguments, "", {"LD_PRELOAD=" SWIFT_CLOCK, "ASAN_OPTIONS=verify_asan_link_order=0"});
  }

  static inline const std::string cleared_ = "\r\x1b[K";
};

TEST_F(TerminalTest, status_tells_how_far_it_is_and_leaves_nothing_of_that_among_its_lines) {
  const Ran ran = Slowly({"status", "work", "--config", "config.xml"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out, cleared_ + "0 objects found" + cleared_ + "1 objects found" + cleared_ +
                         "lrd: work/b/.KORVANTHEMIX/folder.prt.xml: is no regular file\r\n" + cleared_ +
                         "2 objects found" + cleared_ + "2 of 2 objects recognised" + cleared_ +
                         "\x1b[32mE work/a/first.prt.1\x1b[0m\r\n"
                         "\x1b[31m! work/b/last.prt\x1b[0m\r\n"
                         "\x1b[31m? work/b/new.prt.1\x1b[0m\r\n"
                         "2 objects: 1 EXISTS, 0 MODIFIED, 1 UNKNOWN, 0 DAMAGED; 1 record without object file\r\n");
}

TEST_F(TerminalTest, a_check_tells_how_far_it_is_and_leaves_nothing_of_that_among_its_lines) {
  const Ran ran = Slowly({"check", "work"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out, cleared_ + "0 records read" + cleared_ + "1 record read" + cleared_ +
                         "work/b/.KORVANTHEMIX/folder.prt.xml: is no regular file\r\n"
                         "work/b/.KORVANTHEMIX/last.prt.xml: its object file is gone\r\n" +
                         cleared_ + "2 records read" + cleared_ + "2 records, 2 findings\r\n");
}

}  // namespace
