#include "lrd/Printable.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace lrd {

namespace {

void AppendHexadecimal(std::string& text, char byte) {
  static constexpr std::string_view Digits = "0123456789abcdef";
  const auto value = static_cast<unsigned char>(byte);
  text += {Digits[value >> 4U], Digits[value & 15U]};
}

/// What may follow the first byte of a character: which forms are too long, half of a pair or beyond the last character
/// shows in the second byte alone.
struct Form {
  unsigned char first;
  unsigned char last;
  std::size_t length;
  unsigned char lowestSecond;
  unsigned char highestSecond;
};

constexpr std::array Forms = {
    Form{0x00, 0x7f, 1, 0x80, 0xbf}, Form{0xc2, 0xdf, 2, 0x80, 0xbf}, Form{0xe0, 0xe0, 3, 0xa0, 0xbf},
    Form{0xe1, 0xec, 3, 0x80, 0xbf}, Form{0xed, 0xed, 3, 0x80, 0x9f}, Form{0xee, 0xef, 3, 0x80, 0xbf},
    Form{0xf0, 0xf0, 4, 0x90, 0xbf}, Form{0xf1, 0xf3, 4, 0x80, 0xbf}, Form{0xf4, 0xf4, 4, 0x80, 0x8f},
};

bool Fits(const Form& form, std::string_view text) {
  if (text.size() < form.length) {
    return false;
  }
  for (std::size_t at = 1; at < form.length; ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool isSecond = at == 1;
    if (byte < (isSecond ? form.lowestSecond : 0x80) || byte > (isSecond ? form.highestSecond : 0xbf)) {
      return false;
    }
  }
  return true;
}

/// How many bytes the character at the front of a text takes; 0 when what stands there is no UTF-8.
std::size_t CharacterLength(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  for (const Form& form : Forms) {
    if (first >= form.first && first <= form.last) {
      return Fits(form, text) ? form.length : 0;
    }
  }
  return 0;
}

bool IsControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character.front());
  return character.size() == 1 ? first < 0x20 || first == 0x7f
                               : first == 0xc2 && static_cast<unsigned char>(character[1]) < 0xa0;
}

/// Most text is, and is taken in one piece.
bool IsPlain(char c) { return c >= ' ' && c <= '~' && c != '\\'; }

}  // namespace

std::string Printable(std::string_view text) {
  std::string printable;
  printable.reserve(text.size());
  AppendPrintable(printable, text);
  return printable;
}

void AppendPrintable(std::string& printable, std::string_view text) {
  for (;;) {
    const auto plain = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsPlain) - text.begin());
    printable += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) {
      return;
    }
    const std::size_t length = CharacterLength(text);
    const std::string_view character = text.substr(0, length == 0 ? 1 : length);
    if (length == 0 || IsControl(character)) {
      for (const char byte : character) {
        printable += "\\x";
        AppendHexadecimal(printable, byte);
      }
    } else {
      printable += character == "\\" ? "\\\\" : character;
    }
    text.remove_prefix(character.size());
  }
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

std::string InHexadecimal(std::string_view bytes) {
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char byte : bytes) {
    AppendHexadecimal(text, byte);
  }
  return text;
}

}  // namespace lrd
