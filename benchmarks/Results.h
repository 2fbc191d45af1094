#pragma once

#include <string>
#include <vector>

/// One line of what was found.
struct Result {
  /// What perObject and floor are. Memory: a subject's own, and what the caller's tree grows by meanwhile.
  enum class Kind { Time, TimeGrowth, MemoryGrowth, Memory, Instructions };
  enum class Goal { None, MostRatio, MostPerObject };

  std::string name;
  double ratio = 0;
  /// For an object: microseconds, instructions, or bytes of memory.
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

  /// A table for people; beside a time stand the instructions and the bytes of the same work where they were measured.
  std::string Table() const;
  /// An object of name to {"ratio", "per_object_us", "floor_us"}, these two null and "…_bytes" or "…_instructions"
  /// beside them where such were measured.
  std::string Json() const;

 private:
  std::string Beside(const Result& time) const;

  std::vector<Result> all_;
};
