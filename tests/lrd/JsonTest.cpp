#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/lrd/LrdTest.h"

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

namespace {

/// What programs read.
class JsonTest : public LrdTest {};

TEST_F(JsonTest, recording_tells_what_was_written_what_was_not_and_what_was_replaced) {
  Put("work/.KORVANTHEMIX/strange.prt.xml", "<object version='9.9'/>");
  std::filesystem::create_directory("work/.KORVANTHEMIX/bad.prt.xml");
  Put("response.xml", CheckOut("work", {"bad", "same", "strange"}));
  const Ran dry = Lrd({"record", "response.xml", "--config", "config.xml", "--json", "--dry-run"});
  const Ran ran = Lrd({"record", "response.xml", "--config", "config.xml", "--json"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(json::parse(ran.out), json::parse(R"({
    "records": [{"path": "work/.KORVANTHEMIX/same.prt.xml", "outcome": "written"},
                {"path": "work/.KORVANTHEMIX/strange.prt.xml", "outcome": "written"}],
    "failed": [{"path": "work/.KORVANTHEMIX/bad.prt.xml", "reason": "Is a directory"}],
    "replacedUnknownFormat": [{"path": "work/.KORVANTHEMIX/strange.prt.xml", "version": "9.9"}],
    "totals": {"written": 2, "alreadyTheSame": 0, "failed": 1, "replacedUnknownFormat": 1}})"));
  EXPECT_EQ(dry.out, ran.out);
  EXPECT_EQ(dry.err, ran.err);
  std::filesystem::remove("work/.KORVANTHEMIX/bad.prt.xml");
  const Ran again = Lrd({"record", "response.xml", "--config", "config.xml", "--json"});
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(json::parse(again.out)["totals"],
            json::parse(R"({"written": 1, "alreadyTheSame": 2, "failed": 0, "replacedUnknownFormat": 0})"));
  EXPECT_EQ(Lrd({"record", "response.xml", "--config", "config.xml", "--json", "-0"}).status, 2);
}

TEST_F(JsonTest, what_recording_prints_is_the_same_text_each_time) {
  Put("work/.KORVANTHEMIX/strange.prt.xml", "<object version='9.9'/>");
  std::filesystem::create_directory("work/.KORVANTHEMIX/bad.prt.xml");
  Put("response.xml", CheckOut("work", {"same"}));
  Lrd({"record", "response.xml", "--config", "config.xml"});
  // The new one behind the strange one takes the place of nothing.
  Put("response.xml", CheckOut("work", {"bad", "same", "strange", "new"}));
  EXPECT_EQ(Lrd({"record", "response.xml", "--config", "config.xml", "--json"}).out, R"({
  "records": [
    {
      "path": "work/.KORVANTHEMIX/new.prt.xml",
      "outcome": "written"
    },
    {
      "path": "work/.KORVANTHEMIX/same.prt.xml",
      "outcome": "already the same"
    },
    {
      "path": "work/.KORVANTHEMIX/strange.prt.xml",
      "outcome": "written"
    }
  ],
  "failed": [
    {
      "path": "work/.KORVANTHEMIX/bad.prt.xml",
      "reason": "Is a directory"
    }
  ],
  "replacedUnknownFormat": [
    {
      "path": "work/.KORVANTHEMIX/strange.prt.xml",
      "version": "9.9"
    }
  ],
  "totals": {
    "written": 2,
    "alreadyTheSame": 1,
    "failed": 1,
    "replacedUnknownFormat": 1
  }
}
)");
}

TEST_F(JsonTest, what_is_shown_is_the_same_text_each_time) {
  PutObject("work", "all.prt.1", "all.prt",
            Record("PH", "1700000000", "<rel id='U'><phid>R</phid><childPhid>CP</childPhid></rel>"));
  Put("work/.KORVANTHEMIX/gone.prt.xml", "<object><phid/><objectChangeStamp/><ceStamp/><hashcode/></object>");
  Put("bad.xml", "<object>");
  const std::string folder = "work/.KORVANTHEMIX/";
  EXPECT_EQ(Lrd({"show", folder + "all.prt.xml", "bad.xml", folder + "gone.prt.xml", "--json"}).out, R"([
  {
    "file": "work/.KORVANTHEMIX/all.prt.xml",
    "class": "QELXVARDOSFullLRDObject_V4",
    "version": "4.0",
    "id": "",
    "phid": "PH",
    "objectChangeStamp": "1700000000",
    "ceStamp": "CE",
    "macroceStamp": "MC",
    "xsStamp": "XS",
    "hashcode": "HC",
    "childPhid": "",
    "children": [
      {
        "class": "QELXVARDOSRelLRDObject_V3",
        "version": "",
        "id": "U",
        "phid": "R",
        "objectChangeStamp": "",
        "ceStamp": "",
        "macroceStamp": "",
        "xsStamp": "",
        "hashcode": "",
        "childPhid": "CP",
        "children": []
      }
    ],
    "objectFile": "work/all.prt.1",
    "objectFileStamp": "1700000000",
    "stampAgrees": true
  },
  {
    "file": "bad.xml",
    "error": "1:9: no element found"
  },
  {
    "file": "work/.KORVANTHEMIX/gone.prt.xml",
    "class": "QELXVARDOSFullLRDObject",
    "version": "",
    "id": "",
    "phid": "",
    "objectChangeStamp": "",
    "ceStamp": "",
    "macroceStamp": "",
    "xsStamp": "",
    "hashcode": "",
    "childPhid": "",
    "children": [],
    "objectFile": null,
    "objectFileStamp": null,
    "stampAgrees": null
  }
]
)");
}

TEST_F(JsonTest, a_check_tells_every_finding_with_its_kind) {
  PutObject("work", "a.prt", "a.prt", Record("PH"));
  PutObject("work", "b.prt", "b.prt", Record("PH"));
  PutObject("work", "c.prt", "c.prt", "<object>");
  Put("work/.KORVANTHEMIX/gone.prt.xml", Record(""));
  const Ran ran = Lrd({"check", "work", "--json"});
  EXPECT_EQ(ran.status, 1);
  const json found = json::parse(ran.out);
  EXPECT_EQ(found["totals"], json::parse(R"({"records": 4, "findings": 3})"));
  EXPECT_EQ(found["findings"][0], json::parse(R"({"file": "work/.KORVANTHEMIX/b.prt.xml", "kind": "samePhysicalId",
    "words": "has the physical id PH of work/.KORVANTHEMIX/a.prt.xml"})"));
  EXPECT_EQ(found["findings"][1]["kind"], "notWellFormed");
  EXPECT_THAT(found["findings"][1]["words"], testing::StartsWith("not well-formed: 1:"));
  EXPECT_EQ(found["findings"][2], json::parse(R"({"file": "work/.KORVANTHEMIX/gone.prt.xml", "kind": "noObjectFile",
    "words": "its object file is gone"})"));
  std::filesystem::remove_all("work");
  std::filesystem::create_directory("work");
  const Ran clean = Lrd({"check", "work", "--json"});
  EXPECT_EQ(clean.status, 0);
  EXPECT_EQ(json::parse(clean.out), json::parse(R"({"findings": [], "totals": {"records": 0, "findings": 0}})"));
}

TEST_F(JsonTest, bytes_that_are_no_utf8_can_be_had_back) {
  const std::string folder = "v\xe4terlich\\\n\u0085\x7f";
  const std::string record = folder + "/.KORVANTHEMIX/a.prt.xml";
  const std::string printed = R"(v\xe4terlich\\\x0a\xc2\x85\x7f)";
  PutObject(folder, "a.prt.1", "a.prt", "<object>");
  const std::string hexadecimal = "76e47465726c6963685c0ac2857f";
  const Ran status = Lrd({"status", folder, "--config", "config.xml", "--json"});
  const json object = json::parse(status.out)["objects"][0];
  EXPECT_EQ(object["path"], printed + "/a.prt.1");
  EXPECT_EQ(object["pathBytes"], hexadecimal + "2f612e7072742e31");
  EXPECT_THAT(std::string(object["damageBytes"]), testing::StartsWith(hexadecimal));
  const json shown = json::parse(Lrd({"show", record, "--json"}).out)[0];
  EXPECT_EQ(shown["file"], printed + "/.KORVANTHEMIX/a.prt.xml");
  EXPECT_THAT(std::string(shown["fileBytes"]), testing::StartsWith(hexadecimal));
  EXPECT_FALSE(shown.contains("errorBytes"));
  EXPECT_TRUE(json::parse(Lrd({"check", folder, "--json"}).out)["findings"][0].contains("fileBytes"));

  // What is UTF-8 is given as it is, and yet steers no terminal.
  const std::string odd = "odd\\\n\u0085\x7f";
  PutObject(odd, "a.prt.1", "a.prt", Record("PH"));
  const Ran plain = Lrd({"status", odd, "--config", "config.xml", "--json"});
  const json facts = json::parse(plain.out)["objects"][0];
  EXPECT_EQ(facts["path"], odd + "/a.prt.1");
  EXPECT_FALSE(facts.contains("pathBytes"));
  EXPECT_THAT(plain.out, HasSubstr(R"("odd\\\n\u0085\u007f/a.prt.1")"));
  EXPECT_THAT(plain.out, Not(HasSubstr("\u0085")));
}

}  // namespace
