#pragma once

#include <string>
#include <vector>

/// One line of what was found.
struct Result {
  /// What perObject and floor are. Memory: a subject's own, and what the caller's tree grows by meanwhile.
  enum class Kind { Time, TimeGrowth, MemoryGrowth, Memory };
  enum class Goal { None, MostRatio, MostPerObject };

  std::string name;
  double ratio = 0;
  /// For an object: microseconds, or bytes of memory.
  double perObject = 0;
  double floor = 0;
  Goal goal = Goal::None;
  double most = 0;
  Kind kind = Kind::Time;
};

class Results {
 public:
  void Add(Result result) { all_.push_back(std::move(result)); }
  /// null when there is none of that name.
  const Result* Find(const std::string& name) const;
  const std::vector<Result>& All() const { return all_; }

  /// A table for people.
  std::string Table() const;
  /// An object of name to {"ratio", "per_object_us", "floor_us"}, these two null and "…_bytes" beside them
  /// where memory was measured.
  std::string Json() const;

 private:
  std::vector<Result> all_;
};
