#include "lrd/Console.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/HostSystem.h"
#include "lrd/Printable.h"

namespace lrd {

namespace {

bool readerGone = false;
/// What the system was not handed yet.
std::string waiting;

/// A person reads along; a program takes more at a time.
bool IsEnough(std::string_view text) {
  constexpr std::size_t Much = 65536;
  static const bool IsSeen = IsTerminal(stdout);
  return text.size() >= Much || (IsSeen && text.ends_with('\n'));
}

bool ShowsColours() {
  static const bool Shows = IsTerminal(stdout) && std::getenv("NO_COLOR") == nullptr;
  return Shows;
}

}  // namespace

bool Print(std::string_view text) {
  if (!readerGone) {
    waiting += text;
    if (IsEnough(waiting)) {
      FlushPrinted();
    }
  }
  return !readerGone;
}

void FlushPrinted() {
  if (const std::error_code error = WriteOut(std::exchange(waiting, {}))) {
    readerGone = true;
    if (error == std::errc::operation_canceled) {
      EndWhenAsked();
    }
    if (error != std::errc::broken_pipe) {
      throw HostError(UnusableInput, "standard output: " + error.message());
    }
  }
}

void Complain(std::string_view message) {
  const std::string line = "lrd: " + Printable(message) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Complain(const std::string& file, const std::string& message) { Complain(file + ": " + message); }

bool CanAsk() { return IsTerminal(stdin) && IsTerminal(stderr); }

bool Agrees(const std::string& question) {
  FlushPrinted();
  std::fputs(("lrd: " + Printable(question) + " [y/N] ").c_str(), stderr);
  const std::string answer = ReadLine();
  return answer == "y" || answer == "Y" || answer == "yes";
}

std::string Coloured(std::string_view text, Colour colour) {
  static constexpr std::array<std::string_view, 4> Codes = {"", "\x1b[32m", "\x1b[33m", "\x1b[31m"};
  if (colour == Colour::None || !ShowsColours()) {
    return std::string(text);
  }
  return std::string(Codes.at(static_cast<std::size_t>(colour))) + std::string(text) + "\x1b[0m";
}

}  // namespace lrd
