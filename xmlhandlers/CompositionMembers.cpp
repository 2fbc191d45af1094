#include "xmlhandlers/CompositionMembers.h"

#include <utility>

#include "component/QELXIVARDOSLRDObject.h"

using Record = QELXIVARDOSLRDObject_var;

const std::vector<Record>& CompositionMembers::Lacking(const Record& composition) {
  const auto [place, isNew] = lacking_.try_emplace(composition.Get());
  std::vector<Record>& lacking = place->second;
  if (isNew) {
    for (const ZYMUnicodeString& id : composition->GetCompositionList()) {
      Record member = records_[id];
      if (member.IsNull() || !Holds(member, composition)) {
        lacking.push_back(std::move(member));
      }
    }
  }
  return lacking;
}

bool CompositionMembers::Holds(const Record& member, const Record& child) {
  Held& held = held_[member.Get()];
  const QELXIVARDOSLRDObject_varList& children = member->GetChildren();
  for (; held.seen < children.Size(); ++held.seen) {
    held.children.insert(children.begin()[held.seen].Get());
  }
  return held.children.contains(child.Get());
}
