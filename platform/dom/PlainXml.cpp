#include "platform/dom/PlainXml.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "platform/dom/XmlCharacters.h"

namespace ZYMDom {
namespace {

constexpr unsigned char NameCharacter = 1;
constexpr unsigned char TextCharacter = 2;
constexpr unsigned char ValueCharacter = 4;
constexpr unsigned char Space = 8;

constexpr std::array<unsigned char, 256> ClassifyAscii() {
  std::array<unsigned char, 256> classes{};
  for (unsigned char c = '\t'; c < 0x80; ++c) {
    if (ContinuesAsciiName(c)) {
      classes[c] |= NameCharacter;
    }
    if ((c >= ' ' && c != '<' && c != '&' && c != '>') || c == '\t' || c == '\n') {
      classes[c] |= TextCharacter;
    }
    if (c >= ' ' && c != '<' && c != '&' && c != '"') {
      classes[c] |= ValueCharacter;
    }
  }
  for (const unsigned char c : {' ', '\n', '\t', '\r'}) {
    classes[c] |= Space;
  }
  return classes;
}

constexpr std::array<unsigned char, 256> Classes = ClassifyAscii();

bool Is(char c, unsigned char kind) { return (Classes[static_cast<unsigned char>(c)] & kind) != 0; }

/// One pass over one text.
class PlainReader {
 public:
  explicit PlainReader(const std::string& text) : at_(text.c_str()), end_(at_ + text.size()) { open_.reserve(16); }

  /// The offset of the root element when the text is plain.
  std::optional<std::size_t> Root() {
    const char* const start = at_;
    Skip("\xEF\xBB\xBF");
    const bool isDeclared = Declaration();
    SkipAll(Space);
    const char* const root = at_;
    const bool isTree = isDeclared && Tree();
    SkipAll(Space);
    return isTree && at_ == end_ ? std::optional(static_cast<std::size_t>(root - start)) : std::nullopt;
  }

 private:
  bool Skip(std::string_view word) {
    const bool found = std::string_view(at_, end_).starts_with(word);
    at_ += found ? word.size() : 0;
    return found;
  }

  bool Skip(char c) {
    const bool found = *at_ == c;
    at_ += found ? 1 : 0;
    return found;
  }

  // This counts in a local variable: at_ itself would go to memory and back for every character.
  void SkipAll(unsigned char kind) {
    const char* at = at_;
    while (Is(*at, kind)) {
      ++at;
    }
    at_ = at;
  }

  bool Declaration() {
    if (!Skip("<?")) {
      return true;
    }
    if (!Skip("xml version=\"1.0\"")) {
      return false;
    }
    if (Skip(" encoding=\"") &&
        !((Skip('U') || Skip('u')) && (Skip('T') || Skip('t')) && (Skip('F') || Skip('f')) && Skip("-8\""))) {
      return false;
    }
    return Skip("?>");
  }

  bool Tree() {
    if (*at_ != '<' || !StartTag()) {
      return false;
    }
    while (!open_.empty()) {
      if (!Characters(TextCharacter, '<') || !(at_[1] == '/' ? EndTag() : StartTag())) {
        return false;
      }
    }
    return true;
  }

  bool StartTag() {
    ++at_;
    const std::string_view name = Name();
    if (name.empty()) {
      return false;
    }
    for (std::size_t number = 0; Is(*at_, Space); ++number) {
      SkipAll(Space);
      if (*at_ == '>' || *at_ == '/') {
        break;
      }
      if (number == MostAttributes || !Attribute(number)) {
        return false;
      }
    }
    if (Skip('>')) {
      open_.push_back(name);
      return true;
    }
    return Skip("/>");
  }

  bool Attribute(std::size_t number) {
    const std::string_view name = Name();
    const auto known = attributes_.begin() + static_cast<std::ptrdiff_t>(number);
    if (name.empty() || std::find(attributes_.begin(), known, name) != known) {
      return false;
    }
    *known = name;
    return Skip('=') && Skip('"') && Characters(ValueCharacter, '"') && Skip('"');
  }

  bool EndTag() {
    at_ += 2;
    if (!Skip(open_.back())) {
      return false;
    }
    open_.pop_back();
    SkipAll(Space);
    return Skip('>');
  }

  std::string_view Name() {
    const char* const start = at_;
    if (StartsAsciiName(static_cast<unsigned char>(*at_))) {
      SkipAll(NameCharacter);
    }
    return {start, static_cast<std::size_t>(at_ - start)};
  }

  /// Goes on to the next end character.
  bool Characters(unsigned char kind, char end) {
    for (SkipAll(kind); *at_ != end; SkipAll(kind)) {
      if (!(*at_ == '&' ? Reference() : CharacterBeyondAscii())) {
        return false;
      }
    }
    return true;
  }

  bool CharacterBeyondAscii() {
    const std::size_t length = MultiByteLength(at_);
    at_ += length;
    return length != 0;
  }

  bool Reference() {
    ++at_;
    return Skip("amp;") || Skip("lt;") || Skip("gt;") || Skip("quot;") || Skip("apos;") || Skip("#9;") ||
           Skip("#10;") || Skip("#13;");
  }

  // An element with more attributes is not plain: they are compared each with each.
  static constexpr std::size_t MostAttributes = 32;

  const char* at_;
  const char* end_;
  std::vector<std::string_view> open_;
  std::array<std::string_view, MostAttributes> attributes_;
};

}  // namespace

std::optional<std::size_t> PlainRoot(const std::string& text) { return PlainReader(text).Root(); }

}  // namespace ZYMDom
