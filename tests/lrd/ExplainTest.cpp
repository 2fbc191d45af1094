#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/lrd/LrdTest.h"

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr std::int64_t Stamp = 1700000000;

class ExplainTest : public LrdTest {
 protected:
  static std::string Object(const std::string& name, const std::string& attributes = "") {
    return "<cadobject cadid='" + name + "' type='part' filename='" + name + ".prt.1' dirname='work' " + attributes +
           "/>";
  }
  /// Each file as much later than its record's stamp.
  static void PutFilesOffBy(const std::vector<int>& seconds, std::int64_t stamp = Stamp) {
    std::string objects;
    for (std::size_t i = 0; i < seconds.size(); ++i) {
      const std::string name = "p" + std::to_string(i);
      PutObject("work", name + ".prt.1", name + ".prt", Record("P", std::to_string(stamp)), stamp + seconds[i]);
      objects += Object(name);
    }
    Put("request.xml", Request(objects));
  }
  Ran Explain(Arguments more) const {
    Arguments arguments{"recognize", "request.xml", "--config", "config.xml"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Lrd(arguments);
  }
};

TEST_F(ExplainTest, a_sum_names_what_all_of_a_reason_have_in_common) {
  const std::string later = "MODIFIED: file is newer than its record\n";
  const std::string earlier = "MODIFIED: file is older than its record\n";
  const std::string evenSeconds = ", as on a file system that stores even seconds";
  const std::string stamp = "2023-11-14 22:13:20 UTC";
  const std::vector<std::pair<std::vector<int>, std::string>> rows = {
      {{3600, 3600},
       "2 " + later + "    all by 1 h, as where a file server has another time zone or daylight saving time\n"},
      {{-7200}, "1 " + earlier + "    by 2 h, as where"},
      {{5, 5}, "2 " + later + "    all by 5 s\n    all with file times within 0 s, from"},
      {{-2, -2, 0}, "2 " + earlier + "    all by 2 s" + evenSeconds + "; every file time is even\n"},
      {{2, 1}, "2 " + later + "    all by 2 s at most" + evenSeconds + "\n"},
      {{3600, 86400},
       "2 " + later +
           "    all with file times within 23 h, from 2023-11-14 23:13:20 UTC to 2023-11-15 22:13:20 UTC\n"
           "    all with the record stamp " +
           stamp + "\n    all of format version 4.0\n    all in folder work\n"},
      {{3600, 90001}, "2 " + later + "    all with the record stamp"},
      {{0, 9, 8}, "3 objects: 1 EXISTS, 2 MODIFIED, 0 UNKNOWN\n2 MODIFIED: "},
      {{0, 0, 9}, "3 objects: 2 EXISTS, 1 MODIFIED, 0 UNKNOWN\n2 EXISTS: "},
      {{0, 9}, "2 objects: 1 EXISTS, 1 MODIFIED, 0 UNKNOWN\n1 MODIFIED: "},
  };
  for (const auto& [seconds, said] : rows) {
    PutFilesOffBy(seconds);
    const Ran ran = Explain({"--explain=sum"});
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.out, HasSubstr(said));
    EXPECT_THAT(ran.out, Not(HasSubstr("p0.prt.1"))) << "the sum alone";
  }
}

TEST_F(ExplainTest, lines_name_all_that_decided_and_json_has_the_same) {
  PutFilesOffBy({61});
  PutObject("work", "asm.prt.1", "asm.prt",
            Record("P", "", "<structure id='ITEM.prt'><phid/><objectChangeStamp/><ceStamp/><hashcode/></structure>"));
  PutObject("work", "twin.prt.1", "twin.prt", Record("P", "soon"));
  Put("work/twin.prt.2", "cad");
  Put("request.xml", Request(Object("p0") + Object("asm") + Object("item", "familyid='asm'") + Object("twin") +
                             "<cadobject cadid='two' filename='twin.prt.2' dirname='work'/>"));
  const Ran ran = Explain({"--explain", "-o", "out.xml"});
  const std::string records = ", record file work/.KORVANTHEMIX/";
  const std::string twin = "(file 2023-11-14 22:13:20 UTC, record stamp soon" + records +
                           "twin.prt.xml, format version 4.0); doubtful: another object has the same record file ";
  EXPECT_EQ(ran.err, "");
  EXPECT_THAT(ran.out, HasSubstr("2 doubtful: another object has the same record file\n\n"
                                 "M p0 work/p0.prt.1: file is newer than its record (file 2023-11-14 22:14:21 UTC, "
                                 "record 2023-11-14 22:13:20 UTC, difference 1 min 1 s" +
                                 records + "p0.prt.xml, format version 4.0)\n" +
                                 "M asm work/asm.prt.1: record has no stamp (file 2023-11-14 22:13:20 UTC" + records +
                                 "asm.prt.xml, format version 4.0)\n"
                                 "? item work/item.prt.1: record has no such entry (record file "
                                 "work/.KORVANTHEMIX/asm.prt.xml, format version 4.0, identifier item.prt, but an "
                                 "entry ITEM.prt)\n"
                                 "M twin work/twin.prt.1: record has a stamp that is no time " +
                                 twin + "(with object two)\n"));
  EXPECT_THAT(Slurp("out.xml"), StartsWith("<?xml"));
  const json told = json::parse(Explain({"--json"}).out);
  EXPECT_EQ(told["objects"][2], json::parse(R"({"cadid": "item", "path": "work/item.prt.1", "letter": "?",
    "status": "UNKNOWN", "reason": "record has no such entry", "recordFile": "work/.KORVANTHEMIX/asm.prt.xml",
    "formatVersion": "4.0", "identifier": "item.prt", "nearMisses": [{"identifier": "ITEM.prt"}]})"));
  EXPECT_EQ(told["objects"][0]["difference"], 61);
  EXPECT_EQ(told["objects"][3]["doubts"][0]["with"], "two");
  EXPECT_EQ(told["sum"].size(), 4U);
  EXPECT_EQ(told["doubts"][0]["count"], 2);

  const Ran only = Explain({"--explain", "--only", "two", "p0"});
  EXPECT_THAT(only.out, StartsWith("2 objects: 0 EXISTS, 2 MODIFIED"));
  EXPECT_THAT(only.out, HasSubstr("\nM two work/twin.prt.2: "));
  EXPECT_THAT(only.out, Not(HasSubstr("asm")));
  EXPECT_EQ(Explain({"--explain", "--only", "nobody"}).status, 2);
  EXPECT_EQ(Explain({"--only", "p0"}).status, 2);
  EXPECT_EQ(Explain({"--explain=much"}).status, 2);
}

TEST_F(ExplainTest, a_damaged_record_costs_its_own_object_when_asked_to_keep_going) {
  PutFilesOffBy({0});
  PutObject("work", "bad.prt.1", "bad.prt", "<object>\n<phid>");
  Put("request.xml", Request(Object("p0") + Object("bad") + Object("new")));
  const Ran stopped = Explain({"--explain"});
  EXPECT_EQ(stopped.status, 1);
  EXPECT_THAT(stopped.out, HasSubstr("\n- new work/new.prt.1: not reached\n"));
  for (const Arguments& flags : {Arguments{"--keep-going", "-o", "out.xml"},
                                 Arguments{"--keep-going", "-o", "out.xml", "--json", "--only", "p0"}}) {
    const Ran ran = Explain(flags);
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.err, StartsWith("lrd: work/bad.prt.1: object bad is left without a verdict: "
                                    "work/.KORVANTHEMIX/bad.prt.xml:2:"));
    EXPECT_THAT(Slurp("out.xml"),
                HasSubstr(R"(cadid="bad" type="part" filename="bad.prt.1" dirname="work" status="")"));
    EXPECT_THAT(Slurp("out.xml"),
                HasSubstr(R"(cadid="new" type="part" filename="new.prt.1" dirname="work" status="UNKNOWN")"));
  }
  EXPECT_THAT(Explain({"--keep-going", "--explain"}).out,
              HasSubstr("\nX bad work/bad.prt.1: record damaged (file 2023-11-14 22:13:20 UTC, record file "
                        "work/.KORVANTHEMIX/bad.prt.xml): work/.KORVANTHEMIX/bad.prt.xml:2:"));
}

}  // namespace
