#include <gmock/gmock.h>
#include <pty.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "tests/lrd/LrdTest.h"

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

/// Runs the program with a person at the terminal who types the answer to its question, or Ctrl-C when there is no
/// answer; what the terminal shows is in out. environment: "NAME=value" of what the program finds beside what the tests
/// have.
Ran AtTerminal(Arguments arguments, const std::string& answer = "", Arguments environment = {}) {
  arguments.insert(arguments.begin(), LRD_PROGRAM);
  std::vector<char*> argv;
  for (std::string& argument : arguments) {
    argv.push_back(argument.data());
  }
  argv.push_back(nullptr);
  int terminal = 0;
  const pid_t process = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (process == 0) {
    for (std::string& variable : environment) {
      putenv(variable.data());
    }
    execv(argv.front(), argv.data());
    _exit(127);
  }
  std::string shown;
  std::array<char, 256> piece{};
  bool answered = false;
  for (ssize_t got = 0; (got = read(terminal, piece.data(), piece.size())) > 0;) {
    shown.append(piece.data(), static_cast<std::size_t>(got));
    if (!answered && shown.find("[y/N] ") != std::string::npos) {
      const std::string typed = answer.empty() ? "\x03" : answer;
      answered = write(terminal, typed.data(), typed.size()) > 0;
    }
  }
  close(terminal);
  int status = 0;
  waitpid(process, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), shown, ""};
}

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
