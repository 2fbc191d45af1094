#include "lrd/Times.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>

namespace lrd {

std::optional<std::int64_t> SecondsOf(const std::string& stamp) {
  std::int64_t seconds = 0;
  std::from_chars(stamp.data(), stamp.data() + stamp.size(), seconds);
  return std::to_string(seconds) == stamp ? std::optional(seconds) : std::nullopt;
}

namespace {

void AppendDigits(std::string& text, std::uint64_t number, int digits) {
  for (std::uint64_t place = digits == 4 ? 1000 : 10; place > 0; place /= 10) {
    text += static_cast<char>('0' + number / place % 10);
  }
}

}  // namespace

/// Written digit by digit, since lists of objects have two times a line.
std::string TimeText(std::int64_t seconds) {
  constexpr std::int64_t Year0 = -62167219200;
  constexpr std::int64_t Year9999 = 253402300799;
  if (seconds < Year0 || seconds > Year9999) {
    return std::to_string(seconds) + " s";
  }
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::string text;
  text.reserve(32);
  AppendDigits(text, static_cast<unsigned>(static_cast<int>(date.year())), 4);
  AppendDigits(text += '-', static_cast<unsigned>(date.month()), 2);
  AppendDigits(text += '-', static_cast<unsigned>(date.day()), 2);
  AppendDigits(text += ' ', static_cast<std::uint64_t>(clock.hours().count()), 2);
  AppendDigits(text += ':', static_cast<std::uint64_t>(clock.minutes().count()), 2);
  AppendDigits(text += ':', static_cast<std::uint64_t>(clock.seconds().count()), 2);
  return text += " UTC";
}

std::string DistanceText(std::int64_t time, std::int64_t other) {
  struct Unit {
    std::uint64_t length;
    const char* name;
  };
  constexpr std::array Units = {Unit{86400, "d"}, Unit{3600, "h"}, Unit{60, "min"}, Unit{1, "s"}};
  // Unsigned numbers hold the distance of any two.
  const auto [earlier, later] = std::minmax(time, other);
  std::uint64_t rest = static_cast<std::uint64_t>(later) - static_cast<std::uint64_t>(earlier);
  std::string text;
  for (const Unit& unit : Units) {
    if (rest >= unit.length) {
      text += (text.empty() ? "" : " ") + std::to_string(rest / unit.length) + " " + unit.name;
      rest %= unit.length;
    }
  }
  return text.empty() ? "0 s" : text;
}

std::optional<std::int64_t> Difference(std::int64_t time, std::int64_t other) {
  const auto difference =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(time) - static_cast<std::uint64_t>(other));
  return (difference < 0) == (time < other) ? std::optional(difference) : std::nullopt;
}

}  // namespace lrd
