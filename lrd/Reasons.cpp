#include "lrd/Reasons.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <vector>

#include "lrd/Printable.h"
#include "lrd/Times.h"

namespace lrd {

namespace {

using Reason = QELXVARDOSReason;
using Kind = Reason::Kind;
using Doubt = Reason::Doubt;

template <typename Of>
struct Words {
  Of of;
  const char* words;
};

constexpr std::array Reasons = {
    Words<Kind>{Kind::PhysicalIdGiven, "the request gives its physical id"},
    Words<Kind>{Kind::NoPhysicalId, "no physical id, and the command runs without records"},
    Words<Kind>{Kind::MarkedAsModified, "the request marks it as modified"},
    Words<Kind>{Kind::MarkedAsNew, "the request marks it as new"},
    Words<Kind>{Kind::StampsAgree, "stamps agree"},
    Words<Kind>{Kind::FileNewer, "file is newer than its record"},
    Words<Kind>{Kind::FileOlder, "file is older than its record"},
    Words<Kind>{Kind::RecordWithoutStamp, "record has no stamp"},
    Words<Kind>{Kind::StampIsNoTime, "record has a stamp that is no time"},
    Words<Kind>{Kind::ObjectFileGone, "object file gone"},
    Words<Kind>{Kind::EntryOfRelationship, "entry found by its relationship"},
    Words<Kind>{Kind::EntryOfIdentifier, "entry found by its identifier"},
    Words<Kind>{Kind::EntryWithoutPhysicalId, "entry without a physical id"},
    Words<Kind>{Kind::NoSuchEntry, "record has no such entry"},
    Words<Kind>{Kind::NoIdentifier, "nothing to look an entry up by"},
    Words<Kind>{Kind::NoRecord, "no record"},
    Words<Kind>{Kind::UnknownFormat, "record of an unknown format version"},
    Words<Kind>{Kind::NoKnownRecord, "record file that holds no record"},
    Words<Kind>{Kind::RecordDamaged, "record damaged"},
    Words<Kind>{Kind::CannotBeLookedAt, "could not be looked at"},
};

constexpr std::array Doubts = {
    Words<Doubt>{Doubt::ChangedWithinSecond, "file may have changed within the second of its stamp"},
    Words<Doubt>{Doubt::MayHaveChangedWithinSecond,
                 "whether the file changed within the second of its stamp cannot be told"},
    Words<Doubt>{Doubt::TimeInFuture, "a time lies in the future"},
    Words<Doubt>{Doubt::OlderThanRecord, "file is older than its record says"},
    Words<Doubt>{Doubt::RecordWithoutPhysicalId, "its record has no physical id"},
    Words<Doubt>{Doubt::EntryOfOlderFormat, "entry of a record of an older format than its own"},
};

static_assert(Reasons.size() == static_cast<std::size_t>(Kind::UnknownFormat) + 1);
static_assert(Doubts.size() == static_cast<std::size_t>(Doubt::EntryOfOlderFormat) + 1);

template <typename Of, typename Table>
const char* Find(const Table& table, Of of) {
  return std::find_if(table.begin(), table.end(), [of](const Words<Of>& row) { return row.of == of; })->words;
}

/// Facts behind a reason: " (a, b)".
class Facts {
 public:
  explicit Facts(std::string& line) : line_(line) {}
  Facts(const Facts&) = delete;
  Facts& operator=(const Facts&) = delete;
  ~Facts() {
    if (!isFirst_) {
      line_ += ')';
    }
  }

  std::string& Add(std::string_view name) {
    line_ += isFirst_ ? " (" : ", ";
    isFirst_ = false;
    return line_ += name;
  }
  void AddText(std::string_view name, const ZYMUnicodeString& text) {
    if (!text.IsEmpty()) {
      AppendPrintable(Add(name), text.View());
    }
  }
  void AddTexts(std::string_view name, const std::vector<ZYMUnicodeString>& texts) {
    for (const ZYMUnicodeString& text : texts) {
      AddText(name, text);
    }
  }

 private:
  std::string& line_;
  bool isFirst_ = true;
};

void AddTimes(Facts& facts, const Reason& reason) {
  const auto recordStamp = SecondsOf(reason.recordStamp.Str());
  const std::string file = reason.fileStamp ? TimeText(*reason.fileStamp) : "";
  if (reason.fileStamp) {
    facts.Add("file ") += file;
  }
  if (recordStamp) {
    facts.Add("record ") += recordStamp == reason.fileStamp ? file : TimeText(*recordStamp);
  } else {
    facts.AddText("record stamp ", reason.recordStamp);
  }
  if (reason.fileStamp && recordStamp) {
    facts.Add("difference ") += DistanceText(*reason.fileStamp, *recordStamp);
  }
}

/// "2023-11-14 22:13:20.250000000 UTC"
std::string ExactText(const Reason::Time& time) {
  std::string text = TimeText(time.seconds);
  if (time.nanoseconds && text.ends_with(" UTC")) {
    std::array<char, 16> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%09d", static_cast<int>(*time.nanoseconds));
    text.insert(text.size() - 4, fraction.data());
  }
  return text;
}

/// What a doubt rests on beyond the facts of the reason.
void AddBasis(Facts& facts, const Reason::Details& reason, Doubt doubt) {
  if (doubt == Doubt::ChangedWithinSecond || doubt == Doubt::MayHaveChangedWithinSecond) {
    facts.Add("file ") += ExactText(reason.fileTime);
    facts.Add("record file ") += ExactText(reason.recordFileTime);
  } else if (doubt == Doubt::EntryOfOlderFormat) {
    facts.AddText("own format version ", reason.ownFormatVersion);
  }
}

void PutTimes(Json& json, const Reason& reason) {
  const auto recordStamp = SecondsOf(reason.recordStamp.Str());
  if (reason.fileStamp) {
    json["fileStamp"] = *reason.fileStamp;
    json["fileTime"] = TimeText(*reason.fileStamp);
  }
  if (recordStamp) {
    json["recordStamp"] = *recordStamp;
    json["recordTime"] = TimeText(*recordStamp);
  }
  if (reason.fileStamp && recordStamp) {
    if (const auto difference = Difference(*reason.fileStamp, *recordStamp)) {
      json["difference"] = *difference;
    }
  }
}

void PutTexts(Json& json, const char* name, const char* member, const std::vector<ZYMUnicodeString>& texts) {
  for (const ZYMUnicodeString& text : texts) {
    PutText(json[name].emplace_back(), member, text.Str());
  }
}

Json AsJson(const Reason::Details& reason, Doubt doubt) {
  Json json{{"doubt", InWords(doubt)}};
  if (doubt == Doubt::ChangedWithinSecond || doubt == Doubt::MayHaveChangedWithinSecond) {
    json["fileTime"] = ExactText(reason.fileTime);
    json["recordFileTime"] = ExactText(reason.recordFileTime);
  } else if (doubt == Doubt::EntryOfOlderFormat) {
    PutText(json, "ownFormatVersion", reason.ownFormatVersion.Str());
  }
  return json;
}

}  // namespace

const Reason::Details& DetailsOf(const Reason& reason) {
  static const Reason::Details None;
  return reason.details == nullptr ? None : *reason.details;
}

const char* InWords(Kind reason) { return Find(Reasons, reason); }

const char* InWords(Doubt doubt) { return Find(Doubts, doubt); }

void AppendReason(std::string& line, const Reason& reason) {
  line += InWords(reason.kind);
  Facts facts(line);
  AddTimes(facts, reason);
  facts.AddText("record file ", reason.recordFile);
  facts.AddText("format version ", reason.formatVersion);
  facts.AddText("identifier ", reason.identifier);
  facts.AddText("relationship ", reason.relationship);
  facts.AddTexts("but an entry ", DetailsOf(reason).nearMisses);
  facts.AddTexts("and there is no ", reason.missingRecordFiles);
}

void AppendDoubts(std::string& line, const Reason& reason) {
  const char* before = "; doubtful: ";
  const Reason::Details& details = DetailsOf(reason);
  for (const Doubt doubt : details.doubts) {
    line += before;
    line += InWords(doubt);
    Facts facts(line);
    AddBasis(facts, details, doubt);
    before = "; ";
  }
}

void PutReason(Json& json, const Reason& reason) {
  json["reason"] = InWords(reason.kind);
  PutTimes(json, reason);
  const auto put = [&json](const char* name, const ZYMUnicodeString& text) {
    if (!text.IsEmpty()) {
      PutText(json, name, text.Str());
    }
  };
  if (!SecondsOf(reason.recordStamp.Str())) {
    put("recordStampText", reason.recordStamp);
  }
  put("recordFile", reason.recordFile);
  put("formatVersion", reason.formatVersion);
  put("identifier", reason.identifier);
  put("relationship", reason.relationship);
  put("failure", reason.failure);
  const Reason::Details& details = DetailsOf(reason);
  PutTexts(json, "nearMisses", "identifier", details.nearMisses);
  PutTexts(json, "missingRecordFiles", "path", reason.missingRecordFiles);
  for (const Doubt doubt : details.doubts) {
    json["doubts"].push_back(AsJson(details, doubt));
  }
}

void AppendSharing(std::string& line, const ZYMUnicodeString& with) {
  line += std::string("; doubtful: ") + SharingInWords;
  Facts(line).AddText("with object ", with);
}

void PutSharing(Json& json, const ZYMUnicodeString& with) {
  Json doubt{{"doubt", SharingInWords}};
  PutText(doubt, "with", with.Str());
  json["doubts"].push_back(std::move(doubt));
}

std::string ReasonsHelp() {
  std::string text = "Reasons that --explain gives:\n";
  for (const auto& row : Reasons) {
    text += std::string("  ") + row.words + "\n";
  }
  text += "\nWhat it finds doubtful:\n";
  for (const auto& row : Doubts) {
    text += std::string("  ") + row.words + "\n";
  }
  return text + "  " + SharingInWords + "\n";
}

}  // namespace lrd
