#include "lrd/Verdict.h"

#include "platform/ZYMIDOMLook.h"

namespace lrd {

const VerdictWord& WordFor(Verdict verdict) {
  static constexpr std::array Words = {
      VerdictWord{'E', "EXISTS", Colour::Green}, VerdictWord{'M', "MODIFIED", Colour::Yellow},
      VerdictWord{'?', "UNKNOWN", Colour::Red},  VerdictWord{'X', "DAMAGED", Colour::Red},
      VerdictWord{'!', "GONE", Colour::Red},     VerdictWord{'-', "NOT REACHED", Colour::None}};
  return Words.at(static_cast<std::size_t>(verdict));
}

Verdict VerdictOf(const ZYMUnicodeString& status) {
  return status == "EXISTS"     ? Verdict::Exists
         : status == "MODIFIED" ? Verdict::Modified
         : status == "UNKNOWN"  ? Verdict::Unknown
                                : Verdict::Damaged;
}

VerdictCounts::VerdictCounts(const ZYMIDOMElement_var& request) {
  if (const ZYMIDOMElement_var list = FirstElement(request, "cadobjectlist")) {
    ForEachChildElement(list, [this](const ZYMIDOMElement_var& object) {
      Add(VerdictOf(Attribute(object, "status")));
      return true;
    });
  }
}

void VerdictCounts::Add(Verdict verdict) {
  ++all_;
  if (static_cast<std::size_t>(verdict) < counts_.size()) {
    ++counts_.at(static_cast<std::size_t>(verdict));
  }
}

std::string VerdictCounts::InWords() const {
  std::string line = std::to_string(all_) + (all_ == 1 ? " object" : " objects");
  const char* separator = ": ";
  std::size_t counted = 0;
  for (const Verdict verdict : {Verdict::Exists, Verdict::Modified, Verdict::Unknown}) {
    const std::size_t count = counts_.at(static_cast<std::size_t>(verdict));
    line += separator + std::to_string(count) + " " + WordFor(verdict).status;
    counted += count;
    separator = ", ";
  }
  return counted == all_ ? line : line + ", " + std::to_string(all_ - counted) + " without a verdict";
}

}  // namespace lrd
