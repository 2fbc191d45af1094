#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/QELVARDOSFileTransaction.h"
#include "tests/lrd/LrdTest.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::microseconds;
using testing::AnyOf;

/// The program is told to end while it works.
class InterruptTest : public LrdTest {
 protected:
  static constexpr int Objects = 500;

  InterruptTest() {
    for (int number = 0; number < Objects; ++number) {
      names_.push_back("part" + std::to_string(number));
    }
  }

  /// Whether the process has put its own handler in the place of the system's, so that a signal can be sent; false when
  /// it has ended.
  static bool AwaitHandler(pid_t process, int signal) {
    for (;;) {
      std::ifstream facts("/proc/" + std::to_string(process) + "/status");
      unsigned long long caught = 0;
      for (std::string line; std::getline(facts, line);) {
        if (line.starts_with("State:") && line.find('Z') != std::string::npos) {
          return false;
        }
        if (line.starts_with("SigCgt:")) {
          caught = std::stoull(line.substr(7), nullptr, 16);
        }
      }
      if ((caught >> static_cast<unsigned>(signal - 1) & 1U) != 0) {
        return true;
      }
      std::this_thread::sleep_for(microseconds(50));
    }
  }

  /// Sends the signal, and another, after that time.
  Ran LrdSignalled(const Arguments& arguments, int signal, microseconds after) const {
    const Started started = Start(arguments);
    if (AwaitHandler(started.process, signal)) {
      std::this_thread::sleep_for(after);
      kill(started.process, signal);
      kill(started.process, signal);
    }
    return Wait(started);
  }

  /// How long such a run takes when nobody disturbs it.
  microseconds Duration(const Arguments& arguments) const {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Lrd(arguments).status, 0);
    return std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - begin);
  }

  /// Sends SIGINT and SIGTERM in turn, at any moment of a run of that length. What was under way is given up whole, or
  /// the run succeeds.
  Ran LrdEndedSometime(const Arguments& arguments, int run, microseconds length) {
    const int signal = run % 2 == 1 ? SIGTERM : SIGINT;
    const microseconds after(std::uniform_int_distribution<std::int64_t>(0, length.count())(random_));
    Ran ran = LrdSignalled(arguments, signal, after);
    EXPECT_THAT(ran.status, AnyOf(0, 128 + signal));
    EXPECT_EQ(ran.err, ran.status == 0 ? "" : signal == SIGTERM ? "lrd: terminated\n" : "lrd: interrupted\n");
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
      EXPECT_FALSE(QELVARDOSFileTransaction::IsTemporaryName(entry.path().filename().string())) << entry.path();
    }
    return ran;
  }

  std::vector<std::string> Records() const {
    std::vector<std::string> files;
    for (const std::string& name : names_) {
      files.push_back(Slurp("work/.KORVANTHEMIX/" + name + ".prt.xml"));
    }
    return files;
  }

  std::vector<std::string> names_;
  std::mt19937 random_{20231114};
};

TEST_F(InterruptTest, recording_that_is_interrupted_leaves_each_record_old_or_new) {
  struct Answer {
    Arguments record;
    std::vector<std::string> records;
  };
  Answer present{{"record", "one.xml", "--config", "config.xml"}, {}};
  Answer wanted{{"record", "two.xml", "--config", "config.xml"}, {}};
  Put("one.xml", CheckOut("work", names_, "ONE-"));
  Put("two.xml", CheckOut("work", names_, "TWO-"));
  Duration(wanted.record);
  wanted.records = Records();
  const microseconds whole = Duration(present.record);
  present.records = Records();
  std::set<int> statuses;
  for (int run = 0; run < 10; ++run) {
    const Ran ran = LrdEndedSometime(wanted.record, run, whole);
    statuses.insert(ran.status);
    // Records change once all are ready, and then all of them do.
    const std::vector<std::string> found = Records();
    EXPECT_TRUE(found == (ran.out.empty() ? present.records : wanted.records)) << "run " << run;
    if (!ran.out.empty()) {
      std::swap(present, wanted);
    }
  }
  EXPECT_TRUE(statuses.contains(130) || statuses.contains(143));
  EXPECT_EQ(Lrd(wanted.record).status, 0);
  EXPECT_TRUE(Records() == wanted.records);
}

TEST_F(InterruptTest, a_result_is_replaced_whole_or_not_at_all) {
  std::string objects;
  for (const std::string& name : names_) {
    objects.append("<cadobject cadid='").append(name).append("' filename='").append(name);
    objects += ".prt.1' dirname='work'/>";
    PutObject("work", name + ".prt.1", name + ".prt", Record("PH-" + name));
  }
  Put("request.xml", Request(objects));
  const Arguments recognise = {"recognize", "request.xml", "--config", "config.xml", "-o", "out.xml"};
  const microseconds duration = Duration(recognise);
  const std::string whole = Slurp("out.xml");
  for (int run = 0; run < 16; ++run) {
    Put("out.xml", "as it was");
    LrdEndedSometime(recognise, run, duration);
    EXPECT_THAT(Slurp("out.xml"), AnyOf("as it was", whole));
  }
  EXPECT_EQ(Lrd(recognise).status, 0);
  EXPECT_EQ(Slurp("out.xml"), whole);
}

TEST_F(InterruptTest, a_reader_that_has_stopped_reading_keeps_nobody_from_ending) {
  PutObject("work", "a.prt.1", "a.prt", Record("PH-1"));
  std::string objects;
  for (int number = 0; number < 5000; ++number) {
    objects += "<cadobject cadid='" + std::to_string(number) + "' filename='a.prt.1' dirname='work'/>";
  }
  Put("request.xml", Request(objects));
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const Started started = Start({"recognize", "request.xml", "--config", "config.xml"}, ends[1]);
  close(ends[1]);
  ASSERT_TRUE(AwaitHandler(started.process, SIGTERM));
  // The first bytes are there, and more than the pipe holds is on its way.
  std::array<char, 1> first{};
  EXPECT_EQ(read(ends[0], first.data(), 1), 1);
  kill(started.process, SIGTERM);
  EXPECT_EQ(Wait(started).status, 143);
  close(ends[0]);

  ASSERT_EQ(mkfifo("nobody", 0600), 0);
  EXPECT_EQ(
      LrdSignalled({"recognize", "request.xml", "--config", "config.xml", "-o", "nobody"}, SIGINT, microseconds(0))
          .status,
      130);
}

TEST_F(InterruptTest, status_ends_with_the_object_that_it_is_at) {
  for (const std::string& name : names_) {
    PutObject("work", name + ".prt.1", name + ".prt", Record("PH-" + name));
  }
  // Who reads the trace slowly holds the program up in the midst of its objects.
  ASSERT_EQ(mkfifo("trace", 0600), 0);
  const Started started = Start({"--trace", "trace", "status", "work", "--config", "config.xml"});
  const int trace = open("trace", O_RDONLY | O_CLOEXEC);
  std::array<char, 4096> piece{};
  ssize_t got = read(trace, piece.data(), piece.size());
  kill(started.process, SIGTERM);
  std::size_t traced = 0;
  for (; got > 0; got = read(trace, piece.data(), piece.size())) {
    traced += static_cast<std::size_t>(got);
  }
  close(trace);
  const Ran ran = Wait(started);
  EXPECT_EQ(ran.status, 143);
  EXPECT_EQ(ran.err, "lrd: terminated\n");
  EXPECT_EQ(ran.out, "");
  // A pipe holds 64 KiB; the trace of all objects is several times as long.
  EXPECT_LT(traced, 100'000U);
}

TEST_F(InterruptTest, what_the_caller_ignores_stays_ignored) {
  Put("request.xml", Request(""));
  const Ran ran = Run({"/bin/sh", "-c", "trap '' INT; exec \"$@\"", "sh", "/bin/sh", "-c", "kill -INT $$; exec \"$@\"",
                       "sh", LRD_PROGRAM, "recognize", "request.xml", "--config", "config.xml", "-o", "out.xml"});
  EXPECT_EQ(ran.status, 0) << ran.err;
}

}  // namespace
