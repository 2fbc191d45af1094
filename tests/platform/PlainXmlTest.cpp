#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/dom/PlainXml.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/Trees.h"

using namespace std::string_literals;

namespace {

class PlainXmlTest : public ModuleTest {};

enum class Verdict { Plain, Read, Refused };

/// Whether our builder reads it, and then its text.
std::string Reread(const std::string& text) {
  const OneFile disk(text);
  ZYMIDOMDocument_var document;
  if (FAILED(OwnBuilder()->Parse("it", {}, {}, document))) {
    return "refused";
  }
  ZYMIDOMElement_var root;
  document->getDocumentElement(root);
  return Text(root);
}

/// Each unit of the text, which is ASCII, in two bytes; without a mark.
std::string Utf16(const std::string& ascii, bool bigEndian = false) {
  std::string text;
  for (const char c : ascii) {
    text += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
  }
  return text;
}

// A comment behind the root element makes a text go the way of texts that are not plain, and changes nothing else.
TEST_F(PlainXmlTest, a_text_gets_one_verdict_whichever_parser_sees_it_and_the_quick_way_is_taken_where_it_may_be) {
  using enum Verdict;
  const std::string attribute = "<!DOCTYPE a SYSTEM 'x' [<!ATTLIST a b CDATA ";
  const std::string utf8 = "<?xml version=\"1.0\" encoding=\"";
  std::string most = "<a";
  for (int number = 0; number < 32; ++number) {
    most += " a" + std::to_string(number) + "=\"\"";
  }
  const std::vector<std::pair<std::string, Verdict>> cases = {
      {"<a/>", Plain},
      {"\xEF\xBB\xBF" + utf8 + "utf-8\"?>\n<object version=\"4.0\"><phid>P</phid>\n</object>\r\n", Plain},
      {"<?xml version=\"1.0\"?><a b-.9=\"'>\" _c=\"\"> > \"'</a >", Read},
      {"<?xml version=\"1.0\"?><a b-.9=\"'>\" _c=\"\"> \"'</a >", Plain},
      {"<a\n\tb=\"&lt;&gt;&amp;&quot;&apos;&#9;&#10;&#13;\"\n/>", Plain},
      {most + "/>", Plain},
      {most + " b=\"\"/>", Read},
      {most + " a31=\"\"/>", Refused},
      // What only the other parser knows.
      {"<?xml version='1.0'?><a/>", Read},
      {"<?xml version=\"1.0\" standalone=\"yes\"?><a/>", Read},
      {utf8 + "ISO-8859-1\"?><a>\xE4</a>", Read},
      {utf8 + "UTF-8\"?><a>\xE4</a>", Refused},
      {"<a b='1'/>", Read},
      {"<a b =\"1\" c= \"2\"/>", Read},
      {"<a:b/>", Read},
      {"<größe/>", Read},
      {"<a>\r</a>", Read},
      {"<a b=\"\t\n\"/>", Read},
      {"<a>&#65;&#x10FFFF;</a>", Read},
      {"<a><![CDATA[<]]></a>", Read},
      {"<!--c--><a/>", Read},
      {"<!DOCTYPE a><a/>", Read},
      // Processing instructions.
      {"<?p?><a><?p q?></a><?xmlq?>", Read},
      {"<a><?p", Refused},
      {"<a><?p ?", Refused},
      {"<a><?p q></a>", Refused},
      {"<a><? p?></a>", Refused},
      {"<a><?"
       "?></a>",
       Refused},
      {"<a><?1?></a>", Refused},
      {"<a><?p\x01?></a>", Refused},
      {"<a><?xml version=\"1.0\"?></a>", Refused},
      {"<a><?XML?></a>", Refused},
      {"\n<?xml version=\"1.0\"?><a/>", Refused},
      {"<?xml?><a/>", Refused},
      {"<?"
       "?><a/>",
       Refused},
      {"<?xml version=\"1.0\"><a/>", Refused},
      {utf8 + "UTF-8\"", Refused},
      // Control characters.
      {"<a>\t\n</a>", Plain},
      {"<a>\x7F\xC2\x80\xC2\x9F</a>", Plain},
      {"<a>\b</a>", Refused},
      {"<a>\v\f</a>", Refused},
      {"<a>\x1F</a>", Refused},
      // What is forbidden stands where a tag could begin.
      {"<a>\x01"
       "b/></a>",
       Refused},
      {"<a>\xFF"
       "b/></a>",
       Refused},
      {"<a>]]>b/></a>", Refused},
      {"<a b=\"\x1E\"/>", Refused},
      {"<a\x0B/>", Refused},
      {"<a/>\x0C", Refused},
      {"<a/>\0"s, Refused},
      {"<a b=\"\0\"/>"s, Refused},
      {"<a>&#8;</a>", Refused},
      {"<a>&#0;</a>", Refused},
      {"<a b=\"&#x1F;\"/>", Refused},
      // Entities in the defaults of a document type.
      {attribute + "'&lt;&#65;&amp;'>]><a/>", Read},
      {attribute + "'&e;'>]><a/>", Refused},
      {attribute + "\"&lt;'&e;\">]><a/>", Refused},
      {attribute + "#FIXED '&e;'>]><a b='1'/>", Refused},
      {attribute + "'&#0;'>]><a/>", Refused},
      {attribute + "'<'>]><a/>", Refused},
      {attribute + "'&'>]><a/>", Refused},
      {attribute + "'1'><!-- '&e;' --><?p '&e;'?>]><a/>", Read},
      // Characters of the last planes.
      {"<a b=\"\xF3\xBF\xBF\xBD\">\xF4\x80\x80\x80</a>", Plain},
      {"<a b=\"\xF4\x8F\xBF\xBD\">\xF0\x90\x80\x80</a>", Plain},
      {"<a>\xF4\x90\x80\x80</a>", Refused},
      {"<a>\xF0\x8F\xBF\xBF</a>", Refused},
      {"<a>\xF5\x80\x80\x80</a>", Refused},
      {"<a>\xF4\x80\x80</a>", Refused},
      {"<a>\xF4\x80", Refused},
      {"<a b=\"\xF4\x80\x80\"/>", Refused},
      // Mistakes that the quick way must not overlook.
      {"", Refused},
      {" ", Refused},
      {"<a", Refused},
      {"<a>", Refused},
      {"<a><b></a></b>", Refused},
      {"<a></aa>", Refused},
      {"<aa></a>", Refused},
      {"<a b=\"1\"c=\"2\"/>", Refused},
      {"<a b=\"1\" b=\"2\"/>", Refused},
      {"<a b=\"<\"/>", Refused},
      {"<a b=\"&\"/>", Refused},
      {"<a b/>", Refused},
      {"<a/ >", Refused},
      {"< a/>", Refused},
      {"<a/><b/>", Refused},
      {"<a/>x", Refused},
      {"x<a/>", Refused},
      {"<a>&amp</a>", Refused},
      {"<a>&#10</a>", Refused},
      {"<a>&nbsp;</a>", Refused},
      {"<a>]]></a>", Refused},
  };
  for (const auto& [text, verdict] : cases) {
    EXPECT_EQ(ZYMDom::PlainRoot(text).has_value(), verdict == Plain) << text;
    const std::string read = Reread(text);
    EXPECT_EQ(read == "refused", verdict == Refused) << text << "\n" << QELVARDOSSystemUtils::LastError();
    EXPECT_EQ(Reread(text + "<!---->"), read) << text << "\n" << QELVARDOSSystemUtils::LastError();
    EXPECT_TRUE(verdict == Refused || Reread(read) == read) << read;
  }
}

TEST_F(PlainXmlTest, utf_16_that_is_cut_off_is_refused_wherever_it_ends) {
  for (const bool bigEndian : {false, true}) {
    const std::string high = bigEndian ? "\xDB\xC0" : "\xC0\xDB";
    const std::string low = bigEndian ? "\xDC\x01"s : "\x01\xDC"s;
    const std::string before = (bigEndian ? "\xFE\xFF" : "\xFF\xFE") + Utf16("<a b=\"", bigEndian);
    const std::string end = Utf16("\"/>", bigEndian);
    const std::string text = std::string(before).append(high).append(low).append(end);
    EXPECT_EQ(Reread(text), "<a b=\"\xF4\x80\x80\x81\"/>");
    for (std::size_t length = 0; length < text.size(); ++length) {
      EXPECT_EQ(Reread(text.substr(0, length)), "refused") << length;
    }
    EXPECT_EQ(Reread(text + "\n"), "refused") << "half a character behind the root";
    const std::string x = Utf16("x", bigEndian);
    EXPECT_EQ(Reread(std::string(before).append(high).append(x).append(end)), "refused");
    EXPECT_EQ(Reread(std::string(before).append(low).append(x).append(end)), "refused");
  }
}

}  // namespace
