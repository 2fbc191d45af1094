#include <cstdlib>
#include <fstream>
#include <string>

#include "tests/lrd/LrdTest.h"

namespace {

class HelpTest : public LrdTest {};

TEST_F(HelpTest, every_line_of_help_stands_in_its_place) {
  for (const std::string name : {"lrd", "recognize", "record", "show", "status", "check"}) {
    const Ran ran = Lrd(name == "lrd" ? Arguments{"--help"} : Arguments{name, "--help"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_EQ(ran.err, "");
    const std::string file = HELP "/" + name + ".txt";
    if (std::getenv("LRD_WRITE_HELP") != nullptr) {
      std::ofstream(file) << ran.out;
    }
    EXPECT_EQ(ran.out, Slurp(file)) << file;
  }
}

}  // namespace
