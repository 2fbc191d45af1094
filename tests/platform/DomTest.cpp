#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMIDOM.h"
#include "tests/support/FailingDom.h"
#include "tests/support/ModuleTest.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/Trees.h"

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

constexpr const char* Declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

class DomTest : public ModuleTest {
 protected:
  void SetUp() override { ASSERT_EQ(CreateZYMIXMLDOMDocumentBuilder(builder_), S_OK); }

  ZYMIDOMDocument_var Parse(const std::string& text) {
    const OneFile disk(text);
    ZYMIDOMDocument_var document;
    const HRESULT status = builder_->Parse("it", {"ZYMDoValidation"}, {"false"}, document);
    EXPECT_EQ(FAILED(status), document.IsNull());
    return document;
  }
  std::string Error(const std::string& text) {
    return Parse(text).IsNull() ? QELVARDOSSystemUtils::LastError() : "accepted";
  }
  std::string Reread(const std::string& text) {
    const ZYMIDOMDocument_var document = Parse(text);
    return document.IsNull() ? QELVARDOSSystemUtils::LastError() : Text(document);
  }
  ZYMIDOMDocument_var NewDocument() {
    ZYMIDOMDocument_var document;
    EXPECT_EQ(builder_->CreateDocument(document), S_OK);
    return document;
  }

  ZYMIXMLDOMDocumentBuilder_var builder_;
};

ZYMIDOMElement_var Root(const ZYMIDOMDocument_var& document) {
  ZYMIDOMElement_var root;
  EXPECT_EQ(document->getDocumentElement(root), S_OK);
  return root;
}

ZYMIDOMElement_var Element(const ZYMIDOMDocument_var& document, const char* name) {
  ZYMIDOMElement_var element;
  EXPECT_EQ(document->createElement(name, element), S_OK);
  return element;
}

ZYMIDOMText_var TextNode(const ZYMIDOMDocument_var& document, const std::string& value) {
  ZYMIDOMText_var text;
  EXPECT_EQ(document->createTextNode(value, text), S_OK);
  return text;
}

HRESULT Append(const ZYMIDOMNode_var& parent, const ZYMIDOMNode_var& child) {
  ZYMIDOMNode_var appended;
  const HRESULT status = parent->appendChild(child, appended);
  EXPECT_EQ(appended, SUCCEEDED(status) ? child : nullptr);
  return status;
}

template <typename Owner>
ZYMIDOMNodeList_var AllTagged(const Owner& owner, const char* name) {
  ZYMIDOMNodeList_var list;
  EXPECT_EQ(owner->getElementsByTagName(name, list), S_OK);
  return list;
}

ZYMIDOMNodeList_var Children(const ZYMIDOMNode_var& node) {
  ZYMIDOMNodeList_var list;
  EXPECT_EQ(node->getChildNodes(list), S_OK);
  return list;
}

ZYMIDOMNode_var Item(const ZYMIDOMNodeList_var& list, int index) {
  ZYMIDOMNode_var node;
  EXPECT_EQ(list->item(index, node), S_OK);
  return node;
}

int Length(const ZYMIDOMNodeList_var& list) {
  int length = -1;
  EXPECT_EQ(list->getLength(length), S_OK);
  return length;
}

std::string Attribute(const ZYMIDOMElement_var& element, const char* name) {
  ZYMUnicodeString value("as it was");
  EXPECT_EQ(element->getAttribute(name, value), S_OK);
  return value.Str();
}

std::string Name(const ZYMIDOMNode_var& node) {
  ZYMUnicodeString name;
  EXPECT_EQ(node->getNodeName(name), S_OK);
  return name.Str();
}

std::string Value(const ZYMIDOMNode_var& node) {
  ZYMUnicodeString value;
  EXPECT_EQ(node->getNodeValue(value), S_OK);
  return value.Str();
}

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int number = 0; number < count; ++number) {
    all += text;
  }
  return all;
}

/// "name=value(children)" for every node.
std::string Shape(const ZYMIDOMNode_var& node) {
  std::string shape = Name(node) + (Value(node).empty() ? "" : "=" + Value(node));
  const ZYMIDOMNodeList_var children = Children(node);
  for (int index = 0; index < Length(children); ++index) {
    shape += (index == 0 ? "(" : " ") + Shape(Item(children, index));
  }
  return Length(children) == 0 ? shape : shape + ")";
}

std::string Utf16(const std::string& ascii, bool bigEndian) {
  std::string text = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char c : ascii) {
    text += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
  }
  return text;
}

TEST_F(DomTest, ReadsEveryKindOfNode) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"<a/>", "#document(a)"},
      {"<?xml version='1.0'?>\n<a>\n <b/>\n</a>\n", "#document(a(#text=\n  b #text=\n))"},
      {"<a>1 &lt; 2 &#x26;&#38;<![CDATA[<&]]></a>", "#document(a(#text=1 < 2 && #cdata-section=<&))"},
      {"<a><![CDATA[]]>\r\n<!--c--><?p q r?></a>", "#document(a(#cdata-section #text=\n #comment=c p=q r))"},
      {"<?p?><!--c--><x:a/><!--d-->", "#document(p #comment=c x:a #comment=d)"},
      {"<!DOCTYPE a SYSTEM 'no&such;' [<!--&c;--><?p &q;?><!ELEMENT a ANY>]><a/>", "#document(a a)"},
      {"<größe>ä</größe>", "#document(größe(#text=ä))"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", "#document(a(#text=ä))"},
      {Utf16("<a><b/></a>", true), "#document(a(b))"},
      {Utf16("<!DOCTYPE a [<!--c-->]><a>b</a>", false), "#document(a a(#text=b))"},
      {"<?p q\r\nr\rs?>\r\n<a>\r\n<!--\r\n\r--><![CDATA[\r\n\r]]>&#13;\r<?p?></a>",
       "#document(p=q\nr\ns a(#text=\n #comment=\n\n #cdata-section=\n\n #text=\r\n p))"},
      {"<!DOCTYPE a\r\n[<!--\"'>\r--><?p '?>\n<!ATTLIST a b CDATA '>]' >] "
       "><a><![CDATA[<!DOCTYPE]]><![CDATA[<!ENTITY]]></a>",
       "#document(a a(#cdata-section=<!DOCTYPE #cdata-section=<!ENTITY))"},
      {"\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", "#document(a(#text=ä))"},
      {"\n\0<\0a\0/\0>\0"s, "#document(a)"},
      {"\xFF\xFE<\0a\0>\0\x3D\xD8\x29\xDD<\0/\0a\0>\0"s, "#document(a(#text=🔩))"},
  };
  for (const auto& [text, shape] : cases) {
    const ZYMIDOMDocument_var document = Parse(text);
    ASSERT_FALSE(document.IsNull()) << text << QELVARDOSSystemUtils::LastError();
    EXPECT_EQ(Shape(document), shape);
    const std::string written = Text(document);
    EXPECT_EQ(Reread(Declaration + written), written);
  }
}

TEST_F(DomTest, RefusesWhatIsNotWellFormedAndSaysWhere) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"", "it:1:1: no element found"},
      {"<a>\n <b></a>", "it:2:7: mismatched tag"},
      {"<a", "it:1:1: unclosed token"},
      {"<a/><b/>", "it:1:5: junk after document element"},
      {"text<a/>", "it:1:5: not well-formed (invalid token)"},
      {"<a b=\"1\" c=\"2\" b=\"3\"/>", "it:1:16: duplicate attribute"},
      {"<a>]]></a>", "it:1:6: not well-formed (invalid token)"},
      {"<a>&nbsp;</a>", "it:1:4: undefined entity"},
      {"<a>&#1;</a>", "it:1:4: reference to invalid character number"},
      {"<a>\xEF\xBF\xBF</a>", "it:1:4: not well-formed (invalid token)"},
      {"<a>\xED\xA0\x80</a>", "it:1:4: not well-formed (invalid token)"},
      {"<a>\xC0\x80</a>", "it:1:4: not well-formed (invalid token)"},
      {"\xFF\xFE<\0a\0>\0\n\0\x3D\xD8<\0/\0a\0>\0"s, "it:2:1: not well-formed (invalid token)"},
      {"<?xml version='1.0' encoding='x-none'?><a/>", "it:1:31: unknown encoding"},
      {"<!DOCTYPE a [\n <!ENTITY e 'x'>]><a>&e;</a>", "it:2:2: entity declarations are not allowed"},
      {"<!DOCTYPE a [<!ENTITY lt '&#38;#60;'>]><a/>", "it:1:14: entity declarations are not allowed"},
      {"<!DOCTYPE a [<!ENTITY % p SYSTEM 'x'>]><a/>", "it:1:14: entity declarations are not allowed"},
      {"<!DOCTYPE a [%p; <!ENTITY e 'x'>]><a/>", "it:1:14: undefined entity"},
      {Utf16("<!DOCTYPE a [\n<!ENTITY e 'x'>]><a/>", false), "it:2:1: entity declarations are not allowed"},
      {"<!DOCTYPE a SYSTEM 'x'><a>&e;</a>", "it:1:27: undefined entity"},
      {"<!DOCTYPE a SYSTEM 'x'><a b='&lt;&e;'/>", "it:1:24: undefined entity"},
      {"<!DOCTYPE a SYSTEM 'x' [<!ATTLIST a b CDATA '&e;'>]><a/>", "it:1:52: undefined entity"},
  };
  for (const auto& [text, error] : cases) {
    EXPECT_EQ(Error(text), error) << text;
  }
}

TEST_F(DomTest, what_a_document_type_declares_shapes_white_space_and_adds_nothing) {
  const std::string type =
      "<!DOCTYPE a [<!ATTLIST a t NMTOKENS #IMPLIED c CDATA #IMPLIED d CDATA '" + std::string(1 << 20, 'x') + "'>]>";
  const ZYMIDOMDocument_var document =
      Parse(type + "<a t=' \n1\t 2&#32;' c=' \n1\t &#10;&#13;&lt;&amp;&quot;'><a t='\r\n3'/>" + Repeated("<a/>", 1000) +
            "</a>");
  ASSERT_FALSE(document.IsNull());
  const ZYMIDOMElement_var root = Root(document);
  const ZYMIDOMElement_var child = Item(Children(root), 0);
  EXPECT_EQ(Attribute(root, "t") + "|" + Attribute(root, "c"), "1 2|  1  \n\r<&\"");
  EXPECT_EQ(Attribute(child, "t"), "3");
  bool present = true;
  EXPECT_EQ(child->hasAttribute("d", present), S_OK);
  EXPECT_FALSE(present);
  EXPECT_EQ(Length(Children(root)), 1001);
}

TEST_F(DomTest, declarations_cost_no_more_than_in_proportion_to_the_text) {
  const auto declared = [](int count, const std::string& what) {
    std::string list = "<!DOCTYPE a [<!ATTLIST b ";
    for (int number = 0; number < count; ++number) {
      list += "a" + std::to_string(number) + what;
    }
    return list + ">]><a>";
  };
  const std::string implied = " CDATA #IMPLIED ";
  EXPECT_EQ(Error(declared(1000, implied) + Repeated("<b/>", 1000) + "</a>"), "accepted");
  EXPECT_EQ(Error(declared(10, implied) + Repeated("<b/>", 200'000) + "</a>"), "accepted");
  EXPECT_THAT(Error(declared(1000, implied) + Repeated("<b/>", 100'000) + "</a>"),
              HasSubstr("too many attributes are declared"));
  EXPECT_THAT(Error(declared(10'000, implied) + "</a>"), HasSubstr("too many attributes are declared"));
  EXPECT_EQ(Error(declared(100, " CDATA '' ") + Repeated("<b/>", 10'000) + "</a>"), "accepted");
}

TEST_F(DomTest, tokens_longer_than_any_piece_read_whole) {
  const std::string value(std::size_t{3} << 20U, 'x');
  const std::string behind = "<!---->";
  const std::vector<std::string> texts = {
      "<!--" + value + "--><a/>",         "<a b=\"" + value + "\"/>" + behind,         "<?p " + value + "?><a/>",
      "<a><![CDATA[" + value + "]]></a>", "<!DOCTYPE a [<!--" + value + "-->]>\n<a/>", "<a" + value + "/>" + behind};
  for (const std::string& text : texts) {
    EXPECT_TRUE(Reread(text) == text) << text.substr(0, 20);
  }
  EXPECT_EQ(Error("<a>\n <b c='" + value), "it:2:2: unclosed token");
  EXPECT_EQ(Error("<!--" + value), "it:1:1: unclosed token");
}

std::string Utf8(char16_t c) {
  if (c < 0x80) {
    return {static_cast<char>(c)};
  }
  const auto continuation = [c](unsigned int shift) { return static_cast<char>(0x80U | (c >> shift & 0x3FU)); };
  if (c < 0x800) {
    return {static_cast<char>(0xC0U | c >> 6U), continuation(0)};
  }
  return {static_cast<char>(0xE0U | c >> 12U), continuation(6), continuation(0)};
}

/// A text with one character in several places, by its encoding; empty where the encoding has no such character.
std::vector<std::string> InEveryEncoding(const std::string& before, char16_t c, const std::string& behind) {
  std::vector<std::string> texts = {before + Utf8(c) + behind};
  for (const bool bigEndian : {false, true}) {
    const std::string halves{static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    texts.push_back(Utf16(before, bigEndian) + (bigEndian ? std::string(halves.rbegin(), halves.rend()) : halves) +
                    Utf16(behind, bigEndian).substr(2));
  }
  for (const std::string encoding : {"ISO-8859-1", "US-ASCII"}) {
    if (c < 0x100) {
      std::string& text = texts.emplace_back("<?xml version='1.0' encoding='");
      text.append(encoding).append("'?>").append(before);
      text += static_cast<char>(c);
      text += behind;
    }
  }
  return texts;
}

TEST_F(DomTest, whatever_is_read_can_be_written_and_reads_as_the_same_tree) {
  const std::vector<std::pair<std::string, std::string>> places = {
      {"<", "/>"},
      {"<a", "/>"},
      {"<a ", "=''/>"},
      {"<a a", "=''/>"},
      {"<?", "?><a/>"},
      {"<?a", " b?><a/>"},
      {"<a>", "</a>"},
      {"<a b='", "'/>"},
      {"<!--", "--><a/>"},
      {"<!DOCTYPE a", "><a/>"},
      {"<!DOCTYPE a [<!ELEMENT ", " ANY>]><a/>"},
      {"<!DOCTYPE a [<!ATTLIST a b (c|d", ") #IMPLIED>]><a/>"},
      {"<!DOCTYPE a [<!ATTLIST a b CDATA '", "'><!--c-->]><a/>"},
  };
  // All characters that one byte may stand for, then some of every script.
  for (unsigned int c = 1; c <= 0xFFFF; c += c < 0x100 ? 1 : 499) {
    for (const auto& [before, behind] : places) {
      for (const std::string& text : InEveryEncoding(before, static_cast<char16_t>(c), behind)) {
        if (const ZYMIDOMDocument_var document = Parse(text)) {
          const std::string written = Text(document);
          const ZYMIDOMDocument_var again = Parse(Declaration + written);
          ASSERT_FALSE(again.IsNull()) << before << c << behind << ": " << written;
          ASSERT_EQ(Shape(again), Shape(document));
          ASSERT_EQ(Text(again), written);
        }
      }
    }
  }
}

TEST_F(DomTest, letters_that_names_may_not_hold_are_refused_in_every_encoding) {
  const std::string latin1 = "<?xml version='1.0' encoding='ISO-8859-1'?>";
  const std::string reason = "a name with a letter that names may not hold";
  EXPECT_EQ(Error(latin1 + "\n<a><\xB5/></a>"), "it:2:4: " + reason);
  EXPECT_EQ(Error(latin1 + "<a b\xAA='' c=''/>"), "it:1:44: " + reason);
  EXPECT_EQ(Error(latin1 + "<a><?\xBA?></a>"), "it:1:47: " + reason);
  EXPECT_THAT(Error(latin1 + "<!DOCTYPE a [<!ELEMENT \xB5 ANY>]><a/>"), HasSubstr(reason));
  EXPECT_EQ(Error(latin1 + "<!DOCTYPE a [<!--\xB5--><!ATTLIST a b CDATA '\xAA\xBA'>]><a>\xB5</a>"), "accepted");
}

TEST_F(DomTest, WritesSpecialCharactersSoThatTheyReadBack) {
  const std::string value = " \t\r\n\"'<&>]]> ä 軸 🔩 \x7F ";
  const ZYMIDOMDocument_var document = NewDocument();
  const ZYMIDOMElement_var root = Element(document, "a");
  EXPECT_EQ(root->setAttribute("b", "first"), S_OK);
  EXPECT_EQ(root->setAttribute("b", value), S_OK);
  EXPECT_EQ(Append(root, TextNode(document, value)), S_OK);
  EXPECT_EQ(Append(root, Element(document, "none")), S_OK);
  const ZYMIDOMElement_var empty = Element(document, "empty");
  EXPECT_EQ(Append(empty, TextNode(document, "")), S_OK);
  EXPECT_EQ(Append(root, empty), S_OK);
  EXPECT_EQ(Append(document, root), S_OK);

  const std::string written = Text(document);
  EXPECT_EQ(written,
            "<a b=\" &#9;&#13;&#10;&quot;'&lt;&amp;&gt;]]&gt; ä 軸 🔩 \x7F \"> \t&#13;\n\"'&lt;&amp;&gt;]]&gt; ä 軸 🔩 "
            "\x7F <none/><empty></empty></a>");
  const ZYMIDOMElement_var read = Root(Parse(written));
  EXPECT_EQ(Attribute(read, "b"), value);
  EXPECT_EQ(Value(Item(Children(read), 0)), value);
}

TEST_F(DomTest, WritesWhatStandsBesideTheRoot) {
  const std::string text =
      "<!--c--><?p?><!DOCTYPE a [<!--d-->\n<!ATTLIST a b CDATA \"1\">]>\n<a b=\"1\"><![CDATA[]]]]></a><?q r?>";
  EXPECT_EQ(Reread("\n" + text + "\n"), text);
  EXPECT_EQ(Text(Root(Parse(text))), "<a b=\"1\"><![CDATA[]]]]></a>");
}

TEST_F(DomTest, LeavesTheFileWhenTheTreeCannotBeWritten) {
  const ScratchFolder folder;
  const std::string file = folder.At("file.xml");
  const auto write = [&](const ZYMIDOMNode_var& node) {
    return builder_->Write(node, file, {"ZYMEncoding"}, {"UTF-8"});
  };
  const ZYMIDOMDocument_var good = Parse("<a/>");
  ASSERT_EQ(write(good), S_OK);

  const Rows<4> cases = {
      {"1", "b", "", "\"1\" is no name in XML"},
      {"", "b", "", "\"\" is no name in XML"},
      {"a", "b=", "", "\"b=\" is no name in XML"},
      {"a", "\xC3\x97", "", "\"\xC3\x97\" is no name in XML"},
      {"a", "größe", "\x1F", "element \"a\" holds character U+001F, which XML forbids"},
      {"a", "b", "x\xEF\xBF\xBE", "element \"a\" holds byte 0xEF, which begins no character that XML allows"},
      {"a", "b", "\xE4", "element \"a\" holds byte 0xE4, which begins no character that XML allows"},
  };
  for (const auto& [tag, attribute, value, reason] : cases) {
    const ZYMIDOMElement_var element = Element(good, tag.c_str());
    ASSERT_EQ(element->setAttribute(attribute, ""), S_OK);
    ASSERT_EQ(Append(element, TextNode(good, value)), S_OK);
    EXPECT_EQ(write(element), E_FAIL);
    EXPECT_EQ(QELVARDOSSystemUtils::LastError(), std::string(file).append(": ").append(reason));
  }
  EXPECT_EQ(write(NewDocument()), E_FAIL);
  EXPECT_EQ(write(TextNode(good, "x")), E_FAIL);
  EXPECT_EQ(folder.File("file.xml"), "<a/>");
  EXPECT_EQ(builder_->Write(good, file + "/x", {}, {}), E_FAIL);
  EXPECT_THAT(QELVARDOSSystemUtils::LastError(), HasSubstr(file + "/x: "));
  ZYMIDOMDocument_var document = good;
  EXPECT_EQ(builder_->Parse(folder.At("none/x.xml"), {}, {}, document), E_FAIL);
  EXPECT_EQ(document, good);
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(), folder.At("none/x.xml") + ": No such file or directory");
}

TEST_F(DomTest, NulBytesAreRefusedAtOnce) {
  const ZYMIDOMDocument_var document = Parse("<a b=\"1\"/>");
  const ZYMUnicodeString cut("x\0y"s);
  ZYMIDOMElement_var element;
  ZYMIDOMText_var text;
  EXPECT_EQ(Root(document)->setAttribute("b", cut), E_FAIL);
  EXPECT_EQ(Root(document)->setAttribute(cut, "1"), E_FAIL);
  EXPECT_EQ(document->createElement(cut, element), E_FAIL);
  EXPECT_EQ(document->createTextNode(cut, text), E_FAIL);
  EXPECT_EQ(Text(document), "<a b=\"1\"/>");
}

TEST_F(DomTest, LookupsThatFindNothingSucceed) {
  const ZYMIDOMDocument_var document = Parse("<a b=\"\"><!--c--></a>");
  const ZYMIDOMElement_var root = Root(document);
  bool present = false;
  EXPECT_EQ(root->hasAttribute("b", present), S_OK);
  EXPECT_TRUE(present);
  EXPECT_EQ(root->hasAttribute("B", present), S_OK);
  EXPECT_FALSE(present);
  EXPECT_EQ(Attribute(root, "B"), "");
  EXPECT_EQ(Length(AllTagged(root, "a")), 0);
  const ZYMIDOMNodeList_var children = Children(root);
  const ZYMIDOMNode_var comment = Item(children, 0);
  for (const int index : {-1, 1, 2}) {
    EXPECT_TRUE(Item(children, index).IsNull());
  }
  ZYMIDOMNode_var child = root;
  EXPECT_EQ(comment->getFirstChild(child), S_OK);
  EXPECT_TRUE(child.IsNull());
  EXPECT_TRUE(ZYMIDOMElement_var(comment).IsNull());

  const ZYMIDOMDocument_var empty = NewDocument();
  const ZYMIDOMElement_var nowhere = Element(empty, "a");
  child = nowhere;
  EXPECT_EQ(empty->getFirstChild(child), S_OK);
  EXPECT_TRUE(child.IsNull() && Root(empty).IsNull());
  EXPECT_EQ(Length(Children(empty)) + Length(AllTagged(empty, "*")), 0);
  EXPECT_EQ(Append(empty, nowhere), S_OK);
  EXPECT_EQ(Append(empty, comment), S_OK);
  EXPECT_EQ(Text(empty), "<a/><!--c-->");
}

TEST_F(DomTest, ListsWalkInDocumentOrderAndFollowChanges) {
  const ZYMIDOMDocument_var document = Parse("<x><x n=\"1\"><x n=\"2\"/><y n=\"3\"/></x>t<x n=\"4\"/><!--c--></x>");
  const ZYMIDOMElement_var root = Root(document);
  const ZYMIDOMNodeList_var xs = AllTagged(root, "x");
  const ZYMIDOMNodeList_var all = AllTagged(root, "*");
  const auto numbers = [](const ZYMIDOMNodeList_var& list) {
    std::string found;
    for (int index = 0; !Item(list, index).IsNull(); ++index) {
      found += Attribute(Item(list, index), "n");
    }
    for (int index = Length(list) - 1; index >= 0; --index) {
      found += Attribute(Item(list, index), "n");
    }
    return found;
  };
  EXPECT_EQ(numbers(xs), "124421");
  EXPECT_EQ(numbers(all), "12344321");
  EXPECT_EQ(Length(AllTagged(document, "*")), 5);
  EXPECT_EQ(Length(Children(root)), 4);

  EXPECT_EQ(Append(Item(all, 3), Item(all, 0)), S_OK);
  EXPECT_EQ(numbers(xs), "412214");
  EXPECT_EQ(numbers(all), "41233214");
  const ZYMIDOMElement_var added = Element(document, "x");
  EXPECT_EQ(added->setAttribute("n", "5"), S_OK);
  EXPECT_EQ(Length(xs), 3);
  EXPECT_EQ(Append(root, added), S_OK);
  EXPECT_EQ(numbers(xs), "41255214");
}

/// The names of the child elements, found by the short cut and by the way that trees without one go.
std::string Steps(const ZYMIDOMElement_var& parent, const ZYMUnicodeStringList& names) {
  std::string steps;
  std::string longWay;
  EXPECT_EQ(parent->visitChildElements(names, [&](const auto& child) { return !(steps += Name(child)).empty(); }),
            S_OK);
  EXPECT_EQ(parent->ZYMIDOMElement::visitChildElements(
                names, [&](const auto& child) { return !(longWay += Name(child)).empty(); }),
            S_OK);
  EXPECT_EQ(steps, longWay);
  return steps;
}

/// The text of the first element of that name, found by the short cut and checked against the long way.
std::string FirstText(const ZYMIDOMElement_var& root, const char* name) {
  bool found = false;
  ZYMUnicodeString text("as it was");
  EXPECT_EQ(root->getTextOfFirst(name, found, text), S_OK);
  bool foundLongWay = false;
  ZYMUnicodeString longWay("as it was");
  EXPECT_EQ(root->ZYMIDOMElement::getTextOfFirst(name, foundLongWay, longWay), S_OK);
  EXPECT_EQ(found, foundLongWay) << name;
  EXPECT_EQ(text, longWay) << name;
  return text.Str();
}

TEST_F(DomTest, ShortCutsLeadWhereTheLongWayDoes) {
  const ZYMIDOMDocument_var document = Parse(
      "<!--c--><r><!--c-->t<a>1<b>2</b></a><?p "
      "q?><p/><b>3</b><d>4<!--c--></d><e/><f/><g/><h/><i>5</i><d/></r><!--c-->");
  const ZYMIDOMElement_var root = Root(document);
  const ZYMIDOMElement_var nowhere = Element(document, "nowhere");
  EXPECT_EQ(Steps(root, {}), "apbdefghid");
  EXPECT_EQ(Steps(root, {"d", "a", "x"}), "add");
  EXPECT_EQ(Steps(root, {"x"}) + Steps(nowhere, {}), "");
  std::string stopped;
  EXPECT_EQ(root->visitChildElements({}, [&](const auto& child) { return (stopped += Name(child)).size() < 2; }), S_OK);
  EXPECT_EQ(stopped, "ap");

  const ZYMIDOMElement_var a = ZYMIDOMElement_var(Item(AllTagged(root, "a"), 0));
  for (const char* name : {"a", "b", "i", "d", "p", "r", "new", "#text"}) {
    FirstText(root, name);
    FirstText(a, name);
  }
  const ZYMIDOMNodeList_var children = Children(root);
  const int before = Length(children);
  EXPECT_EQ(root->appendTextElement(document, "new", "<&"), S_OK);
  EXPECT_EQ(a->ZYMIDOMElement::appendTextElement(document, "new", ""), S_OK);
  EXPECT_EQ(root->appendTextElement(document, "new", "\0"s), E_FAIL);
  EXPECT_EQ(Length(children), before + 1);
  EXPECT_EQ(FirstText(root, "new"), "");
  EXPECT_EQ(Append(root, a), S_OK);
  EXPECT_EQ(FirstText(root, "new"), "<&");
  EXPECT_EQ(FirstText(root, "b"), "3");
  EXPECT_THAT(Text(root), HasSubstr("<new>&lt;&amp;</new><a>1<b>2</b><new></new></a></r>"));
}

TEST_F(DomTest, ManyAttributesOfSeveralElementsAreKeptApart) {
  const ZYMIDOMDocument_var document = Parse("<r a=\"0\" ab=\"0\"><s a=\"1\"/></r>");
  const ZYMIDOMElement_var root = Root(document);
  const ZYMIDOMElement_var child = Item(AllTagged(root, "s"), 0);
  const auto name = [](int number) { return "a" + std::to_string(number); };
  for (int number = 0; number < 40; ++number) {
    EXPECT_EQ(root->setAttribute(name(number), std::to_string(number)), S_OK);
    EXPECT_EQ(child->setAttribute(name(number % 20), std::to_string(number)), S_OK);
  }
  for (int number = 0; number < 40; ++number) {
    EXPECT_EQ(Attribute(root, name(number).c_str()), std::to_string(number));
    EXPECT_EQ(Attribute(child, name(number).c_str()), number < 20 ? std::to_string(number + 20) : "");
  }
  EXPECT_EQ(Attribute(root, "a") + Attribute(root, "ab") + Attribute(child, "a") + Attribute(child, "ab"), "001");
  EXPECT_THAT(Text(child), HasSubstr("<s a=\"1\" a0=\"20\" a1=\"21\""));
}

TEST_F(DomTest, appending_takes_over_with_every_handle_and_lists_of_all_trees_follow) {
  ZYMIDOMDocument_var source = Parse("<s><t a=\"1\"><u>text</u><u/></t><t/></s>");
  const ZYMIDOMDocument_var target = Parse("<r/>");
  const ZYMIDOMNodeList_var ofSource = AllTagged(source, "t");
  const ZYMIDOMNodeList_var ofTarget = AllTagged(target, "t");
  const ZYMIDOMElement_var t = Item(ofSource, 0);
  const ZYMIDOMElement_var sameT = Item(ofSource, 0);
  const ZYMIDOMNodeList_var us = AllTagged(t, "u");
  const ZYMIDOMElement_var u = Item(us, 1);
  const ZYMIDOMNode_var text = Item(Children(Item(us, 0)), 0);
  const auto lengths = [&] { return std::vector{Length(ofSource), Length(ofTarget), Length(us)}; };
  EXPECT_EQ(lengths(), (std::vector{2, 0, 2}));
  EXPECT_EQ(FirstText(Root(source), "u") + FirstText(Root(target), "u"), "textas it was");

  EXPECT_EQ(Append(Root(target), t), S_OK);
  EXPECT_EQ(lengths(), (std::vector{1, 1, 2}));
  EXPECT_EQ(FirstText(Root(source), "u") + FirstText(Root(target), "u"), "as it wastext");
  EXPECT_EQ(Text(source), "<s><t/></s>");
  EXPECT_EQ(sameT->setAttribute("a", "2"), S_OK);
  EXPECT_EQ(u->setAttribute("b", "3"), S_OK);
  EXPECT_EQ(Append(u, text), S_OK);
  EXPECT_EQ(Append(sameT, Element(target, "u")), S_OK);
  EXPECT_EQ(lengths(), (std::vector{1, 1, 3}));
  EXPECT_EQ(Text(target), "<r><t a=\"2\"><u/><u b=\"3\">text</u><u/></t></r>");

  EXPECT_EQ(Append(Root(source), u), S_OK);
  EXPECT_EQ(lengths(), (std::vector{1, 1, 2}));
  EXPECT_EQ(Append(Root(target), Root(source)), S_OK);
  source = nullptr;
  EXPECT_EQ(Append(u, Element(target, "v")), S_OK);
  EXPECT_EQ(Text(target), "<r><t a=\"2\"><u/><u/></t><s><t/><u b=\"3\">text<v/></u></s></r>");
}

TEST_F(DomTest, a_tree_grows_at_its_deepest_element_and_every_handle_moves_along) {
  constexpr int Depth = 50'000;
  const ZYMIDOMDocument_var document = Parse("<a><b>text</b></a>");
  const ZYMIDOMElement_var b = Item(AllTagged(document, "b"), 0);
  const ZYMIDOMNode_var text = Item(Children(b), 0);
  ZYMIDOMElement_var deepest = Root(document);
  for (int depth = 0; depth < Depth; ++depth) {
    const ZYMIDOMElement_var next = Element(document, "a");
    ASSERT_EQ(next->setAttribute("n", "0"), S_OK);
    const ZYMIDOMNodeList_var children = Children(next);
    ASSERT_EQ(Append(deepest, next), S_OK);
    ASSERT_EQ(next->setAttribute("n", "1"), S_OK);
    ASSERT_EQ(Append(next, Element(document, "c")), S_OK);
    ASSERT_EQ(Length(children), 1);
    deepest = next;
  }
  EXPECT_EQ(Append(deepest, deepest), E_FAIL);
  EXPECT_EQ(Append(deepest, Root(document)), E_FAIL);
  EXPECT_EQ(Append(deepest, text), S_OK);
  EXPECT_EQ(Append(deepest, b), S_OK);
  EXPECT_EQ(Append(b, text), S_OK);
  EXPECT_EQ(Text(document), "<a>" + Repeated("<a n=\"1\"><c/>", Depth) + "<b>text</b>" + Repeated("</a>", Depth + 1));
}

TEST_F(DomTest, RefusesNodesWhereTheyCannotStand) {
  const std::string text = "<!DOCTYPE a><a><b>t<![CDATA[c]]></b></a>";
  const ZYMIDOMDocument_var document = Parse(text);
  const ZYMIDOMElement_var root = Root(document);
  const ZYMIDOMNode_var b = Item(Children(root), 0);
  const ZYMIDOMNode_var textNode = Item(Children(b), 0);
  // Of another implementation than the platform's.
  const ZYMIDOMNode_var foreign = FailingDom::Wrap(Tree("<a/>"));
  const ZYMIDOMDocument_var other = Parse("<!DOCTYPE o><o/>");

  const ZYMIDOMNode_var section = Item(Children(b), 1);
  const ZYMIDOMNode_var type = Item(Children(document), 0);
  const ZYMIDOMNode_var otherRoot = Root(other);

  const std::vector<std::pair<ZYMIDOMNode_var, ZYMIDOMNode_var>> refused = {
      {root, root},          {b, root},     {root, document}, {root, other},
      {document, textNode},  {root, type},  {other, type},    {document, section},
      {document, b},         {textNode, b}, {root, foreign},  {document, otherRoot},
      {textNode, otherRoot},
  };
  for (const auto& [parent, child] : refused) {
    EXPECT_EQ(Append(parent, child), E_FAIL);
  }
  EXPECT_EQ(builder_->Write(foreign, "it", {}, {}), E_FAIL);
  EXPECT_THROW(Append(root, nullptr), ZYMNullHandleError);
  EXPECT_EQ(Text(document), "<!DOCTYPE a>\n<a><b>t<![CDATA[c]]></b></a>");
  EXPECT_EQ(Append(document, root), S_OK);
  EXPECT_EQ(Text(other), "<!DOCTYPE o>\n<o/>");
}

TEST_F(DomTest, DepthAndBreadthCostNoMoreThanSize) {
  constexpr int Depth = 100'000;
  const std::string text = Repeated("<a>", Depth) + Repeated("</a>", Depth);
  for (const char* behind : {"", "<!---->"}) {
    const ZYMIDOMDocument_var source = Parse(text + behind);
    ASSERT_FALSE(source.IsNull());
    const ZYMIDOMNodeList_var all = AllTagged(source, "a");
    EXPECT_EQ(Length(all), Depth);
    const ZYMIDOMElement_var deepest = Item(all, Depth - 1);
    const ZYMIDOMDocument_var target = NewDocument();
    EXPECT_EQ(Append(target, Root(source)), S_OK);
    EXPECT_EQ(Append(deepest, TextNode(target, "x")), S_OK);
    EXPECT_EQ(Text(target), std::string(text).replace(text.size() / 7 * 3, 0, "x"));
  }

  const ZYMIDOMDocument_var broad = NewDocument();
  const ZYMIDOMElement_var root = Element(broad, "r");
  EXPECT_EQ(Append(broad, root), S_OK);
  for (int count = 0; count < Depth; ++count) {
    ASSERT_EQ(Append(root, Element(broad, "a")), S_OK);
  }
  int pieces = 0;
  const auto takeThree = [&pieces](std::string_view piece) {
    EXPECT_LT(piece.size(), static_cast<std::size_t>(Depth));
    return ++pieces < 3;
  };
  EXPECT_EQ(builder_->Serialize(broad, takeThree), S_OK);
  EXPECT_EQ(pieces, 3) << "text is handed over by pieces";
  std::vector<ZYMIDOMNode_var> handles;
  for (const ZYMIDOMNodeList_var& list : {Children(root), AllTagged(root, "a")}) {
    for (int index = 0; index < Length(list); ++index) {
      handles.push_back(Item(list, index));
    }
  }
  const ZYMIDOMElement_var target = Element(NewDocument(), "t");
  for (const ZYMIDOMNode_var& handle : handles) {
    ASSERT_EQ(Append(target, handle), S_OK);
  }
  EXPECT_EQ(Length(Children(root)), 0);
  EXPECT_EQ(Length(Children(target)), Depth);
}

TEST_F(DomTest, AHostCanPutItsOwnBuilderInPlace) {
  const ZYMIXMLDOMDocumentBuilder_var own = builder_;
  {
    const FailingDom none(0, "CreateBuilder");
    EXPECT_EQ(CreateZYMIXMLDOMDocumentBuilder(builder_, XML4C), FailingDom::Status);
    EXPECT_EQ(builder_, own);
    EXPECT_EQ(CreateZYMIXMLDOMDocumentBuilder(builder_), S_OK);
    EXPECT_EQ(builder_->Serialize(nullptr, nullptr), E_NOTIMPL);
    EXPECT_NE(ZYMSetDocumentBuilderCreation(nullptr), nullptr);
  }
  EXPECT_EQ(ZYMSetDocumentBuilderCreation(nullptr), nullptr);
}

}  // namespace
