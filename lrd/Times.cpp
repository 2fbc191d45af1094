#include "lrd/Times.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace lrd {

std::optional<std::int64_t> SecondsOf(const std::string& stamp) {
  std::int64_t seconds = 0;
  std::from_chars(stamp.data(), stamp.data() + stamp.size(), seconds);
  return std::to_string(seconds) == stamp ? std::optional(seconds) : std::nullopt;
}

std::string TimeText(std::int64_t seconds) {
  constexpr std::int64_t Year9999 = 253402300799;
  if (seconds < -Year9999 || seconds > Year9999) {
    return std::to_string(seconds) + " s";
  }
  const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d UTC", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
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
