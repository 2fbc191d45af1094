#include "lrd/Console.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "lrd/HostError.h"
#include "lrd/HostSystem.h"
#include "lrd/Printable.h"

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

std::string Coloured(std::string_view text, Colour colour) {
  static constexpr std::array<std::string_view, 4> Codes = {"", "\x1b[32m", "\x1b[33m", "\x1b[31m"};
  if (colour == Colour::None || !ShowsColours()) {
    return std::string(text);
  }
  return std::string(Codes.at(static_cast<std::size_t>(colour))) + std::string(text) + "\x1b[0m";
}

}  // namespace lrd
