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
  for (const auto& [path, refused] :
       std::vector<std::pair<std::string, bool>>{{"", false},
                                                 {"../cad/../part.xml", false},
                                                 {"/cad/../.KORVANTHEMIX/part.xml", false},
                                                 {".KORVANTHEMIX/..", true},
                                                 {"/cad/.KORVANTHEMIX", false},
                                                 {"/a/.KORVANTHEMIX/b/../.KORVANTHEMIX/part.xml", true},
                                                 {"/cad/.korvanthemix/../part.xml", false},
                                                 {"/cad/.KORVANTHEMIX2/../part.xml", false},
                                                 {"/cad\\.KORVANTHEMIX\\..\\part.xml", false},
                                                 {"/cad/.KORVANTHEMIX./../part.xml", false}}) {
    EXPECT_EQ(QELVARDOSNameRules::PosixPath(path, Folder) == Refusal::OtherFolder, refused) << path;
  }
}

TEST(NameRules, on_windows_whatever_the_system_takes_for_another_place_leads_out) {
  for (const auto& [name, refusal] :
       std::vector<std::pair<std::string, Refusal>>{{"..", Refusal::OtherFolder},
                                                    {"..\\part.xml", Refusal::OtherFolder},
                                                    {"a/..\\part.xml", Refusal::OtherFolder},
                                                    {".. \\part.xml", Refusal::OtherFolder},
                                                    {". .", Refusal::OtherFolder},
                                                    {"...", Refusal::OtherFolder},
                                                    {"./part.xml", Refusal::OtherFolder},
                                                    {"C:part.xml", Refusal::Drive},
                                                    {"a\\c:\\part.xml", Refusal::Drive},
                                                    {"part.prt:hidden.xml", Refusal::Stream},
                                                    {":part.xml", Refusal::Stream},
                                                    {"ab:c", Refusal::Stream},
                                                    {"1:part.xml", Refusal::Stream},
                                                    {"@:a", Refusal::Stream},
                                                    {"[:a", Refusal::Stream},
                                                    {"{:a", Refusal::Stream},
                                                    {"z:a", Refusal::Drive},
                                                    {"nul", Refusal::Device},
                                                    {"Con.prt.xml", Refusal::Device},
                                                    {"nul .xml", Refusal::Device},
                                                    {"a/AUX", Refusal::Device},
                                                    {"prn..xml", Refusal::Device},
                                                    {"com1.xml", Refusal::Device},
                                                    {"LPT9", Refusal::Device},
                                                    {"COM¹.xml", Refusal::Device},
                                                    {"lpt³", Refusal::Device},
                                                    {"CONIN$", Refusal::Device},
                                                    {"conout$.xml", Refusal::Device},
                                                    {"part.xml.", Refusal::Ending},
                                                    {"part.xml ", Refusal::Ending},
                                                    {"folder./part.xml", Refusal::Ending},
                                                    {" ", Refusal::Ending},
                                                    {"a\tb.xml", Refusal::ForbiddenCharacter},
                                                    {std::string("a\0.xml", 6), Refusal::ForbiddenCharacter},
                                                    {"a<b", Refusal::ForbiddenCharacter},
                                                    {"a?.xml", Refusal::ForbiddenCharacter},
                                                    {"*", Refusal::ForbiddenCharacter},
                                                    {"\"a\"", Refusal::ForbiddenCharacter},
                                                    {"a|b>", Refusal::ForbiddenCharacter}}) {
    EXPECT_EQ(QELVARDOSNameRules::WindowsName(name), refusal) << name;
    EXPECT_EQ(QELVARDOSNameRules::WindowsPath("C:\\cad\\.Korvanthemix\\" + name, Folder), refusal) << name;
    EXPECT_FALSE(QELVARDOSNameRules::Reason(refusal).empty());
  }
  for (const std::string name :
       {"part.prt.xml", "", "..xml", "a..b.xml", ".hidden", "a/b\\c.xml", "\\part.xml", " a.xml", "null.xml", "com.xml",
        "com0.xml", "com10", "com⁴", "conin", "xnul.xml", "a.nul", "lpt", "ä.xml", "a;b,c'd&e.xml"}) {
    EXPECT_EQ(QELVARDOSNameRules::WindowsName(name), Refusal::None) << name;
    EXPECT_EQ(QELVARDOSNameRules::WindowsPath(Records + name, Folder), Refusal::None) << name;
  }
  for (const auto& [path, refused] :
       std::vector<std::pair<std::string, bool>>{{"", false},
                                                 {"C:\\cad\\..\\con\\.KORVANTHEMIX\\part.xml", false},
                                                 {"\\\\?\\C:\\cad\\.KORVANTHEMIX\\part.xml", false},
                                                 {"C:\\cad\\other\\..\\part.xml", false},
                                                 {"C:.KORVANTHEMIX\\..\\part.xml", true},
                                                 {"C:/cad/.korvanthemix. /../part.xml", true},
                                                 {".KORVANTHEMIX\\a\\..\\..\\part.xml", true}}) {
    EXPECT_EQ(QELVARDOSNameRules::WindowsPath(path, Folder) == Refusal::OtherFolder, refused) << path;
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
