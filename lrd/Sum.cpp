#include "lrd/Sum.h"

#include <algorithm>
#include <cstdlib>

#include "lrd/Printable.h"
#include "lrd/Reasons.h"
#include "lrd/Times.h"

namespace lrd {

namespace {

using Reason = QELXVARDOSReason;
using Doubt = Reason::Doubt;

constexpr std::int64_t Hour = 3600;
constexpr std::int64_t Day = 24 * Hour;

std::string StampText(const ZYMUnicodeString& stamp) {
  const auto seconds = SecondsOf(stamp.Str());
  return seconds ? TimeText(*seconds) : Printable(stamp.View());
}

std::string DifferenceInWords(const ReasonGroup& group) {
  const auto difference = group.SameDifference();
  std::string words;
  if (difference) {
    words = "by " + DistanceText(*difference, 0);
  } else if (group.IsOffByTwoSecondsAtMost()) {
    words = "by 2 s at most";
  }
  if (group.IsOffByTwoSecondsAtMost()) {
    words += ", as on a file system that stores even seconds";
    words += group.hasEvenTimesAlone ? "; every file time is even" : "";
  } else if (difference && *difference % Hour == 0 && std::abs(*difference) < Day) {
    words += ", as where a file server has another time zone or daylight saving time";
  }
  return words;
}

/// What the objects of a group have in common, a line each.
std::vector<std::string> CommonInWords(const ReasonGroup& group) {
  std::vector<std::string> lines;
  const auto add = [&lines](const char* before, const std::string& words) {
    if (!words.empty()) {
      lines.push_back(before + words);
    }
  };
  const auto addShared = [&add](const char* before, const SharedValue& shared) {
    add(before, shared.Get() == nullptr ? "" : Printable(shared.Get()->View()));
  };
  add("", DifferenceInWords(group));
  if (group.HasFileTimesOfOneDay()) {
    add("with file times within ", DistanceText(group.fileTimes.Least(), group.fileTimes.Greatest()) + ", from " +
                                       TimeText(group.fileTimes.Least()) + " to " +
                                       TimeText(group.fileTimes.Greatest()));
  }
  add("with the record stamp ", group.recordStamp.Get() == nullptr ? "" : StampText(*group.recordStamp.Get()));
  addShared("of format version ", group.formatVersion);
  addShared("by the record file ", group.recordFile);
  addShared("in folder ", group.folder);
  return lines;
}

const char* ReasonInWords(const ReasonGroup& group) {
  return group.verdict == Verdict::NotReached ? "not reached" : InWords(group.kind);
}

const char* VerdictInWords(Verdict verdict) {
  return verdict == Verdict::Damaged || verdict == Verdict::NotReached ? "without a verdict" : WordFor(verdict).status;
}

Json CommonAsJson(const ReasonGroup& group) {
  Json common = Json::object();
  if (const auto difference = group.SameDifference()) {
    common["difference"] = *difference;
  }
  if (group.IsOffByTwoSecondsAtMost()) {
    common["differenceAtMost"] = 2;
    common["evenFileTimes"] = group.hasEvenTimesAlone;
  }
  if (group.HasFileTimesOfOneDay()) {
    common["fileTimes"] = {TimeText(group.fileTimes.Least()), TimeText(group.fileTimes.Greatest())};
  }
  const auto put = [&common](const char* name, const SharedValue& shared) {
    if (shared.Get() != nullptr) {
      PutText(common, name, shared.Get()->Str());
    }
  };
  put("recordStamp", group.recordStamp);
  put("formatVersion", group.formatVersion);
  put("recordFile", group.recordFile);
  put("folder", group.folder);
  return common;
}

}  // namespace

void SharedValue::Add(const ZYMUnicodeString& value) {
  if (isFirst_) {
    value_ = value;
    isFirst_ = false;
  } else if (isShared_) {
    isShared_ = value_ == value;
  }
}

void TimeRange::Add(std::int64_t time) {
  least_ = std::min(count_ == 0 ? time : least_, time);
  greatest_ = std::max(count_ == 0 ? time : greatest_, time);
  ++count_;
}

void ReasonGroup::Add(const ExplainedObject& object) {
  verdict = object.verdict;
  ++count;
  folder.Add(object.folder);
  if (object.reason == nullptr) {
    return;
  }
  const Reason& reason = *object.reason;
  kind = reason.kind;
  recordFile.Add(reason.recordFile);
  recordStamp.Add(reason.recordStamp);
  formatVersion.Add(reason.formatVersion);
  if (IsOfTimes() && reason.fileStamp) {
    fileTimes.Add(*reason.fileStamp);
    hasEvenTimesAlone = hasEvenTimesAlone && *reason.fileStamp % 2 == 0;
    const auto recordTime = SecondsOf(reason.recordStamp.Str());
    if (const auto difference = recordTime ? Difference(*reason.fileStamp, *recordTime) : std::nullopt) {
      differences.Add(*difference);
    }
  }
}

bool ReasonGroup::IsOfTimes() const { return kind == Reason::Kind::FileNewer || kind == Reason::Kind::FileOlder; }

std::optional<std::int64_t> ReasonGroup::SameDifference() const {
  const bool isSame = IsOfTimes() && differences.Count() == count && differences.Least() == differences.Greatest();
  return isSame ? std::optional(differences.Least()) : std::nullopt;
}

bool ReasonGroup::IsOffByTwoSecondsAtMost() const {
  return IsOfTimes() && differences.Count() == count && differences.Least() >= -2 && differences.Greatest() <= 2;
}

bool ReasonGroup::HasFileTimesOfOneDay() const {
  return IsOfTimes() && count > 1 && Difference(fileTimes.Greatest(), fileTimes.Least()).value_or(Day + 1) <= Day;
}

void Sum::Take(const ExplainedObject& object) {
  const auto kind = object.reason == nullptr ? Reason::Kind::NoRecord : object.reason->kind;
  groups_[{object.verdict, kind}].Add(object);
  verdicts_.Add(object.verdict);
  if (object.reason != nullptr) {
    for (const Doubt doubt : DetailsOf(*object.reason).doubts) {
      ++doubts_[doubt];
    }
  }
}

void Sum::TakeSharing(std::size_t /*number*/, const ZYMUnicodeString& /*with*/) { ++sharing_; }

std::vector<const ReasonGroup*> Sum::Sorted() const {
  std::vector<const ReasonGroup*> sorted;
  for (const auto& [key, group] : groups_) {
    sorted.push_back(&group);
  }
  // Of equals that one first which somebody asks about.
  const auto rank = [](const ReasonGroup* group) {
    return std::make_pair(group->count, group->verdict != Verdict::Exists);
  };
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&rank](const ReasonGroup* a, const ReasonGroup* b) { return rank(a) > rank(b); });
  return sorted;
}

std::string Sum::InWords() const {
  std::string text = verdicts_.InWords() + "\n";
  for (const ReasonGroup* group : Sorted()) {
    text += std::to_string(group->count) + " " + VerdictInWords(group->verdict) + ": " + ReasonInWords(*group) + "\n";
    for (const std::string& line : CommonInWords(*group)) {
      text += (group->count == 1 ? "    " : "    all ") + line + "\n";
    }
  }
  for (const auto& [doubt, count] : doubts_) {
    text += std::to_string(count) + " doubtful: " + lrd::InWords(doubt) + "\n";
  }
  if (sharing_ > 0) {
    text += std::to_string(sharing_) + " doubtful: " + SharingInWords + "\n";
  }
  return text;
}

void Sum::PutInto(Json& json) const {
  json["sum"] = Json::array();
  for (const ReasonGroup* group : Sorted()) {
    json["sum"].push_back({{"count", group->count},
                           {"status", VerdictInWords(group->verdict)},
                           {"reason", ReasonInWords(*group)},
                           {"common", CommonAsJson(*group)}});
  }
  json["doubts"] = Json::array();
  for (const auto& [doubt, count] : doubts_) {
    json["doubts"].push_back({{"count", count}, {"doubt", lrd::InWords(doubt)}});
  }
  if (sharing_ > 0) {
    json["doubts"].push_back({{"count", sharing_}, {"doubt", SharingInWords}});
  }
}

}  // namespace lrd
