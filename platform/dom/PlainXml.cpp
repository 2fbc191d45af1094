#include "platform/dom/PlainXml.h"

#include <algorithm>

#include "platform/dom/XmlCharacters.h"

namespace ZYMDom {
namespace {

constexpr unsigned char NameCharacter = 1;
constexpr unsigned char TextCharacter = 2;
constexpr unsigned char ValueCharacter = 4;

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
  return classes;
}

constexpr std::array<unsigned char, 256> Classes = ClassifyAscii();

bool Is(char c, unsigned char kind) { return (Classes[static_cast<unsigned char>(c)] & kind) != 0; }

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

}  // namespace

std::optional<std::size_t> PlainXml::RootOf(const std::string& text) {
  at_ = text.c_str();
  end_ = at_ + text.size();
  open_.clear();
  Skip("\xEF\xBB\xBF");
  if (!Declaration()) {
    return std::nullopt;
  }
  SkipSpace();
  const auto root = static_cast<std::size_t>(at_ - text.c_str());
  if (!Tree()) {
    return std::nullopt;
  }
  SkipSpace();
  return at_ == end_ ? std::optional(root) : std::nullopt;
}

bool PlainXml::Skip(std::string_view word) {
  const bool found = std::string_view(at_, end_).starts_with(word);
  at_ += found ? word.size() : 0;
  return found;
}

bool PlainXml::Skip(char c) {
  const bool found = *at_ == c;
  at_ += found ? 1 : 0;
  return found;
}

void PlainXml::SkipSpace() {
  while (IsSpace(*at_)) {
    ++at_;
  }
}

// The loops below count in a local variable: at_ itself would go to memory and back for every character.
void PlainXml::SkipAll(unsigned char kind) {
  const char* at = at_;
  while (Is(*at, kind)) {
    ++at;
  }
  at_ = at;
}

bool PlainXml::Declaration() {
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

bool PlainXml::Tree() {
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

bool PlainXml::StartTag() {
  ++at_;
  const std::string_view name = Name();
  if (name.empty()) {
    return false;
  }
  for (std::size_t number = 0; IsSpace(*at_); ++number) {
    SkipSpace();
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

bool PlainXml::Attribute(std::size_t number) {
  const std::string_view name = Name();
  const auto known = attributes_.begin() + static_cast<std::ptrdiff_t>(number);
  if (name.empty() || std::find(attributes_.begin(), known, name) != known) {
    return false;
  }
  *known = name;
  return Skip('=') && Skip('"') && Characters(ValueCharacter, '"') && Skip('"');
}

bool PlainXml::EndTag() {
  at_ += 2;
  if (!Skip(open_.back())) {
    return false;
  }
  open_.pop_back();
  SkipSpace();
  return Skip('>');
}

std::string_view PlainXml::Name() {
  const char* const start = at_;
  if (StartsAsciiName(static_cast<unsigned char>(*at_))) {
    SkipAll(NameCharacter);
  }
  return {start, static_cast<std::size_t>(at_ - start)};
}

/// Goes on to the next end character.
bool PlainXml::Characters(unsigned char kind, char end) {
  for (;;) {
    SkipAll(kind);
    if (*at_ == end) {
      return true;
    }
    if (*at_ == '&') {
      if (!Reference()) {
        return false;
      }
    } else if (const std::size_t length = MultiByteLength(at_); length != 0) {
      at_ += length;
    } else {
      return false;
    }
  }
}

bool PlainXml::Reference() {
  ++at_;
  return Skip("amp;") || Skip("lt;") || Skip("gt;") || Skip("quot;") || Skip("apos;") || Skip("#9;") || Skip("#10;") ||
         Skip("#13;");
}

}  // namespace ZYMDom
