#include "lrd/Explanation.h"

#include <algorithm>
#include <utility>

#include "lrd/Endings.h"
#include "lrd/Printable.h"
#include "lrd/Reasons.h"
#include "lrd/RecordFiles.h"
#include "platform/ZYMIDOMLook.h"

namespace lrd {

namespace {

template <typename Visit>
void ForEachObject(const ZYMIDOMElement_var& request, const Visit& visit) {
  if (const ZYMIDOMElement_var list = FirstElement(request, "cadobjectlist")) {
    std::size_t number = 0;
    ForEachChildElement(list, [&](const ZYMIDOMElement_var& object) { return visit(number++, object); });
  }
}

const ZYMUnicodeString CadId("cadid");
const ZYMUnicodeString Folder("dirname");
const ZYMUnicodeString Name("filename");
const ZYMUnicodeString Status("status");

void AppendLine(std::string& text, const ExplainedObject& object) {
  text += {WordFor(object.verdict).letter, ' '};
  AppendPrintable(text, object.cadId.View());
  text += ' ';
  AppendPrintable(text, object.folder.View());
  text += object.folder.IsEmpty() ? "" : "/";
  AppendPrintable(text, object.name.View());
  text += ": ";
  if (object.reason == nullptr) {
    text += "not reached";
    return;
  }
  AppendReason(text, *object.reason);
  if (!object.reason->failure.IsEmpty()) {
    AppendPrintable(text += ": ", object.reason->failure.View());
  }
  AppendDoubts(text, *object.reason);
}

}  // namespace

std::string ExplainedObject::Path() const { return Join(folder.Str(), name.Str()); }

std::optional<std::string> Explainer::Choose(const std::vector<std::string>& cadIds) {
  std::set<std::string, std::less<>> missing(cadIds.begin(), cadIds.end());
  const std::set<std::string, std::less<>> wanted = missing;
  chosen_.emplace();
  ForEachObject(request_, [&](std::size_t number, const ZYMIDOMElement_var& object) {
    const ZYMUnicodeString cadId = Attribute(object, CadId);
    if (wanted.contains(cadId.View())) {
      chosen_->insert(number);
      missing.erase(cadId.Str());
    }
    return true;
  });
  return missing.empty() ? std::nullopt : std::optional(*missing.begin());
}

void Explainer::Decided(const ZYMIDOMElement_var& object, const QELXVARDOSReason& reason) {
  Take(object, &reason);
  ++decided_;
}

void Explainer::Take(const ZYMIDOMElement_var& object, const QELXVARDOSReason* reason) {
  const bool wantsDetails = !detailSinks_.empty() && IsChosen(decided_);
  if (sinks_.empty() && !wantsDetails) {
    return;
  }
  object_.number = decided_;
  object_.reason = reason;
  object->getAttribute(CadId, object_.cadId);
  object->getAttribute(Folder, object_.folder);
  object->getAttribute(Name, object_.name);
  object_.verdict = reason == nullptr ? Verdict::NotReached : VerdictOf(Attribute(object, Status));
  for (ExplanationSink* sink : sinks_) {
    sink->Take(object_);
  }
  if (wantsDetails) {
    for (ExplanationSink* sink : detailSinks_) {
      sink->Take(object_);
    }
  }
}

void Explainer::SharedRecordFile(int first, int other) {
  TellSharing(first, other);
  TellSharing(other, first);
}

void Explainer::TellSharing(int number, int with) {
  if (IsChosen(static_cast<std::size_t>(number)) && sharing_.insert(number).second) {
    for (ExplanationSink* sink : detailSinks_) {
      sink->TakeSharing(static_cast<std::size_t>(number), CadIdOf(static_cast<std::size_t>(with)));
    }
  }
}

const ZYMUnicodeString& Explainer::CadIdOf(std::size_t number) {
  if (cadIds_.empty()) {
    ForEachObject(request_, [this](std::size_t, const ZYMIDOMElement_var& object) {
      cadIds_.push_back(Attribute(object, CadId));
      return true;
    });
  }
  return cadIds_.at(number);
}

void Explainer::Finish() {
  const std::size_t reached = decided_;
  if (!detailSinks_.empty()) {
    ForEachObject(request_, [&](std::size_t number, const ZYMIDOMElement_var& object) {
      if (number >= reached) {
        decided_ = number;
        Take(object, nullptr);
      }
      return true;
    });
  }
}

void ExplanationLines::Take(const ExplainedObject& object) {
  AppendLine(text_, object);
  lines_.push_back({object.number, text_.size(), WordFor(object.verdict).colour});
}

void ExplanationLines::TakeSharing(std::size_t number, const ZYMUnicodeString& with) {
  AppendSharing(later_[number], with);
}

void ExplanationLines::Print() const {
  std::size_t begin = 0;
  for (const Line& line : lines_) {
    EndWhenAsked();
    const std::string_view text = std::string_view(text_).substr(begin, line.end - begin);
    const auto later = later_.find(line.number);
    const std::string whole = later == later_.end() ? std::string(text) : std::string(text) + later->second;
    if (!lrd::Print(Coloured(whole, line.colour) + "\n")) {
      return;
    }
    begin = line.end;
  }
}

void ExplanationJson::Take(const ExplainedObject& object) {
  Json json;
  PutText(json, "cadid", object.cadId.Str());
  PutText(json, "path", object.Path());
  json["letter"] = std::string(1, WordFor(object.verdict).letter);
  const bool hasVerdict = object.verdict != Verdict::Damaged && object.verdict != Verdict::NotReached;
  json["status"] = hasVerdict ? WordFor(object.verdict).status : "";
  if (object.reason != nullptr) {
    PutReason(json, *object.reason);
  }
  objects_.push_back(std::move(json));
  numbers_.push_back(object.number);
}

void ExplanationJson::TakeSharing(std::size_t number, const ZYMUnicodeString& with) {
  const auto place = std::lower_bound(numbers_.begin(), numbers_.end(), number);
  PutSharing(objects_[static_cast<std::size_t>(place - numbers_.begin())], with);
}

void FailedObjects::Take(const ExplainedObject& object) {
  if (object.verdict == Verdict::Damaged && object.reason != nullptr) {
    failures_.emplace_back(
        object.Path(), "object " + object.cadId.Str() + " is left without a verdict: " + object.reason->failure.Str());
  }
}

bool FailedObjects::Complain() const {
  for (const auto& [path, failure] : failures_) {
    lrd::Complain(path, failure);
  }
  return failures_.empty();
}

}  // namespace lrd
