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
  const std::vector<std::pair<Verdict, std::vector<std::string>>> cases = {
      {Plain,
       {"<a/>", "\xEF\xBB\xBF" + utf8 + "utf-8\"?>\n<object version=\"4.0\"><phid>P</phid>\n</object>\r\n",
        "<?xml version=\"1.0\"?><a b-.9=\"'>\" _c=\"\"> \"'</a >",
        "<a\n\tb=\"&lt;&gt;&amp;&quot;&apos;&#9;&#10;&#13;\"\n/>", most + "/>", "<a>\t\n</a>",
        "<a>\x7F\xC2\x80\xC2\x9F</a>", "<a b=\"\xF3\xBF\xBF\xBD\">\xF4\x80\x80\x80</a>",
        "<a b=\"\xF4\x8F\xBF\xBD\">\xF0\x90\x80\x80</a>"}},
      {Read,
       {"<?xml version=\"1.0\"?><a b-.9=\"'>\" _c=\"\"> > \"'</a >", most + " b=\"\"/>", "<?xml version='1.0'?><a/>",
        "<?xml version=\"1.0\" standalone=\"yes\"?><a/>", utf8 + "ISO-8859-1\"?><a>\xE4</a>", "<a b='1'/>",
        "<a b =\"1\" c= \"2\"/>", "<a:b/>", "<größe/>", "<a>\r</a>", "<a b=\"\t\n\"/>", "<a>&#65;&#x10FFFF;</a>",
        "<a><![CDATA[<]]></a>", "<!--c--><a/>", "<!DOCTYPE a><a/>", "<?p?><a><?p q?></a><?xmlq?>",
        attribute + "'&lt;&#65;&amp;'>]><a/>", attribute + "'1'><!-- '&e;' --><?p '&e;'?>]><a/>"}},
      // A document type with an entity in a default.
      {Refused,
       {attribute + "'&e;'>]><a/>", attribute + "\"&lt;'&e;\">]><a/>", attribute + "#FIXED '&e;'>]><a b='1'/>",
        attribute + "'&#0;'>]><a/>", attribute + "'<'>]><a/>", attribute + "'&'>]><a/>"}},
      // Processing instructions.
      {Refused,
       {"<a><?p", "<a><?p ?", "<a><?p q></a>", "<a><? p?></a>", "<a><?\?></a>", "<a><?1?></a>", "<a><?p\x01?></a>",
        "<a><?xml version=\"1.0\"?></a>", "<a><?XML?></a>", "\n<?xml version=\"1.0\"?><a/>", "<?xml?><a/>", "<?\?><a/>",
        "<?xml version=\"1.0\"><a/>"}},
      // Characters behind the last plane, or cut off.
      {Refused,
       {"<a>\xF4\x90\x80\x80</a>", "<a>\xF0\x8F\xBF\xBF</a>", "<a>\xF5\x80\x80\x80</a>", "<a>\xF4\x80\x80</a>",
        "<a>\xF4\x80", "<a b=\"\xF4\x80\x80\"/>"}},
      // Control characters, and what is forbidden where a tag could begin.
      {Refused,
       {utf8 + "UTF-8\"?><a>\xE4</a>", "<a>\b</a>", "<a>\v\f</a>", "<a>\x1F</a>", "<a>\001b/></a>", "<a>\377b/></a>",
        "<a b=\"\x1E\"/>", "<a\x0B/>", "<a/>\x0C", "<a/>\0"s, "<a b=\"\0\"/>"s, "<a>&#8;</a>", "<a>&#0;</a>",
        "<a b=\"&#x1F;\"/>"}},
      // Mistakes that the quick way must not overlook.
      {Refused,
       {most + " a31=\"\"/>", utf8 + "UTF-8\"", "<a>]]>b/></a>", "<a>&amp</a>", "<a>&#10</a>", "<a>&nbsp;</a>",
        "<a>]]></a>", "x<a/>", "<a/>x", "<a/><b/>"}},
      {Refused,
       {
           "",
           " ",
           "<a",
           "<a>",
           "<a><b></a></b>",
           "<a></aa>",
           "<aa></a>",
           "<a b=\"1\"c=\"2\"/>",
           "<a b=\"1\" b=\"2\"/>",
           "<a b=\"<\"/>",
           "<a b=\"&\"/>",
           "<a b/>",
           "<a/ >",
           "< a/>",
       }},
  };
  for (const auto& [verdict, texts] : cases) {
    for (const std::string& text : texts) {
      SCOPED_TRACE(text);
      EXPECT_EQ(ZYMDom::PlainRoot(text).has_value(), verdict == Plain);
      const std::string read = Reread(text);
      EXPECT_EQ(read == "refused", verdict == Refused) << QELVARDOSSystemUtils::LastError();
      EXPECT_EQ(Reread(text + "<!---->"), read) << QELVARDOSSystemUtils::LastError();
      EXPECT_TRUE(verdict == Refused || Reread(read) == read);
    }
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
