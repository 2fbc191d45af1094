#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "lrd/Explanation.h"

namespace lrd {

/// A value that all objects of a group share, as long as they do.
class SharedValue {
 public:
  void Add(const ZYMUnicodeString& value);
  /// Null when it differs, or is empty in all.
  const ZYMUnicodeString* Get() const { return isShared_ && !value_.IsEmpty() ? &value_ : nullptr; }

 private:
  ZYMUnicodeString value_;
  bool isFirst_ = true;
  bool isShared_ = true;
};

/// The least and the greatest of some times, or of differences of times.
class TimeRange {
 public:
  void Add(std::int64_t time);
  std::int64_t Least() const { return least_; }
  std::int64_t Greatest() const { return greatest_; }
  std::size_t Count() const { return count_; }

 private:
  std::int64_t least_ = 0;
  std::int64_t greatest_ = 0;
  std::size_t count_ = 0;
};

/// The objects that got one verdict for one reason, and what is the same in all of them.
struct ReasonGroup {
  void Add(const ExplainedObject& object);

  bool IsOfTimes() const;
  /// How far each file's time is off, if all are off by as much.
  std::optional<std::int64_t> SameDifference() const;
  /// As on a file system that stores even seconds alone.
  bool IsOffByTwoSecondsAtMost() const;
  bool HasFileTimesOfOneDay() const;

  Verdict verdict = Verdict::NotReached;
  QELXVARDOSReason::Kind kind{};
  std::size_t count = 0;
  TimeRange differences{};
  TimeRange fileTimes{};
  bool hasEvenTimesAlone = true;
  SharedValue folder{};
  SharedValue recordFile{};
  SharedValue recordStamp{};
  SharedValue formatVersion{};
};

/// The reasons of a recognition with how many objects each decided, what these have in common, and how many objects are
/// in which doubt. All of it is counted.
class Sum : public ExplanationSink {
 public:
  void Take(const ExplainedObject& object) override;
  void TakeSharing(std::size_t number, const ZYMUnicodeString& with) override;

  std::string InWords() const;
  void PutInto(Json& json) const;

 private:
  /// The largest first.
  std::vector<const ReasonGroup*> Sorted() const;

  std::map<std::pair<Verdict, QELXVARDOSReason::Kind>, ReasonGroup> groups_;
  std::map<QELXVARDOSReason::Doubt, std::size_t> doubts_;
  std::size_t sharing_ = 0;
  VerdictCounts verdicts_;
};

}  // namespace lrd
