#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

/// One way to do a piece of work.
class Variant {
 public:
  Variant() = default;
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  virtual ~Variant() = default;

  /// Before each run, not timed.
  virtual void Prepare() = 0;
  /// What is timed.
  virtual void Run() = 0;
  /// After the first run, not timed: throws when the work was not done as expected.
  virtual void Check() = 0;
  /// The program that does the work, with its arguments; empty where this process does it.
  virtual std::vector<std::string> Program() const { return {}; }
};

using MakeVariant = std::function<std::unique_ptr<Variant>()>;

/// Something that does the same work as the module, or less.
struct Reference {
  /// What it is; empty for the floor.
  std::string name;
  /// The most that the subject should take, as a multiple; 0 for none.
  double goal = 0;
  MakeVariant make;
};

/// A piece of work done by the module and by its references, which are run in turn.
struct Comparison {
  std::string work;
  int objects = 0;
  MakeVariant subject;
  std::vector<Reference> references;
  /// Only lets the caller's tree grow as the subject does; memory that is not the subject's own. May be empty.
  MakeVariant growth = nullptr;
  /// The most bytes for an object beyond that; 0 for no goal.
  double mostBytes = 0;
  /// From how many objects on ten times as many are not to take more than twelve times as much.
  int leastGrowthGoal = 100000;
  /// How many times as many runs as others: short ones need more.
  int repeats = 1;

  std::string Name() const { return work + "/" + std::to_string(objects); }
  /// null when there is none.
  const Reference* Floor() const {
    const auto floor = std::ranges::find(references, "", &Reference::name);
    return floor == references.end() ? nullptr : &*floor;
  }
  std::string Name(const Reference& reference) const {
    return work + (reference.name.empty() ? "" : " to " + reference.name) + "/" + std::to_string(objects);
  }
};

/// Where the benchmarks work and how much.
struct Settings {
  /// A folder of their own on the disk that is measured.
  std::string data = "data";
  /// The folder with this program and lrd.
  std::string programs;
  std::vector<int> sizes = {1000, 10000, 100000};
  /// Runs of each variant, of which the median counts.
  int runs = 5;
  /// The most objects that are recorded, and the most whose records are replaced: more take minutes.
  int mostRecorded = 10000;
  int mostReplaced = 1000;
};

std::vector<Comparison> RecognitionComparisons(const Settings& settings);
std::vector<Comparison> RecordingComparisons(const Settings& settings);
std::vector<Comparison> TreeComparisons(const Settings& settings);
std::vector<Comparison> ProcessComparisons(const Settings& settings);

/// For work of so many objects that leaves nothing behind.
inline int RepeatsOf(int objects) { return objects <= 1000 ? 5 : 1; }

inline void Expect(bool asExpected, const std::string& what) {
  if (!asExpected) {
    throw std::runtime_error("not as expected: " + what);
  }
}
