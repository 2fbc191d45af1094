#include <gmock/gmock.h>

#include <string>

#include "tests/lrd/LrdTest.h"

using testing::HasSubstr;

namespace {

/// Outputs that cannot take what they are sent.
class OutputTest : public LrdTest {
 protected:
  OutputTest() {
    PutObject("work", "a.prt.1", "a.prt", Record("PH-1"));
    Put("request.xml", Request("<cadobject cadid='1' filename='a.prt.1' dirname='work'/>"));
    Put("response.xml", CheckOut("work", {"a"}));
  }
};

TEST_F(OutputTest, a_full_standard_output_is_told_by_every_command) {
  for (const Arguments& arguments :
       {Arguments{"--help"}, Arguments{"show", "--help"}, Arguments{"--version"},
        Arguments{"recognize", "request.xml", "--config", "config.xml"},
        Arguments{"recognize", "request.xml", "--config", "config.xml", "-o", "/dev/stdout"},
        Arguments{"record", "response.xml", "--config", "config.xml"},
        Arguments{"show", "work/.KORVANTHEMIX/a.prt.xml"}, Arguments{"show", "work/.KORVANTHEMIX/a.prt.xml", "--json"},
        Arguments{"status", "work", "--config", "config.xml"},
        Arguments{"status", "work", "--config", "config.xml", "--json"}, Arguments{"check", "work"},
        Arguments{"--trace", "-", "recognize", "request.xml", "--config", "config.xml", "-o", "out.xml"}}) {
    const Ran ran = LrdFull(arguments);
    EXPECT_EQ(ran.status, 2) << testing::PrintToString(arguments);
    EXPECT_THAT(ran.err, testing::EndsWith(": No space left on device\n")) << testing::PrintToString(arguments);
  }
}

TEST_F(OutputTest, what_is_printed_before_an_error_is_told_along_with_it) {
  const Ran ran = LrdFull({"show", "work/.KORVANTHEMIX/a.prt.xml", "absent.xml"});
  EXPECT_EQ(ran.status, 2);
  EXPECT_EQ(ran.err, "lrd: absent.xml: No such file or directory\nlrd: standard output: No space left on device\n");
}

TEST_F(OutputTest, a_device_or_a_trace_that_is_full_is_named) {
  const Ran device = Lrd({"recognize", "request.xml", "--config", "config.xml", "-o", "/dev/full"});
  EXPECT_EQ(device.status, 2);
  EXPECT_EQ(device.err, "lrd: /dev/full: No space left on device\n");
  const Ran trace = Lrd({"--trace", "/dev/full", "recognize", "request.xml", "--config", "config.xml"});
  EXPECT_EQ(trace.status, 2);
  EXPECT_EQ(trace.err, "lrd: /dev/full: No space left on device\n");
  EXPECT_THAT(trace.out, HasSubstr("EXISTS"));
}

TEST_F(OutputTest, a_file_that_there_is_no_room_for_stays_as_it_was) {
  std::string objects;
  for (int number = 0; number < 1000; ++number) {
    objects += "<cadobject cadid='" + std::to_string(number) + "' filename='b.prt' dirname='work'/>";
  }
  Put("request.xml", Request(objects));
  Put("out.xml", "as it was");
  const auto before = State();
  const Ran ran = Run({"/bin/sh", "-c", "ulimit -f 8; exec \"$@\"", "sh", LRD_PROGRAM, "recognize", "request.xml",
                       "--config", "config.xml", "-o", "out.xml"});
  EXPECT_EQ(ran.status, 2);
  EXPECT_THAT(ran.err, testing::MatchesRegex("lrd: .*/out\\.xml: File too large\n"));
  EXPECT_EQ(State(), before);
}

}  // namespace
