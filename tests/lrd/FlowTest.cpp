#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/lrd/LrdTest.h"

namespace {

/// What people and programs read, to the last blank: each file of flows/ holds what is typed into a shell, in which the
/// words of words.sh are known too, and what it answers. "$" begins a command and ">" goes on with it; behind it stand
/// what it wrote, on standard error behind "2>", and in brackets its exit status when that is not 0.
///
/// After a change that is meant, LRD_WRITE_FLOWS=1 lrd_test --gtest_filter='*FlowTest*' makes the files again; read
/// what changed before it is kept.
class FlowTest : public LrdTest, public testing::WithParamInterface<std::string> {
 protected:
  std::string Told(const std::string& command) const {
    const Ran ran = Run({"/bin/sh", "-c", "LRD=" LRD_PROGRAM "\n. " FLOWS "/words.sh\n" + command});
    std::istringstream errors(ran.err);
    std::string told = ran.out + (ran.out.empty() || ran.out.ends_with('\n') ? "" : " (no end of line)\n");
    for (std::string line; std::getline(errors, line);) {
      told += "2> " + line + "\n";
    }
    for (std::size_t at = 0; (at = told.find(root_.string())) != std::string::npos;) {
      told.replace(at, root_.string().size(), "ROOT");
    }
    return told + (ran.status == 0 ? "" : "[" + std::to_string(ran.status) + "]\n");
  }
};

TEST_P(FlowTest, every_line_stands_in_its_place) {
  const std::string file = FLOWS "/" + GetParam() + ".txt";
  const std::string expected = Slurp(file);
  std::istringstream lines(expected);
  std::string flow;
  std::string command;
  const auto run = [&] {
    flow += command.empty() ? "" : Told(command);
    command.clear();
  };
  for (std::string line; std::getline(lines, line);) {
    const std::string mark = line.substr(0, 2);
    if (mark == "# " || mark == "$ ") {
      run();
    }
    if (mark == "# " && !flow.empty()) {
      flow += "\n";
    }
    if (mark == "# " || mark == "$ " || mark == "> ") {
      flow += line + "\n";
      command += mark == "# " ? "" : line.substr(2) + "\n";
    }
  }
  run();
  if (std::getenv("LRD_WRITE_FLOWS") != nullptr) {
    std::ofstream(file) << flow;
  }
  EXPECT_EQ(flow, expected);
}

std::vector<std::string> Flows() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(FLOWS)) {
    if (entry.path().extension() == ".txt") {
      names.push_back(entry.path().stem());
    }
  }
  return names;
}

INSTANTIATE_TEST_SUITE_P(Flows, FlowTest, testing::ValuesIn(Flows()),
                         [](const testing::TestParamInfo<std::string>& flow) { return flow.param; });

}  // namespace
