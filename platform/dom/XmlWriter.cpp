#include "platform/dom/XmlWriter.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <utility>

#include "platform/dom/DomStorage.h"
#include "platform/dom/ExpatJudge.h"
#include "platform/dom/XmlCharacters.h"

// pugixml's own writer does not serve: it leaves a raw carriage return in text, which reads back as a newline, and it
// writes characters and names that no XML text may hold.

namespace ZYMDom {
namespace {

/// What becomes of a byte.
enum Action : unsigned char { Copied, Replaced, MultiByte, Forbidden };
using Actions = std::array<unsigned char, 256>;

constexpr std::string_view Special = "&<>\"\t\n\r";
constexpr std::array<std::string_view, Special.size()> Replacements = {"&amp;", "&lt;",  "&gt;", "&quot;",
                                                                       "&#9;",  "&#10;", "&#13;"};

constexpr Actions RawActions() {
  Actions actions{};
  std::fill(actions.begin(), actions.begin() + 0x20, Forbidden);
  std::fill(actions.begin() + 0x80, actions.end(), MultiByte);
  actions['\t'] = actions['\n'] = actions['\r'] = Copied;
  return actions;
}

constexpr Actions Replacing(std::string_view characters, Actions actions) {
  for (const char c : characters) {
    actions[static_cast<unsigned char>(c)] = Replaced;
  }
  return actions;
}

constexpr Actions NameActions() {
  Actions actions = RawActions();
  for (unsigned char c = 0; c < 0x80; ++c) {
    actions[c] = ContinuesAsciiName(c) || c == ':' ? Copied : Forbidden;
  }
  return actions;
}

constexpr Actions InRaw = RawActions();
constexpr Actions InText = Replacing("&<>\r", InRaw);
constexpr Actions InAttribute = Replacing("\"\t\n", InText);
constexpr Actions InName = NameActions();

Action ActionOn(char c, const Actions& actions) { return static_cast<Action>(actions[static_cast<unsigned char>(c)]); }

std::string Describe(unsigned char c) {
  const char* const format =
      c < 0x80 ? "character U+%04X, which XML forbids" : "byte 0x%02X, which begins no character that XML allows";
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), format, c);
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

class XmlWriter {
 public:
  XmlWriter(std::string& text, const XmlSink& sink) : text_(text), sink_(sink) {}

  /// Answers why not; nothing when it is written.
  std::string Write(const DomStorage& storage, pugi::xml_node node) {
    text_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    if (node.type() == pugi::node_element) {
      WriteTree(node);
    } else if (node.type() != pugi::node_document) {
      Refuse("only a document or an element can be written");
    } else if (!storage.RootElement()) {
      Refuse("the document has no root element");
    } else {
      for (pugi::xml_node child = storage.FirstChild(node); child && !Done(); child = child.next_sibling()) {
        WriteTree(child);
      }
    }
    HandOver(1);
    return std::move(reason_);
  }

 private:
  void WriteTree(pugi::xml_node root) {
    for (pugi::xml_node node = root; node && !Done();) {
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
      node = next;
    }
  }

  /// Answers the first of the nodes in it that are still to be written; null when it is written whole.
  pugi::xml_node Open(pugi::xml_node node) {
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
      default:
        // A document type: no other kind can stand in a tree.
        Section("<!DOCTYPE ", node.value(), "", ">\n");
    }
    return {};
  }

  pugi::xml_node OpenElement(pugi::xml_node element) {
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

  void Close(pugi::xml_node element) { text_.append("</").append(element.name()).append(">"); }

  /// forbidden may not begin before the end of the section; empty: there is no such thing.
  void Section(std::string_view begin, const char* value, std::string_view forbidden, std::string_view end) {
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

  void Name(const char* name) {
    const char* end = name;
    while (ActionOn(*end, InName) == Copied) {
      ++end;
    }
    if (*end == '\0' && (StartsAsciiName(static_cast<unsigned char>(*name)) || *name == ':')) {
      text_.append(name, end);
    } else if (IsNameBeyondAscii(name)) {
      text_ += name;
    } else {
      Refuse('"' + std::string(name) + "\" is no name in XML");
    }
  }

  /// It is one when the judge takes it for one.
  bool IsNameBeyondAscii(std::string_view name) {
    const auto isForbidden = [](char c) { return ActionOn(c, InName) == Forbidden; };
    return names_.contains(name) || (std::none_of(name.begin(), name.end(), isForbidden) && ExpatJudge::IsName(name) &&
                                     names_.emplace(name).second);
  }

  void Characters(const char* text, const Actions& actions) {
    const char* const end = text + std::strlen(text);
    for (const char* run = text;;) {
      text = SkipHarmless(text, end);
      while (ActionOn(*text, actions) == Copied) {
        ++text;
      }
      const Action action = ActionOn(*text, actions);
      if (const std::size_t length = action == MultiByte ? MultiByteLength(text) : 0; length != 0) {
        text += length;
        continue;
      }
      text_.append(run, text);
      if (*text == '\0') {
        return;
      }
      if (action != Replaced) {
        Refuse(CurrentPlace() + " holds " + Describe(static_cast<unsigned char>(*text)));
        return;
      }
      text_ += Replacements[Special.find(*text)];
      run = ++text;
    }
  }

  std::string CurrentPlace() const {
    const pugi::xml_node element = current_.type() == pugi::node_element ? current_ : current_.parent();
    return element.type() == pugi::node_element ? "element \"" + std::string(element.name()) + '"' : "the document";
  }

  void Refuse(std::string reason) {
    if (reason_.empty()) {
      reason_ = std::move(reason);
    }
  }

  void HandOver(std::size_t atLeast) {
    if (text_.size() >= atLeast && sink_ && !Done()) {
      stopped_ = !sink_(text_);
      text_.clear();
    }
  }

  bool Done() const noexcept { return stopped_ || !reason_.empty(); }

  std::string& text_;
  const XmlSink& sink_;
  pugi::xml_node current_;
  bool stopped_ = false;
  std::string reason_;
  // Those beyond ASCII that the judge was asked for.
  std::set<std::string, std::less<>> names_;
};

}  // namespace

std::string WriteXml(const NodeAnchor& anchor, std::string& text, const XmlSink& sink) {
  return XmlWriter(text, sink).Write(anchor.Storage(), anchor.Node());
}

}  // namespace ZYMDom
