#include "benchmarks/Results.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

template <typename... Values>
std::string Text(const char* format, Values... values) {
  std::array<char, 512> text{};
  std::snprintf(text.data(), text.size(), format, values...);
  return text.data();
}

bool IsMemory(const Result& result) {
  return result.kind == Result::Kind::Memory || result.kind == Result::Kind::MemoryGrowth;
}

const char* UnitOf(const Result& result) { return IsMemory(result) ? "B " : "us"; }

const char* JsonUnitOf(const Result& result) {
  return IsMemory(result) ? "bytes" : result.kind == Result::Kind::Instructions ? "instructions" : "us";
}

std::string Heading(Result::Kind kind) {
  struct Columns {
    const char* what;
    const char* perObject;
    const char* floor;
  };
  constexpr std::array<Columns, 4> All = {
      {{"time", "per object", "floor"},
       {"time against that of a tenth of the objects", "per object", "of a tenth"},
       {"memory against that of a tenth of the objects", "per object", "of a tenth"},
       {"memory at the peak", "per object", "tree's own"}}};
  const Columns& columns = All.at(static_cast<std::size_t>(kind));
  return Text("\n%-52s %13s %13s %7s", columns.what, columns.perObject, columns.floor, "ratio") +
         (kind == Result::Kind::Time ? Text(" %12s %10s %7s %9s", "instructions", "floor", "ratio", "bytes") : "") +
         Text(" %7s\n", "goal");
}

/// The goal and whether it is met.
std::string GoalOf(const Result& result) {
  if (result.goal == Result::Goal::None) {
    return "";
  }
  const bool perObject = result.goal == Result::Goal::MostPerObject;
  const bool met = (perObject ? result.perObject : result.ratio) <= result.most;
  return (perObject ? Text("%6.0f %s", result.most, UnitOf(result)) : Text("%6.2f   ", result.most)) +
         (met ? "  met" : "  NOT MET");
}

}  // namespace

const Result* Results::Find(const std::string& name) const {
  const auto found = std::find_if(all_.begin(), all_.end(), [&](const Result& result) { return result.name == name; });
  return found == all_.end() ? nullptr : &*found;
}

std::string Results::Table() const {
  std::string table;
  for (const Result::Kind kind :
       {Result::Kind::Time, Result::Kind::TimeGrowth, Result::Kind::MemoryGrowth, Result::Kind::Memory}) {
    std::string lines;
    for (const Result& result : all_) {
      if (result.kind == kind) {
        lines += Text("%-52s %10.3f %s %10.3f %s %7.2f", result.name.c_str(), result.perObject, UnitOf(result),
                      result.floor, UnitOf(result), result.ratio) +
                 (kind == Result::Kind::Time ? Beside(result) : "") + " " + GoalOf(result) + "\n";
      }
    }
    table += lines.empty() ? "" : Heading(kind) + lines;
  }
  return table;
}

std::string Results::Beside(const Result& time) const {
  const Result* const instructions = Find("instructions: " + time.name);
  const Result* const growth = Find("growth of memory: " + time.name);
  const Result* const memory = growth == nullptr ? Find("memory: " + time.name) : growth;
  return (instructions == nullptr
              ? Text(" %12s %10s %7s", "", "", "")
              : Text(" %12.0f %10.0f %7.2f", instructions->perObject, instructions->floor, instructions->ratio)) +
         (memory == nullptr ? Text(" %9s", "") : Text(" %9.0f", memory->perObject));
}

std::string Results::Json() const {
  std::string json = "{";
  const char* separator = "\n";
  for (const Result& result : all_) {
    json += separator + Text(R"(  "%s": {"ratio": %.4f, )", result.name.c_str(), result.ratio);
    if (const char* const unit = JsonUnitOf(result); unit == std::string_view("us")) {
      json += Text(R"("per_object_us": %.4f, "floor_us": %.4f})", result.perObject, result.floor);
    } else {
      json += Text(R"("per_object_us": null, "floor_us": null, "per_object_%s": %.1f, "floor_%s": %.1f})", unit,
                   result.perObject, unit, result.floor);
    }
    separator = ",\n";
  }
  return json + "\n}\n";
}
