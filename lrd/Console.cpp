#include "lrd/Console.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "lrd/HostError.h"
#include "lrd/HostSystem.h"

namespace lrd {

namespace {

bool readerGone = false;

bool Accepted(bool written) {
  if (!written && errno == EPIPE) {
    readerGone = true;
  } else if (!written) {
    const std::string reason = std::generic_category().message(errno);
    readerGone = true;
    throw HostError(UnusableInput, "standard output: " + reason);
  }
  return written;
}

std::string Escaped(char c) {
  static constexpr std::string_view Digits = "0123456789abcdef";
  switch (c) {
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '\r':
      return "\\r";
    default:
      return {'\\', 'x', Digits[static_cast<unsigned char>(c) >> 4U], Digits[static_cast<unsigned char>(c) & 15U]};
  }
}

bool ShowsColours() {
  static const bool Shows = IsTerminal(stdout) && std::getenv("NO_COLOR") == nullptr;
  return Shows;
}

}  // namespace

bool Print(std::string_view text) {
  return !readerGone && Accepted(std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
}

void FlushPrinted() {
  if (!readerGone) {
    Accepted(std::fflush(stdout) == 0);
  }
}

void Complain(std::string_view message) {
  const std::string line = "lrd: " + Printable(message) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Complain(const std::string& file, const std::string& message) { Complain(file + ": " + message); }

std::string Printable(std::string_view text) {
  std::string printable;
  printable.reserve(text.size());
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
      printable += Escaped(c);
    } else {
      printable += c;
    }
  }
  return printable;
}

std::string Coloured(std::string_view text, Colour colour) {
  static constexpr std::array<std::string_view, 4> Codes = {"", "\x1b[32m", "\x1b[33m", "\x1b[31m"};
  if (colour == Colour::None || !ShowsColours()) {
    return std::string(text);
  }
  return std::string(Codes.at(static_cast<std::size_t>(colour))) + std::string(text) + "\x1b[0m";
}

}  // namespace lrd
