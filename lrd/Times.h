#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace lrd {

/// The number that a stamp holds; none for a stamp that is no whole number of seconds in its plain form.
std::optional<std::int64_t> SecondsOf(const std::string& stamp);
/// "2023-11-14 22:13:20 UTC"; the bare number for a year that people do not write.
std::string TimeText(std::int64_t seconds);
/// How far two times are apart, whichever is the later: "1 d 2 h 3 min 4 s", parts that are zero left out; "0 s" for
/// none at all.
std::string DistanceText(std::int64_t time, std::int64_t other);
/// time - other; none when no number of this size holds it.
std::optional<std::int64_t> Difference(std::int64_t time, std::int64_t other);

}  // namespace lrd
