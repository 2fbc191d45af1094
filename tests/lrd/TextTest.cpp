#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "tests/lrd/LrdTest.h"

namespace {

namespace fs = std::filesystem;

/// What people read, to the last blank.
class TextTest : public LrdTest {
 protected:
  static void PutRecord(const std::string& name, const std::string& bytes) {
    Put("work/.KORVANTHEMIX/" + name + ".xml", bytes);
  }

  /// A folder with one object of each kind, and all that a check can find on a disk that works.
  static void PutOneOfEachKind() {
    PutObject("work", "exists.prt.2", "exists.prt", Record("P1"));
    PutObject("work", "modified.prt.1", "modified.prt", Record("P2"), 1700000061);
    PutObject("work", "damaged.prt.1", "damaged.prt", "<object>");
    PutObject("work", "short.prt.1", "short.prt", "<object version='4.0'><phid/></object>");
    PutObject("work", "strange.prt.1", "strange.prt", "<object version='9.9'/>");
    PutObject("work", "other.prt.1", "other.prt", "<folder/>");
    PutObject("work", "twin.prt.1", "twin.prt", Record("P1", ""));
    Put("work/unknown.prt.1", "cad");
    PutRecord("gone.prt", Record("P3"));
    Put("work/.KORVANTHEMIX/folder.prt.xml/a", "a folder in the place of a record");
    PutRecord("inner/deep.prt", Record("P4"));
    PutRecord("", Record("P5"));
    Put(dead_, "<obj");
    Put(unclaimed_, "<obj");
    Put("work/none/a.prt.1", "cad");
    Put("work/none/.KORVANTHEMIX", "a file in the place of a record folder");
    fs::create_directory("work/sub");
    fs::create_symlink("nothing", "work/sub/.KORVANTHEMIX");
  }

  static inline const std::string dead_ = "work/.KORVANTHEMIX/.~" + std::string(30, '0');
  static inline const std::string unclaimed_ = "work/.KORVANTHEMIX/.~" + std::string(30, 'f');
  static inline const std::string totals_ =
      "9 objects: 1 EXISTS, 2 MODIFIED, 4 UNKNOWN, 2 DAMAGED; 1 record without object file\n";
  /// Of all that status and check tell on standard error.
  static inline const std::string complaints_ =
      "lrd: work/.KORVANTHEMIX/folder.prt.xml: is no regular file\n"
      "lrd: work/none/.KORVANTHEMIX: is no folder\n"
      "lrd: work/sub/.KORVANTHEMIX: is a link to nothing\n";
};

TEST_F(TextTest, status_tells_every_kind_of_object_on_a_line) {
  PutOneOfEachKind();
  const Ran ran = Lrd({"status", "work", "--config", "config.xml"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out,
            "X work/damaged.prt.1: work/.KORVANTHEMIX/damaged.prt.xml: 1:9: no element found\n"
            "E work/exists.prt.2\n"
            "! work/gone.prt\n"
            "M work/modified.prt.1\n"
            "? work/none/a.prt.1\n"
            "? work/other.prt.1\n"
            "X work/short.prt.1: work/.KORVANTHEMIX/short.prt.xml: <object> lacks the element <objectChangeStamp>\n"
            "? work/strange.prt.1\n"
            "M work/twin.prt.1\n"
            "? work/unknown.prt.1\n" +
                totals_);
  EXPECT_EQ(ran.err, complaints_);

  const Ran explained = Lrd({"status", "work", "--config", "config.xml", "--explain"});
  const std::string file = " (file 2023-11-14 22:13:20 UTC)";
  EXPECT_EQ(explained.out,
            "X work/damaged.prt.1: record damaged" + file +
                ": work/.KORVANTHEMIX/damaged.prt.xml: 1:9: no element found\n"
                "E work/exists.prt.2: stamps agree (file 2023-11-14 22:13:20 UTC, record 2023-11-14 22:13:20 UTC, "
                "difference 0 s)\n"
                "! work/gone.prt: object file gone\n"
                "M work/modified.prt.1: file is newer than its record (file 2023-11-14 22:14:21 UTC, record "
                "2023-11-14 22:13:20 UTC, difference 1 min 1 s)\n"
                "? work/none/a.prt.1: no record" +
                file + "\n? work/other.prt.1: record file without a record of a known version" + file +
                "\nX work/short.prt.1: record damaged" + file +
                ": work/.KORVANTHEMIX/short.prt.xml: <object> lacks the element <objectChangeStamp>\n"
                "? work/strange.prt.1: record file without a record of a known version" +
                file + "\nM work/twin.prt.1: record has no stamp" + file + "\n? work/unknown.prt.1: no record" + file +
                "\n" + totals_);
  EXPECT_EQ(explained.err, complaints_);
}

TEST_F(TextTest, a_check_tells_every_finding_in_words) {
  PutOneOfEachKind();
  const Ran ran = Lrd({"check", "work"});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out,
            dead_ + ": left-over temporary file\n" + unclaimed_ +
                ": temporary file; left over, unless somebody writes there now\n"
                "work/.KORVANTHEMIX/folder.prt.xml: is no regular file\n"
                "work/.KORVANTHEMIX/inner/deep.prt.xml: lies in a folder inside the record folder, where no record is "
                "looked for\n"
                "work/.KORVANTHEMIX/.xml: has no name, so it is the record of no object\n"
                "work/.KORVANTHEMIX/damaged.prt.xml: not well-formed: 1:9: no element found\n"
                "work/.KORVANTHEMIX/gone.prt.xml: its object file is gone\n"
                "work/.KORVANTHEMIX/other.prt.xml: holds no record\n"
                "work/.KORVANTHEMIX/short.prt.xml: incomplete: <object> lacks the element <objectChangeStamp>\n"
                "work/.KORVANTHEMIX/strange.prt.xml: unknown format version \"9.9\"\n"
                "work/.KORVANTHEMIX/twin.prt.xml: has the physical id P1 of work/.KORVANTHEMIX/exists.prt.xml\n"
                "work/none/.KORVANTHEMIX: is no folder\n"
                "work/sub/.KORVANTHEMIX: is a link to nothing\n"
                "8 records, 13 findings\n");
  EXPECT_EQ(ran.err, "");
}

TEST_F(TextTest, what_an_incomplete_record_lacks_is_told_with_the_entry_that_lacks_it) {
  const std::string core = "<phid/><objectChangeStamp/><ceStamp/><hashcode/>";
  const auto lacks = [&](const std::string& nested) {
    PutObject("work", "a.prt.1", "a.prt", "<object version='4.0'>" + core + nested + "</object>");
    return Lrd({"check", "work"}).out;
  };
  const auto told = [](const std::string& entry, const std::string& element) {
    return "work/.KORVANTHEMIX/a.prt.xml: incomplete: <" + entry + "> lacks the element <" + element +
           ">\n1 record, 1 finding\n";
  };
  EXPECT_EQ(lacks(""), "1 record, 0 findings\n");
  EXPECT_EQ(lacks("<structure id='s'><phid/><objectChangeStamp/><ceStamp/></structure>"),
            told("structure", "hashcode"));
  EXPECT_EQ(lacks("<structure id='s'>" + core + "</structure><structure id='t'><phid/></structure>"),
            told("structure", "objectChangeStamp"));
  EXPECT_EQ(lacks("<composition id='c'><phid/><objectChangeStamp/><hashcode/></composition>"),
            told("composition", "ceStamp"));
  EXPECT_EQ(lacks("<rel id='r'><childPhid/></rel>"), told("rel", "phid"));
}

TEST_F(TextTest, a_record_folder_stands_for_the_folder_above_it_and_is_no_record) {
  PutObject("work", "a.prt.1", "a.prt", Record("P1"));
  PutObject("work", "b.prt.1", "b.prt", Record("P1"));
  PutObject("work/sub", "c.prt.1", "c.prt", Record("P1"));
  const auto found = [](const std::string& above) {
    const std::string folder = above + "/.KORVANTHEMIX/";
    return folder + "b.prt.xml: has the physical id P1 of " + folder + "a.prt.xml\n2 records, 1 finding\n";
  };
  for (const std::string folder : {"work/.KORVANTHEMIX", "work/.KORVANTHEMIX/", "./work/sub/../.KORVANTHEMIX"}) {
    EXPECT_EQ(Lrd({"check", folder}).out, found("work")) << folder;
    const Ran shown = Lrd({"show", folder});
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(shown.out, "");
    EXPECT_EQ(shown.err, "lrd: " + folder + ": Is a directory\n");
  }
  fs::current_path("work/.KORVANTHEMIX");
  EXPECT_EQ(Lrd({"check", "."}).out, found(".."));
  EXPECT_EQ(Lrd({"show", "."}).err, "lrd: .: Is a directory\n");
  EXPECT_THAT(Lrd({"show", "a.prt.xml"}).out, testing::HasSubstr("\n  object file        ../a.prt.1, "));
}

TEST_F(TextTest, a_record_is_shown_with_all_its_values_and_with_those_of_its_entries) {
  PutObject("work", "all.prt.1", "all.prt",
            Record("PH", "1700000000",
                   "<rel id='U'><phid>R</phid><childPhid>CP</childPhid></rel><structure id='s'><phid>SP</phid>"
                   "<objectChangeStamp>1700000001</objectChangeStamp><ceStamp>SCE</ceStamp><macroceStamp>SMC"
                   "</macroceStamp><xsStamp>SXS</xsStamp><hashcode>SHC</hashcode></structure><composition id='c'>"
                   "<phid>CPH</phid><objectChangeStamp>yesterday</objectChangeStamp><ceStamp>CCE</ceStamp>"
                   "<macroceStamp>CMC</macroceStamp><xsStamp>CXS</xsStamp><hashcode>CHC</hashcode>"
                   "<rel id='V'><phid>R2</phid></rel></composition>"),
            1699913600);
  PutRecord("gone.prt", "<object><phid/><objectChangeStamp/><ceStamp/><hashcode/></object>");
  const Ran ran = Lrd({"show", "work/.KORVANTHEMIX/all.prt.xml", "work/.KORVANTHEMIX/gone.prt.xml"});
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.err, "");
  EXPECT_EQ(ran.out,
            "work/.KORVANTHEMIX/all.prt.xml\n"
            "  class              QELXVARDOSFullLRDObject_V4\n"
            "  version            4.0\n"
            "  phid               PH\n"
            "  objectChangeStamp  1700000000 (2023-11-14 22:13:20 UTC)\n"
            "  ceStamp            CE\n"
            "  macroceStamp       MC\n"
            "  xsStamp            XS\n"
            "  hashcode           HC\n"
            "  object file        work/all.prt.1, 2023-11-13 22:13:20 UTC, 1 d older than the record says\n"
            "\n"
            "    class              QELXVARDOSRelLRDObject_V3\n"
            "    id                 U\n"
            "    phid               R\n"
            "    childPhid          CP\n"
            "\n"
            "    class              QELXVARDOSChildLRDObject_V4\n"
            "    id                 s\n"
            "    phid               SP\n"
            "    objectChangeStamp  1700000001 (2023-11-14 22:13:21 UTC)\n"
            "    ceStamp            SCE\n"
            "    macroceStamp       SMC\n"
            "    xsStamp            SXS\n"
            "    hashcode           SHC\n"
            "\n"
            "    class              QELXVARDOSCompositionLRDObject_V4\n"
            "    id                 c\n"
            "    phid               CPH\n"
            "    objectChangeStamp  yesterday\n"
            "    ceStamp            CCE\n"
            "    macroceStamp       CMC\n"
            "    xsStamp            CXS\n"
            "    hashcode           CHC\n"
            "\n"
            "      class              QELXVARDOSRelLRDObject_V3\n"
            "      id                 V\n"
            "      phid               R2\n"
            "\n"
            "work/.KORVANTHEMIX/gone.prt.xml\n"
            "  class              QELXVARDOSFullLRDObject\n"
            "  version            -\n"
            "  phid               -\n"
            "  objectChangeStamp  -\n"
            "  ceStamp            -\n"
            "  hashcode           -\n"
            "  object file        gone, or the record lies in no record folder\n");
}

}  // namespace
