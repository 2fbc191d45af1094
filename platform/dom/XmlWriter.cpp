#include "platform/dom/XmlWriter.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/dom/ExpatJudge.h"
#include "platform/dom/XmlCharacters.h"

// pugixml's own writer does not serve: it leaves a raw carriage return in text, which reads back as a newline, and it
// writes characters and names that no XML text may hold.

namespace ZYMDom {
namespace {

enum Escape : unsigned char { Copied, Ampersand, Less, Greater, Quote, Tab, Newline, Return, Forbidden, MultiByte };

constexpr std::array<std::string_view, Forbidden> Replacements = {"",       "&amp;", "&lt;",  "&gt;",
                                                                  "&quot;", "&#9;",  "&#10;", "&#13;"};

constexpr XmlEscapes RawEscapes() {
  XmlEscapes escapes{};
  std::fill(escapes.begin(), escapes.begin() + 0x20, Forbidden);
  std::fill(escapes.begin() + 0x80, escapes.end(), MultiByte);
  escapes['\t'] = escapes['\n'] = escapes['\r'] = Copied;
  return escapes;
}

constexpr XmlEscapes TextEscapes() {
  XmlEscapes escapes = RawEscapes();
  escapes['&'] = Ampersand;
  escapes['<'] = Less;
  escapes['>'] = Greater;
  escapes['\r'] = Return;
  return escapes;
}

constexpr XmlEscapes AttributeEscapes() {
  XmlEscapes escapes = TextEscapes();
  escapes['"'] = Quote;
  escapes['\t'] = Tab;
  escapes['\n'] = Newline;
  return escapes;
}

constexpr XmlEscapes InRaw = RawEscapes();
constexpr XmlEscapes InText = TextEscapes();
constexpr XmlEscapes InAttribute = AttributeEscapes();

std::string Describe(unsigned char c) {
  std::array<char, 80> text{};
  if (c < 0x80) {
    std::snprintf(text.data(), text.size(), "character U+%04X, which XML forbids", c);
  } else {
    std::snprintf(text.data(), text.size(), "byte 0x%02X, which begins no character that XML allows", c);
  }
  return text.data();
}

/// Goes on from text, by eight bytes at a time, as long as they all stand for themselves wherever characters may stand:
/// no control character, none of " & < > and nothing beyond ASCII. The bytes behind it are to be looked at singly.
const char* SkipHarmless(const char* text, const char* end) noexcept {
  constexpr std::uint64_t Each = 0x0101010101010101U;
  // The highest bit of each byte tells; a lower byte that is found may set those of the bytes above it too.
  const auto holds = [](std::uint64_t bytes, char c) {
    const std::uint64_t zeroWhereFound = bytes ^ (Each * static_cast<unsigned char>(c));
    return (zeroWhereFound - Each) & ~zeroWhereFound;
  };
  for (; end - text >= 8; text += 8) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    const std::uint64_t found =
        bytes | (bytes - Each * 0x20U) | holds(bytes, '"') | holds(bytes, '&') | holds(bytes, '<') | holds(bytes, '>');
    if ((found & (Each * 0x80U)) != 0) {
      break;
    }
  }
  return text;
}

/// Where a byte may stand in a name.
enum Place : unsigned char { BehindStart, Anywhere, BeyondAscii, Nowhere };

constexpr std::array<unsigned char, 256> PlacesInNames() {
  std::array<unsigned char, 256> places{};
  for (unsigned char c = 0; c < 0x80; ++c) {
    places[c] = StartsAsciiName(c) || c == ':' ? Anywhere : ContinuesAsciiName(c) ? BehindStart : Nowhere;
  }
  std::fill(places.begin() + 0x80, places.end(), BeyondAscii);
  return places;
}

constexpr std::array<unsigned char, 256> Places = PlacesInNames();

Place PlaceOf(char c) { return static_cast<Place>(Places[static_cast<unsigned char>(c)]); }

/// Whether an ASCII character may follow the first of a name.
bool IsIn(Place place) { return place <= Anywhere; }

/// Nothing in it is forbidden; whether what lies beyond ASCII may stand there is not asked.
bool LooksLikeName(std::string_view name) {
  return !name.empty() && PlaceOf(name.front()) != BehindStart &&
         std::none_of(name.begin(), name.end(), [](char c) { return PlaceOf(c) == Nowhere; });
}

/// A name beyond ASCII is one when the judge takes it for one.
bool ReadsAsName(std::string_view name) { return ExpatJudge().Accepts('<' + std::string(name) + "/>"); }

}  // namespace

bool XmlWriter::Write(const DomStorage& storage, pugi::xml_node node) {
  text_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  if (node.type() == pugi::node_element) {
    WriteTree(node);
  } else if (node.type() != pugi::node_document) {
    Refuse("only a document or an element can be written");
  } else if (!storage.RootElement()) {
    Refuse("the document has no root element");
  } else {
    WriteDocument(storage, node);
  }
  HandOver(1);
  return reason_.empty();
}

void XmlWriter::WriteDocument(const DomStorage& storage, pugi::xml_node document) {
  for (pugi::xml_node child = storage.FirstChild(document); child && !Done(); child = storage.NextSibling(child)) {
    WriteTree(child);
  }
}

void XmlWriter::WriteTree(pugi::xml_node root) {
  for (pugi::xml_node node = root; !Done();) {
    current_ = node;
    pugi::xml_node next = Open(node);
    HandOver(std::size_t{64} << 10U);
    while (!next && node != root) {
      next = node.next_sibling();
      if (!next) {
        node = node.parent();
        Close(node);
      }
    }
    if (!next) {
      return;
    }
    node = next;
  }
}

pugi::xml_node XmlWriter::Open(pugi::xml_node node) {
  switch (node.type()) {
    case pugi::node_element:
      return OpenElement(node);
    case pugi::node_pcdata:
      Characters(node.value(), InText);
      break;
    case pugi::node_cdata:
      Section("<![CDATA[", node.value(), "]]>", "]]>");
      break;
    case pugi::node_comment:
      Section("<!--", node.value(), "--", "-->");
      break;
    case pugi::node_pi:
      text_ += "<?";
      Name(node.name());
      Section(*node.value() == '\0' ? "" : " ", node.value(), "?>", "?>");
      break;
    case pugi::node_doctype:
      Section("<!DOCTYPE ", node.value(), "", ">\n");
      break;
    default:
      Refuse("a node of an unknown kind");
  }
  return {};
}

pugi::xml_node XmlWriter::OpenElement(pugi::xml_node element) {
  text_ += '<';
  Name(element.name());
  for (pugi::xml_attribute attribute = element.first_attribute(); attribute; attribute = attribute.next_attribute()) {
    text_ += ' ';
    Name(attribute.name());
    text_ += "=\"";
    Characters(attribute.value(), InAttribute);
    text_ += '"';
  }
  const pugi::xml_node child = element.first_child();
  text_ += child ? ">" : "/>";
  if (child.type() != pugi::node_pcdata || child.next_sibling()) {
    return child;
  }
  // Most elements of a record hold a text and nothing else.
  Characters(child.value(), InText);
  Close(element);
  return {};
}

void XmlWriter::Close(pugi::xml_node element) {
  text_ += "</";
  text_ += element.name();
  text_ += '>';
}

/// forbidden may not begin before the end of the section; empty: there is no such thing.
void XmlWriter::Section(std::string_view begin, const char* value, std::string_view forbidden, std::string_view end) {
  text_ += begin;
  const std::size_t start = text_.size();
  Characters(value, InRaw);
  const std::size_t stop = text_.size();
  text_ += end;
  if (!forbidden.empty() && text_.find(forbidden, start) < stop) {
    Refuse(CurrentPlace() + " holds a comment, CDATA section or processing instruction with \"" +
           std::string(forbidden) + "\" in it");
  }
}

void XmlWriter::Name(const char* name) {
  const char* end = name;
  if (PlaceOf(*end) == Anywhere) {
    while (IsIn(PlaceOf(*end))) {
      ++end;
    }
  }
  if (*end == '\0' && end != name) {
    text_.append(name, end);
  } else if (IsName(name)) {
    text_ += name;
  } else {
    Refuse('"' + std::string(name) + "\" is no name in XML");
  }
}

bool XmlWriter::IsName(std::string_view name) {
  return names_.contains(name) || (LooksLikeName(name) && ReadsAsName(name) && names_.emplace(name).second);
}

void XmlWriter::Characters(const char* text, const XmlEscapes& escapes) {
  const char* const end = text + std::strlen(text);
  for (const char* run = text;;) {
    text = SkipHarmless(text, end);
    while (escapes[static_cast<unsigned char>(*text)] == Copied) {
      ++text;
    }
    const auto byte = static_cast<unsigned char>(*text);
    const unsigned char action = escapes[byte];
    if (const std::size_t length = action == MultiByte ? MultiByteLength(text) : 0; length != 0) {
      text += length;
      continue;
    }
    text_.append(run, text);
    if (byte == '\0') {
      return;
    }
    if (action >= Forbidden) {
      Refuse(CurrentPlace() + " holds " + Describe(byte));
      return;
    }
    text_ += Replacements[action];
    run = ++text;
  }
}

std::string XmlWriter::CurrentPlace() const {
  const pugi::xml_node element = current_.type() == pugi::node_element ? current_ : current_.parent();
  return element.type() == pugi::node_element ? "element \"" + std::string(element.name()) + '"' : "the document";
}

void XmlWriter::Refuse(std::string reason) {
  if (reason_.empty()) {
    reason_ = std::move(reason);
  }
}

void XmlWriter::HandOver(std::size_t atLeast) {
  if (text_.size() >= atLeast && sink_ && !Done()) {
    stopped_ = !sink_(text_);
    text_.clear();
  }
}

}  // namespace ZYMDom
