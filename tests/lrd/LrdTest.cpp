#include "tests/lrd/LrdTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "platform/QELVARDOSFileTransaction.h"

namespace {

namespace fs = std::filesystem;

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST_F(LrdTest, HelpAndVersionArePrinted) {
  EXPECT_THAT(Lrd({"--version"}).out, StartsWith("lrd "));
  for (const std::string command : {"recognize", "record", "show", "status", "check"}) {
    EXPECT_THAT(Lrd({"--help"}).out, HasSubstr(command));
    const Ran help = Lrd({command, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("Usage: lrd " + command));
    EXPECT_EQ(help.err, "");
  }
  EXPECT_THAT(Lrd({"status", "--help"}).out, AllOf(HasSubstr("stamps agree"), HasSubstr("object file gone")));
}

TEST_F(LrdTest, WrongUseIsNamedAndExitsWithTwo) {
  Put("request.xml", Request(""));
  Put("checkin.xml", R"(<response cname="checkinEx"><info/></response>)");
  Put("checkout.xml", R"(<response cname="checkoutEx"><info/></response>)");
  const std::vector<std::pair<Arguments, std::string>> uses = {
      {{}, "subcommand"},
      {{"launch"}, "launch"},
      {{"recognize", "request.xml"}, "--config"},
      {{"recognize", "--config", "config.xml"}, "REQUEST"},
      {{"recognize", "request.xml", "--config", "config.xml", "--fast"}, "--fast"},
      {{"recognize", "request.xml", "--trace", "t", "--config", "config.xml"}, "--trace"},
      {{"--trace", "no/such/folder", "recognize", "request.xml", "--config", "config.xml"}, "no/such/folder"},
      {{"recognize", "absent.xml", "--config", "config.xml"}, "absent.xml"},
      {{"recognize", ".", "--config", "config.xml"}, "."},
      {{"recognize", "request.xml", "--config", "absent.xml"}, "absent.xml"},
      {{"record", "checkin.xml", "--config", "config.xml"}, "--request"},
      {{"record", "checkout.xml", "--config", "config.xml", "--request", "request.xml"}, "--request"},
      {{"status", "nowhere", "--config", "config.xml"}, "nowhere"},
      {{"status", "", "--config", "config.xml"}, "the name of a folder is empty"},
      {{"check", ".", ""}, "the name of a folder is empty"},
      {{"check", "config.xml"}, "config.xml"},
      {{"show"}, "RECORD"},
      {{"--jobs", "0", "check", "."}, "--jobs"},
      {{"--jobs", "many", "check", "."}, "--jobs"},
  };
  const auto before = State();
  for (const auto& [arguments, word] : uses) {
    const Ran ran = Lrd(arguments);
    EXPECT_EQ(ran.status, 2) << word;
    EXPECT_THAT(ran.err, AllOf(StartsWith("lrd: "), HasSubstr(word)));
    EXPECT_EQ(ran.out, "");
  }
  EXPECT_EQ(State(), before);
}

TEST_F(LrdTest, RequestsThatAreNoXmlAreRefusedWithTheirPlace) {
  const std::vector<std::pair<std::string, std::string>> inputs = {
      {"<command><cadobjectlist>", "bad.xml:1:"},
      {"", "bad.xml:1:"},
      {"not XML\n", "bad.xml:1:"},
      {"<command>\n  <a></b>\n</command>", "bad.xml:2:"},
      {"<!DOCTYPE command [<!ENTITY e \"text\">]>\n<command>&e;</command>", "bad.xml:1:"},
      {"<command>\n\xff\xfe</command>", "bad.xml:2:"},
      {"<?xml version=\"1.0\" encoding=\"UTF-16\"?><command/>", "bad.xml:1:"},
      {"<command/><command/>", "bad.xml:1:"},
  };
  Put("out.xml", "as it was");
  for (const auto& [bytes, place] : inputs) {
    Put("bad.xml", bytes);
    const auto before = State();
    const Ran ran = Lrd({"recognize", "bad.xml", "--config", "config.xml", "-o", "out.xml"});
    EXPECT_EQ(ran.status, 2) << bytes;
    EXPECT_THAT(ran.err, StartsWith("lrd: " + place)) << bytes;
    EXPECT_EQ(State(), before) << bytes;
  }
}

TEST_F(LrdTest, ConfigurationsAreTakenStrictly) {
  const std::vector<std::pair<std::string, std::string>> refused = {
      {"<config cad='CREO'/>", "<config>"},
      {"<configuration/>", "\"cad\""},
      {"<configuration cad='CREO' colour='blue'/>", "\"colour\""},
      {"<configuration cad='a > \"b\"' colour='blue'/>", "\"colour\""},
      {"<configuration cad='CREO'><kind name='part'/></configuration>", "<kind>"},
      {"<configuration cad='CREO'><type/></configuration>", "\"name\""},
      {"<configuration cad='CREO'><type name='part'><sub/></type></configuration>", "<sub>"},
      {"<configuration cad='CREO'><type name='part' command='x'/></configuration>", "\"command\""},
      {"<configuration cad='CREO'><relationship name='of' identifier='x'/></configuration>", "\"identifier\""},
      {"<configuration cad='CREO'><type name='part'/><type name='part'/></configuration>", "part"},
      {"<configuration cad='CREO'><withoutrecords/></configuration>", "\"command\""},
      {"<configuration cad='CREO'>\n<type", "config.xml:2:"},
  };
  Put("request.xml", Request(""));
  for (const auto& [text, word] : refused) {
    Put("config.xml", text);
    const Ran ran = Lrd({"recognize", "request.xml", "--config", "config.xml"});
    EXPECT_EQ(ran.status, 2) << text;
    EXPECT_THAT(ran.err, AllOf(StartsWith("lrd: config.xml:"), HasSubstr(word))) << text;
  }
  Put("config.xml",
      "<configuration cad='CREO'><!-- a name may be both --><type name='part' classes=' A  B '/>"
      "<relationship name='part'/><withoutrecords command='x'/><withoutrecords command='x'/></configuration>");
  EXPECT_EQ(Lrd({"recognize", "request.xml", "--config", "config.xml"}).status, 0);
}

TEST_F(LrdTest, OutputThatCannotBeLeftIsRefusedBeforeTheModuleIsAsked) {
  Put("request.xml", Request("<cadobject cadid='1' filename='a.prt.1' dirname='work'/>"));
  fs::create_directory("folder");
  for (const std::string out : {"no/such/out.xml", "config.xml/out.xml", "folder"}) {
    const Ran ran = Lrd({"--trace", "trace", "recognize", "request.xml", "--config", "config.xml", "-o", out});
    EXPECT_EQ(ran.status, 2) << out;
    EXPECT_THAT(ran.err, AllOf(StartsWith("lrd: "), HasSubstr(out)));
    EXPECT_EQ(Slurp("trace"), "");
  }
}

TEST_F(LrdTest, OddButGoodRequestsComeThrough) {
  const std::string text = Request("");
  std::string utf16 = "\xff\xfe";
  for (const char c : text) {
    utf16 += {c, '\0'};
  }
  Put("utf16.xml", utf16);
  Put("doctype.xml", "<!DOCTYPE command SYSTEM 'command.dtd'>" + text);
  for (const std::string request : {"utf16.xml", "doctype.xml"}) {
    const Ran ran = Lrd({"recognize", request, "--config", "config.xml", "--summary", "-o", "-"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_THAT(ran.out, AllOf(StartsWith(R"(<?xml version="1.0" encoding="UTF-8"?>)"), HasSubstr("<cadobjectlist/>")));
    EXPECT_EQ(ran.err, "0 objects: 0 EXISTS, 0 MODIFIED, 0 UNKNOWN\n");
  }
  constexpr int Depth = 100000;
  std::string deep;
  for (int i = 0; i < Depth; ++i) {
    deep += "<a>";
  }
  for (int i = 0; i < Depth; ++i) {
    deep += "</a>";
  }
  Put("deep.xml", "<command>" + deep + "</command>");
  const Ran ran = Lrd({"recognize", "deep.xml", "--config", "config.xml"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_GT(ran.out.size(), 6U * Depth);
}

TEST_F(LrdTest, RecognizeCanReplaceItsInputAndSumsUp) {
  PutObject("work", "same.prt.2", "same.prt", Record("PH-1"));
  PutObject("work", "other.prt.1", "other.prt", Record("PH-2"), 1700000001);
  Put("request.xml", Request("<cadobject cadid='1' filename='same.prt.2' dirname='work'/>"
                             "<cadobject cadid='2' filename='other.prt.1' dirname='work'/>"
                             "<cadobject cadid='3' filename='new.prt.1' dirname='work'/>"));
  const Ran ran = Lrd({"recognize", "request.xml", "--config", "config.xml", "-o", "request.xml", "--summary"});
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.out, "");
  EXPECT_EQ(ran.err, "3 objects: 1 EXISTS, 1 MODIFIED, 1 UNKNOWN\n");
  EXPECT_THAT(Slurp("request.xml"), HasSubstr(R"(status="MODIFIED" phid="PH-2")"));
}

TEST_F(LrdTest, ACommandThatTheConfigurationListsIsRecognisedWithoutRecords) {
  PutObject("work", "a.prt.1", "a.prt", Record("PH-1"));
  Put("request.xml", Request("<cadobject cadid='1' filename='a.prt.1' dirname='work'/>"));
  Put("config.xml",
      "<configuration cad='CREO'><withoutrecords command='fast'/><withoutrecords command='quick'/></configuration>");
  const auto recognized = [this](const std::string& command) {
    return Lrd({"recognize", "request.xml", "--config", "config.xml", "--command", command}).out;
  };
  EXPECT_THAT(recognized("slow"), AllOf(HasSubstr(R"(status="EXISTS")"), HasSubstr(R"(hashcodefromlrd="HC")")));
  for (const std::string command : {"fast", "quick"}) {
    EXPECT_THAT(recognized(command), AllOf(HasSubstr(R"(status="UNKNOWN")"), Not(HasSubstr("hashcodefromlrd"))));
  }
}

TEST_F(LrdTest, TheClassesAndIdentifiersOfAConfigurationDecideWhatIsRecorded) {
  Put("config.xml",
      "<configuration cad='CREO' identifier='filename'>"
      "<type name='item' identifier='name' classes='TYPE_FAMILY_ITEM_LIKE TYPE_OBJECT_WITHOUT_FILE'/>"
      "<type name='preview' classes='TYPE_VISUALIZATION_LIKE'/>"
      "<relationship name='shows' classes='REL_VISUALIZATION_LIKE'/></configuration>");
  const auto object = [](const std::string& name, const std::string& attributes) {
    return "<cadobject cadid='" + name + "' phid='PH-" + name + "' dirname='work' selected='true' " + attributes + "/>";
  };
  Put("response.xml",
      "<response cname='checkoutEx'><info><cadobjectlist>" + object("asm", "type='part' filename='asm.prt.1'") +
          object("item", "type='item' name='ITEM'") + object("p", "type='preview' filename='p.jpg'") +
          object("shown", "type='part' filename='shown.prt.2'") +
          "</cadobjectlist><relationshiplist><relationship rid='1' reluuid='U1' topnode='dpt'/>"
          "<relationship rid='2' reluuid='U2' topnode='dpt' cadrelationship='shows'/></relationshiplist>"
          "<structure><cadobject cadid='asm'><cadobject cadid='item'><relationship rid='1'/></cadobject>"
          "<cadobject cadid='shown'><relationship rid='2'/></cadobject></cadobject></structure></info></response>");
  EXPECT_EQ(Lrd({"record", "response.xml", "--config", "config.xml"}).out,
            "work/.KORVANTHEMIX/asm.prt.xml\nwork/.KORVANTHEMIX/shown.prt.xml\n");
  EXPECT_THAT(Slurp("work/.KORVANTHEMIX/asm.prt.xml"),
              AllOf(HasSubstr(R"(<rel id="U1">)"), HasSubstr(R"(<structure id="ITEM"><phid>PH-item</phid>)"),
                    Not(HasSubstr("U2")), Not(HasSubstr("PH-shown"))));
}

TEST_F(LrdTest, RecognizeSaysWhenThereIsNothingToRecognise) {
  Put("request.xml", "<command cname='synclocalrecognition'><cadobjects/></command>");
  const Ran ran = Lrd({"recognize", "request.xml", "--config", "config.xml"});
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.err, "lrd: request.xml: has no list of objects (<cadobjectlist>)\n");
}

TEST_F(LrdTest, RecognizeNamesTheRecordThatStopsIt) {
  PutObject("work", "good.prt.1", "good.prt", Record("PH-1"));
  PutObject("work", "bad.prt.1", "bad.prt", "<object>\n<phid>");
  PutObject("work", "short.prt.1", "short.prt", "<object version='4.0'><phid>PH</phid></object>");
  const std::string good = "<cadobject cadid='1' filename='good.prt.1' dirname='work'/>";
  Put("damaged.xml", Request(good + "<cadobject cadid='2' filename='bad.prt.1' dirname='work'/>"));
  Put("lacking.xml", Request(good + "<cadobject cadid='2' filename='short.prt.1' dirname='work'/>"));

  const Ran damaged = Lrd({"recognize", "damaged.xml", "--config", "config.xml", "-o", "out.xml", "--summary"});
  EXPECT_EQ(damaged.status, 1);
  EXPECT_THAT(damaged.err, StartsWith("lrd: Recognize: 0x80004005 (work/.KORVANTHEMIX/bad.prt.xml:2:"));
  EXPECT_THAT(damaged.err, HasSubstr("\n2 objects: 1 EXISTS, 0 MODIFIED, 1 UNKNOWN\n"));
  EXPECT_THAT(Slurp("out.xml"), HasSubstr("EXISTS"));

  const Ran lacking = Lrd({"recognize", "lacking.xml", "--config", "config.xml"});
  EXPECT_EQ(lacking.status, 3);
  EXPECT_EQ(lacking.out, "");
  EXPECT_THAT(lacking.err, AllOf(StartsWith("lrd: recognising lacking.xml"),
                                 HasSubstr("work/.KORVANTHEMIX/short.prt.xml"), HasSubstr("a null handle of ")));
}

TEST_F(LrdTest, TraceGoesWhereItIsSent) {
  Put("request.xml", Request(""));
  EXPECT_EQ(Lrd({"--trace", "trace", "recognize", "request.xml", "--config", "config.xml", "-o", "out.xml"}).out, "");
  EXPECT_THAT(Slurp("trace"), HasSubstr("QELXVARDOSRecognitionHandler::Recognize\n"));
  EXPECT_EQ(Lrd({"--trace", "-", "recognize", "request.xml", "--config", "config.xml", "-o", "out.xml"}).out,
            Slurp("trace"));
}

TEST_F(LrdTest, APipeClosedEarlyEndsQuietly) {
  std::string objects;
  for (int i = 0; i < 5000; ++i) {
    const std::string name = "part" + std::to_string(i) + ".prt";
    objects += "<cadobject cadid='" + std::to_string(i) + "' filename='" + name + "' dirname='work'/>";
  }
  PutObject("work", "a.prt.1", "a.prt", Record("PH-1"));
  Put("request.xml", Request(objects));
  for (const Arguments& arguments :
       {Arguments{"recognize", "request.xml", "--config", "config.xml"},
        Arguments{"status", "work", "--config", "config.xml"},
        Arguments{"show", "work/.KORVANTHEMIX/a.prt.xml", "--json"}, Arguments{"check", "work"}}) {
    const Ran ran = LrdUnread(arguments);
    EXPECT_EQ(ran.status, 0) << arguments.front() << ran.err;
    EXPECT_EQ(ran.err, "") << arguments.front();
  }
}

TEST_F(LrdTest, ADryRunSaysWhatRecordingDoes) {
  Put("work/new.prt.1", "cad");
  PutObject("work", "old.prt.1", "old.prt", Record("PH"));
  Put("response.xml", CheckOut("work", {"old", "new"}));
  Put("elsewhere.xml", CheckOut("far/away", {"one", "two"}));
  for (const std::string response : {"response.xml", "elsewhere.xml"}) {
    const auto before = State();
    const Ran dry = Lrd({"record", response, "--config", "config.xml", "--dry-run"});
    EXPECT_EQ(dry.status, 0) << dry.err;
    EXPECT_EQ(State(), before);
    EXPECT_EQ(Lrd({"record", response, "--config", "config.xml"}).out, dry.out);
    EXPECT_NE(State(), before);
    const auto after = State();
    // Records that hold the same bytes already are named as well, and left alone.
    EXPECT_EQ(Lrd({"record", response, "--config", "config.xml"}).out, dry.out);
    EXPECT_EQ(State(), after);
  }
  EXPECT_EQ(Lrd({"record", "response.xml", "--config", "config.xml"}).out,
            "work/.KORVANTHEMIX/new.prt.xml\nwork/.KORVANTHEMIX/old.prt.xml\n");
}

TEST_F(LrdTest, RecordsThatCannotBeWrittenAreNamedAlsoInADryRun) {
  Put("work/.KORVANTHEMIX/good.prt.xml", "old");
  fs::create_directory("work/.KORVANTHEMIX/bad.prt.xml");
  Put("blocked/.KORVANTHEMIX", "a file where the folder should be");
  Put("file", "a file where a folder above it should be");
  const std::string longName(256, 'n');
  std::string response = CheckOut("work", {"bad", "good"});
  const auto objectIn = [](const std::string& folder) {
    return "<cadobject cadid='" + folder + "' phid='PH' type='part' selected='true' filename='b.prt.1' dirname='" +
           folder + "'/>";
  };
  for (const std::string& folder : {std::string("blocked"), std::string("file/sub"), longName}) {
    response.insert(response.find("<cadobject "), objectIn(folder));
  }
  Put("response.xml", response);
  const Ran dry = Lrd({"record", "response.xml", "--config", "config.xml", "--dry-run"});
  const Ran real = Lrd({"record", "response.xml", "--config", "config.xml"});
  EXPECT_EQ(real.status, 1);
  EXPECT_EQ(real.out, "work/.KORVANTHEMIX/good.prt.xml\n");
  const std::string record = "/.KORVANTHEMIX/b.prt.xml: its folder could not be made: ";
  EXPECT_EQ(real.err, "lrd: blocked" + record + "File exists\nlrd: file/sub" + record +
                          "Not a directory\nlrd: " + longName + record +
                          "File name too long\nlrd: work/.KORVANTHEMIX/bad.prt.xml: Is a directory\n");
  EXPECT_EQ(dry.status, 1);
  EXPECT_EQ(dry.out, real.out);
  EXPECT_EQ(dry.err, real.err);
}

TEST_F(LrdTest, OnlyResponsesAreRecorded) {
  Put("request.xml", Request(""));
  Put("details.xml", "<response cname='cadobjdetails'><info/></response>");
  const Ran request = Lrd({"record", "request.xml", "--config", "config.xml"});
  EXPECT_EQ(request.status, 1);
  EXPECT_THAT(request.err, AllOf(StartsWith("lrd: "), HasSubstr("synclocalrecognition")));
  const Ran details = Lrd({"record", "details.xml", "--config", "config.xml"});
  EXPECT_EQ(details.status, 1);
  EXPECT_THAT(details.err, StartsWith("lrd: CreateOrUpdateLRD: 0x80004001"));
}

TEST_F(LrdTest, ShowComparesARecordWithTheNewestFileBesideIt) {
  const std::string nested =
      "<structure id='inner'><phid>PH-IN</phid><objectChangeStamp/><ceStamp/><hashcode/></structure>";
  Put("work/part.prt.9", "cad", 1700000000);
  PutObject("work", "part.prt.10", "part.prt", Record("PH&#10;[1m", "1700000000", nested), 1700003661);
  PutObject("work", "gone.prt.1", "gone.prt", Record("PH-GONE"));
  fs::remove("work/gone.prt.1");
  const std::string part = "work/.KORVANTHEMIX/part.prt.xml";
  const std::string gone = "work/.KORVANTHEMIX/gone.prt.xml";

  const Ran text = Lrd({"show", part});
  EXPECT_EQ(text.status, 0);
  EXPECT_THAT(text.out, AllOf(HasSubstr("1700000000 (2023-11-14 22:13:20 UTC)"),
                              HasSubstr("work/part.prt.10, 2023-11-14 23:14:21 UTC, 1 h 1 min 1 s newer"),
                              HasSubstr("\n    id                 inner\n"), HasSubstr("PH\\x0a[1m")));

  Put("bad.xml", "<object>");
  Put("strange.xml", "<object version='9.9'/>");
  Put("short.xml", "<object version='4.0'><phid/><objectChangeStamp/><hashcode/></object>");
  const Ran both = Lrd({"show", part, "bad.xml", "strange.xml", "short.xml", "absent.xml", gone, "--json"});
  EXPECT_EQ(both.status, 1);
  const json shown = json::parse(both.out);
  ASSERT_EQ(shown.size(), 6U);
  EXPECT_EQ(shown[0]["objectFile"], "work/part.prt.10");
  EXPECT_EQ(shown[0]["stampAgrees"], false);
  EXPECT_EQ(shown[0]["children"][0]["phid"], "PH-IN");
  EXPECT_EQ(shown[5]["phid"], "PH-GONE");
  EXPECT_TRUE(shown[5]["objectFile"].is_null());
  EXPECT_THAT(both.err,
              AllOf(HasSubstr("lrd: bad.xml: 1:"), HasSubstr("lrd: strange.xml: unknown format version \"9.9\""),
                    HasSubstr("lrd: short.xml: <object> lacks the element <ceStamp>"), HasSubstr("lrd: absent.xml: ")));
}

class StatusTest : public LrdTest {
 protected:
  StatusTest() {
    PutObject("work", "same.prt.10", "same.prt", Record("PH-1"));
    Put("work/same.prt.9", "old version", 1);
    PutObject("work", "newer.prt.1", "newer.prt", Record("PH-2"), 1700000061);
    PutObject("work/sub", "older.prt", "older.prt", Record("PH-3"), 1699913600);
    PutObject("work/sub", "stampless.prt", "stampless.prt", Record("PH-4", ""));
    Put("work/new.prt.1", "cad");
    Put("work/.hidden", "no object");
    Put("work/.git/object", "no object");
    Put("work/.KORVANTHEMIX/gone.prt.xml", Record("PH-5"));
    fs::create_directory_symlink("..", "work/sub/loop");
  }
};

TEST_F(StatusTest, ListsEveryObjectOnceAndSorted) {
  const Ran ran = Lrd({"status", "work/sub", "work", "./work/", "--config", "config.xml"});
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.err, "");
  EXPECT_EQ(ran.out,
            "! work/gone.prt\n"
            "? work/new.prt.1\n"
            "M work/newer.prt.1\n"
            "E work/same.prt.10\n"
            "M work/sub/older.prt\n"
            "M work/sub/stampless.prt\n"
            "5 objects: 1 EXISTS, 3 MODIFIED, 1 UNKNOWN, 0 DAMAGED; 1 record without object file\n");
  fs::current_path("work");
  EXPECT_THAT(Lrd({"status", ".", "--config", "../config.xml"}).out, HasSubstr("E same.prt.10\n"));
  fs::current_path("..");
  Put("config.xml", "<configuration cad='OTHER'/>");
  EXPECT_THAT(
      Lrd({"status", "work", "--config", "config.xml"}).out,
      AllOf(HasSubstr("? work/same.prt.9\n"), HasSubstr("? work/same.prt.10\n"), HasSubstr("! work/same.prt\n")));
}

TEST_F(LrdTest, OfTheVersionsOfAFileTheNewestCounts) {
  for (const std::string file : {"a.prt.1", "a.prt.2", "b.prt.9", "b.prt.10", "c.prt.007", "c.prt.8", "d.prt",
                                 "d.prt.1", "e.prt.19", "e.prt.20", "e.prt.3"}) {
    Put("versions/" + file, "cad");
  }
  EXPECT_THAT(Lrd({"status", "versions", "--config", "config.xml"}).out,
              StartsWith("? versions/a.prt.2\n? versions/b.prt.10\n? versions/c.prt.8\n? versions/d.prt.1\n"
                         "? versions/e.prt.20\n5 objects"));
}

std::string Response(const std::string& objects) {
  return "<response cname='checkoutEx'><info><cadobjectlist>" + objects + "</cadobjectlist></info></response>";
}

TEST_F(LrdTest, ManyFoldersTakeFewDescriptors) {
  constexpr int Count = 60;
  std::string objects;
  std::string record;
  for (int number = 0; number < Count; ++number) {
    const std::string folder = "work/" + std::to_string(number);
    PutObject(folder, "a.prt.1", "a.prt", record);
    objects += "<cadobject cadid='" + std::to_string(number) +
               "' filename='a.prt.1' selected='true' type='part' dirname='" + folder + "'/>";
    if (record.empty()) {
      Put("response.xml", Response(objects));
      Lrd({"record", "response.xml", "--config", "config.xml"});
      record = Slurp(folder + "/.KORVANTHEMIX/a.prt.xml");
    }
  }
  Put("request.xml", Request(objects));
  Put("response.xml", Response(objects));
  std::string jobs;
  const auto run = [&](const Arguments& arguments) {
    Arguments limited{"/bin/sh", "-c", "ulimit -n 24; exec \"$@\"", "sh", LRD_PROGRAM, "--jobs", jobs};
    limited.insert(limited.end(), arguments.begin(), arguments.end());
    const Ran ran = Run(limited);
    EXPECT_EQ(ran.status, 0) << arguments.front() << ran.err;
    return ran.out + ran.err;
  };
  for (const char* at : {"1", "16"}) {
    jobs = at;
    EXPECT_THAT(run({"status", "work", "--config", "config.xml"}), HasSubstr("\n60 objects: 60 EXISTS, "));
    EXPECT_EQ(run({"check", "work"}), "60 records, 0 findings\n");
    EXPECT_THAT(run({"recognize", "request.xml", "--config", "config.xml", "--summary"}), HasSubstr(": 60 EXISTS, "));
    const std::string recorded = run({"record", "response.xml", "--config", "config.xml"});
    EXPECT_EQ(std::count(recorded.begin(), recorded.end(), '\n'), Count) << "all of it is there already";
    for (int number = 0; number < Count; ++number) {
      fs::remove_all("work/" + std::to_string(number) + "/.KORVANTHEMIX");
    }
    EXPECT_EQ(run({"record", "response.xml", "--config", "config.xml"}), recorded) << "all of it is new";
  }
}

TEST_F(StatusTest, AFolderIsListedOnceWhateverItsSpelling) {
  fs::create_directory_symlink("work/sub", "link");
  fs::create_directory_symlink("work/sub/.KORVANTHEMIX", "records");
  const std::string sub =
      "M work/sub/older.prt\nM work/sub/stampless.prt\n"
      "2 objects: 0 EXISTS, 2 MODIFIED, 0 UNKNOWN, 0 DAMAGED; 0 records without object file\n";
  const std::string absolute = fs::absolute("work/sub");
  const auto status = [](Arguments folders) {
    folders.insert(folders.begin(), "status");
    folders.insert(folders.end(), {"--config", "../config.xml"});
    return folders;
  };
  fs::copy_file("config.xml", "../config.xml", fs::copy_options::overwrite_existing);
  EXPECT_EQ(Lrd(status({"work/sub", "./work/sub/", "work/../work/sub", absolute, "link", "work/sub/."})).out, sub);
  EXPECT_EQ(Lrd(status({"work/sub", "work/sub/.KORVANTHEMIX", "work/sub/.KORVANTHEMIX/", "records"})).out, sub);
  EXPECT_EQ(Lrd(status({"work/sub/.KORVANTHEMIX", "work/sub"})).out, sub);
  // A record folder stands for the folder above it, without those below.
  EXPECT_THAT(Lrd(status({"work/.KORVANTHEMIX"})).out, HasSubstr("\n3 objects: 1 EXISTS, 1 MODIFIED, 1 UNKNOWN"));
  EXPECT_THAT(Lrd(status({absolute, "work"})).out, HasSubstr("\n5 objects: 1 EXISTS, 3 MODIFIED, 1 UNKNOWN"));
  EXPECT_THAT(Lrd(status({"records", "work"})).out, HasSubstr("\n5 objects: 1 EXISTS, 3 MODIFIED, 1 UNKNOWN"));
  // Where a link is followed back it does not lead to where it stands.
  EXPECT_THAT(Lrd(status({"link/.."})).out, HasSubstr("\n5 objects: 1 EXISTS, 3 MODIFIED, 1 UNKNOWN"));
  fs::current_path("work/sub/.KORVANTHEMIX");
  EXPECT_THAT(Lrd({"status", ".", "--config", "../../../config.xml"}).out, StartsWith("M ../older.prt\n"));
  fs::current_path("../../..");
}

TEST_F(StatusTest, StampsAtTheEndsOfTheirRangeAreToldApart) {
  PutObject("ends", "first.prt", "first.prt", Record("PH-1", "-9223372036854775808"));
  PutObject("ends", "last.prt", "last.prt", Record("PH-2", "9223372036854775807"));
  const Ran status = Lrd({"status", "ends", "--config", "config.xml", "--explain"});
  EXPECT_EQ(status.out,
            "M ends/first.prt: file is newer than its record (file 2023-11-14 22:13:20 UTC, "
            "record -9223372036854775808 s, difference 106751991186976 d 13 h 43 min 28 s)\n"
            "M ends/last.prt: file is older than its record (file 2023-11-14 22:13:20 UTC, "
            "record 9223372036854775807 s, difference 106751991147624 d 17 h 16 min 47 s)\n"
            "2 objects: 0 EXISTS, 2 MODIFIED, 0 UNKNOWN, 0 DAMAGED; 0 records without object file\n");
  EXPECT_THAT(Lrd({"show", "ends/.KORVANTHEMIX/first.prt.xml", "ends/.KORVANTHEMIX/last.prt.xml"}).out,
              AllOf(HasSubstr("106751991186976 d 13 h 43 min 28 s newer than the record says"),
                    HasSubstr("106751991147624 d 17 h 16 min 47 s older than the record says")));
  EXPECT_THAT(Lrd({"show", "work/sub/.KORVANTHEMIX/stampless.prt.xml"}).out,
              HasSubstr(" UTC, the record has no stamp\n"));
  const json facts = json::parse(Lrd({"status", "ends", "--config", "config.xml", "--json"}).out);
  EXPECT_FALSE(facts["objects"][0].contains("difference")) << "no such number holds it";
  EXPECT_EQ(facts["objects"][1]["difference"], 1700000000 - 9223372036854775807);
}

TEST_F(StatusTest, ExplainsEveryVerdict) {
  PutObject("work", "odd.prt", "odd.prt", "<object version='9.9'/>");
  PutObject("work", "word.prt", "word.prt", Record("PH-6", "yesterday"));
  EXPECT_EQ(Lrd({"status", "work", "--config", "config.xml", "--explain"}).out,
            "! work/gone.prt: object file gone\n"
            "? work/new.prt.1: no record (file 2023-11-14 22:13:20 UTC)\n"
            "M work/newer.prt.1: file is newer than its record (file 2023-11-14 22:14:21 UTC, "
            "record 2023-11-14 22:13:20 UTC, difference 1 min 1 s)\n"
            "? work/odd.prt: record file without a record of a known version (file 2023-11-14 22:13:20 UTC)\n"
            "E work/same.prt.10: stamps agree (file 2023-11-14 22:13:20 UTC, record 2023-11-14 22:13:20 UTC, "
            "difference 0 s)\n"
            "M work/sub/older.prt: file is older than its record (file 2023-11-13 22:13:20 UTC, "
            "record 2023-11-14 22:13:20 UTC, difference 1 d)\n"
            "M work/sub/stampless.prt: record has no stamp (file 2023-11-14 22:13:20 UTC)\n"
            "M work/word.prt: record has a stamp that is no time (file 2023-11-14 22:13:20 UTC)\n"
            "7 objects: 1 EXISTS, 4 MODIFIED, 2 UNKNOWN, 0 DAMAGED; 1 record without object file\n");
  const json facts = json::parse(Lrd({"status", "work", "--config", "config.xml", "--json"}).out);
  EXPECT_EQ(facts["totals"]["MODIFIED"], 4);
  EXPECT_EQ(facts["objects"][2]["path"], "work/newer.prt.1");
  EXPECT_EQ(facts["objects"][2]["letter"], "M");
  EXPECT_EQ(facts["objects"][2]["difference"], 61);
}

TEST_F(StatusTest, ADamagedRecordCostsItsObjectAlone) {
  PutObject("work", "a.prt.1", "a.prt", "<object>");
  PutObject("work", "m.prt.1", "m.prt", "<object version='4.0'><phid/></object>");
  PutObject("work/sub", "z.prt.1", "z.prt", "");
  const Ran ran = Lrd({"status", "work", "--config", "config.xml"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_THAT(ran.out, AllOf(StartsWith("X work/a.prt.1: work/.KORVANTHEMIX/a.prt.xml: 1:"),
                             HasSubstr("X work/m.prt.1: work/.KORVANTHEMIX/m.prt.xml: <object> lacks the element "
                                       "<objectChangeStamp>\n"),
                             HasSubstr("M work/newer.prt.1\nE work/same.prt.10\n"), HasSubstr("X work/sub/z.prt.1: "),
                             HasSubstr("8 objects: 1 EXISTS, 3 MODIFIED, 1 UNKNOWN, 3 DAMAGED")));
}

TEST_F(LrdTest, StatusBearsDamageEverywhere) {
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "part" + std::to_string(i) + ".prt";
    PutObject("work", name, name, i % 3 == 0 ? Record("PH") : i % 3 == 1 ? "<object>" : "<object/>");
  }
  EXPECT_THAT(Lrd({"status", "work", "--config", "config.xml"}).out,
              HasSubstr("\n3000 objects: 1000 EXISTS, 0 MODIFIED, 0 UNKNOWN, 2000 DAMAGED; 0 records"));
}

TEST_F(LrdTest, CheckReportsEveryFaultOnALineOfItsOwn) {
  PutObject("work", "first.prt.1", "first.prt", Record("PH-1"));
  PutObject("work/sub", "good.prt.1", "good.prt", Record("PH-2"));
  EXPECT_EQ(Lrd({"check", "work"}).status, 0);
  EXPECT_EQ(Lrd({"check", "work"}).out, "2 records, 0 findings\n");

  PutObject("work/sub", "twin.prt.1", "twin.prt", Record("PH-1"));
  PutObject("work", "cut.prt.1", "cut.prt", "<object>\n<phid>");
  PutObject("work", "short.prt.1", "short.prt", "<object><phid/><objectChangeStamp/><ceStamp/></object>");
  PutObject("work", "strange.prt.1", "strange.prt", "<object version='9.9'/>");
  Put("work/.KORVANTHEMIX/gone.prt.xml", Record("PH-3"));
  const std::string temporary = ".~" + std::string(30, '0');
  ASSERT_TRUE(QELVARDOSFileTransaction::IsTemporaryName(temporary));
  Put("work/.KORVANTHEMIX/" + temporary, "<obj");
  // Two records of objects that the server does not know have no physical id in common.
  PutObject("work", "new1.prt", "new1.prt", Record(""));
  PutObject("work", "new2.prt", "new2.prt", Record(""));
  const Ran ran = Lrd({"check", "work"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_THAT(ran.out,
              AllOf(HasSubstr("work/.KORVANTHEMIX/cut.prt.xml: not well-formed: 2:"),
                    HasSubstr("work/.KORVANTHEMIX/" + temporary + ": left-over temporary file\n"),
                    HasSubstr("work/.KORVANTHEMIX/gone.prt.xml: its object file is gone\n"),
                    HasSubstr("work/.KORVANTHEMIX/short.prt.xml: incomplete: <object> lacks the element <hashcode>\n"),
                    HasSubstr("work/.KORVANTHEMIX/strange.prt.xml: unknown format version \"9.9\"\n"),
                    HasSubstr("work/sub/.KORVANTHEMIX/twin.prt.xml: has the physical id PH-1 of "
                              "work/.KORVANTHEMIX/first.prt.xml\n"),
                    HasSubstr("\n9 records, 6 findings\n")));
}

}  // namespace
