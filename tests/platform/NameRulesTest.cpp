#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/QELVARDOSNameRules.h"

namespace {

using QELVARDOSNameRules::Refusal;

constexpr std::string_view Folder = ".KORVANTHEMIX";
const std::string Records = "/cad/.KORVANTHEMIX/";

TEST(NameRules, on_posix_systems_a_component_of_two_dots_alone_leads_out) {
  for (const std::string name : {"..", "../part.xml", "a/../../part.xml", "a//..", "/..", "../", "x/..xml/.."}) {
    EXPECT_EQ(QELVARDOSNameRules::PosixName(name), Refusal::OtherFolder) << name;
    EXPECT_EQ(QELVARDOSNameRules::PosixPath(Records + name, Folder), Refusal::OtherFolder) << name;
  }
  for (const std::string name : {"part.prt.xml", "", ".", "...", "..xml", "a..", "a/b.xml", "..\\part.xml", "C:\\x.xml",
                                 "a:b", "nul.xml", "a ", ".. ", "a\nb", "a?b*", "/etc/part.xml", "ä.xml"}) {
    EXPECT_EQ(QELVARDOSNameRules::PosixName(name), Refusal::None) << name;
    EXPECT_EQ(QELVARDOSNameRules::PosixPath(Records + name, Folder), Refusal::None) << name;
  }
  for (const std::string path : {".KORVANTHEMIX/..", "/a/.KORVANTHEMIX/b/../.KORVANTHEMIX/part.xml"}) {
    EXPECT_EQ(QELVARDOSNameRules::PosixPath(path, Folder), Refusal::OtherFolder) << path;
  }
  for (const std::string path : {"", "../cad/../part.xml", "/cad/../.KORVANTHEMIX/part.xml", "/cad/.KORVANTHEMIX",
                                 "/cad/.korvanthemix/../part.xml", "/cad/.KORVANTHEMIX2/../part.xml",
                                 "/cad\\.KORVANTHEMIX\\..\\part.xml", "/cad/.KORVANTHEMIX./../part.xml"}) {
    EXPECT_NE(QELVARDOSNameRules::PosixPath(path, Folder), Refusal::OtherFolder) << path;
  }
}

TEST(NameRules, on_windows_whatever_the_system_takes_for_another_place_leads_out) {
  const std::vector<std::pair<Refusal, std::vector<std::string>>> refused = {
      {Refusal::OtherFolder, {"..", "..\\part.xml", "a/..\\part.xml", ".. \\part.xml", ". .", "...", "./part.xml"}},
      {Refusal::Drive, {"C:part.xml", "a\\c:\\part.xml", "z:a"}},
      {Refusal::Stream, {"part.prt:hidden.xml", ":part.xml", "ab:c", "1:part.xml", "@:a", "[:a", "{:a"}},
      {Refusal::Device,
       {"nul", "Con.prt.xml", "nul .xml", "a/AUX", "prn..xml", "com1.xml", "LPT9", "COM¹.xml", "lpt³", "CONIN$",
        "conout$.xml"}},
      {Refusal::Ending, {"part.xml.", "part.xml ", "folder./part.xml", " "}},
      {Refusal::ForbiddenCharacter, {"a\tb.xml", std::string("a\0.xml", 6), "a<b", "a?.xml", "*", "\"a\"", "a|b>"}},
  };
  for (const auto& [refusal, names] : refused) {
    for (const std::string& name : names) {
      EXPECT_EQ(QELVARDOSNameRules::WindowsName(name), refusal) << name;
      EXPECT_EQ(QELVARDOSNameRules::WindowsPath("C:\\cad\\.Korvanthemix\\" + name, Folder), refusal) << name;
    }
    EXPECT_FALSE(QELVARDOSNameRules::Reason(refusal).empty());
  }
  for (const std::string name :
       {"part.prt.xml", "", "..xml", "a..b.xml", ".hidden", "a/b\\c.xml", "\\part.xml", " a.xml", "null.xml", "com.xml",
        "com0.xml", "com10", "com⁴", "conin", "xnul.xml", "a.nul", "lpt", "ä.xml", "a;b,c'd&e.xml"}) {
    EXPECT_EQ(QELVARDOSNameRules::WindowsName(name), Refusal::None) << name;
    EXPECT_EQ(QELVARDOSNameRules::WindowsPath(Records + name, Folder), Refusal::None) << name;
  }
  for (const std::string path :
       {"C:.KORVANTHEMIX\\..\\part.xml", "C:/cad/.korvanthemix. /../part.xml", ".KORVANTHEMIX\\a\\..\\..\\part.xml"}) {
    EXPECT_EQ(QELVARDOSNameRules::WindowsPath(path, Folder), Refusal::OtherFolder) << path;
  }
  for (const std::string path : {"", "C:\\cad\\..\\con\\.KORVANTHEMIX\\part.xml",
                                 "\\\\?\\C:\\cad\\.KORVANTHEMIX\\part.xml", "C:\\cad\\other\\..\\part.xml"}) {
    EXPECT_NE(QELVARDOSNameRules::WindowsPath(path, Folder), Refusal::OtherFolder) << path;
  }
}

TEST(NameRules, this_system_has_the_rules_of_its_family) {
#ifdef _WIN32
  EXPECT_EQ(QELVARDOSNameRules::Name("nul"), Refusal::Device);
#else
  EXPECT_EQ(QELVARDOSNameRules::Name("nul"), Refusal::None);
#endif
  EXPECT_EQ(QELVARDOSNameRules::Path(Records + "../part.xml", Folder), Refusal::OtherFolder);
  EXPECT_TRUE(QELVARDOSNameRules::Reason(Refusal::None).empty());
}

}  // namespace
