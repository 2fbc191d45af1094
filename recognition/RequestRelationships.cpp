#include "recognition/RequestRelationships.h"

#include <bit>
#include <functional>
#include <utility>

#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

namespace {

std::uint32_t HashOf(const ZYMUnicodeString& text) {
  return static_cast<std::uint32_t>(std::hash<ZYMUnicodeString>()(text));
}

}  // namespace

RequestRelationships::RequestRelationships(const ZYMIDOMNode_var& request) {
  const ZYMIDOMElement_var element(request);
  const ZYMIDOMElement_var list = element ? FirstElement(element, Word::RelationshipList) : ZYMIDOMElement_var();
  if (list.IsNull()) {
    return;
  }
  ForEachChildElement(list, [this](const ZYMIDOMElement_var& relationship) {
    const ZYMUnicodeString id = Attribute(relationship, Word::RelUuid);
    if (!id.IsEmpty() && Attribute(relationship, Word::Phid).IsEmpty()) {
      entries_.push_back({relationship, HashOf(id), 0});
    }
    return true;
  });
  untouched_.resize(std::bit_ceil(entries_.size()));
  awaitingPhid_.resize(untouched_.size());
  for (Number number = 1; number <= entries_.size(); ++number) {
    Entry& entry = entries_[number - 1];
    entry.next = std::exchange(ChainOf(untouched_, entry.hash), number);
  }
}

HRESULT RequestRelationships::Complete(const QELXIVARDOSLRDObject_var& record) {
  for (const QELXIVARDOSLRDObject_var& relationship : record->GetChildRelationships()) {
    if (!entries_.empty() && !relationship->GetId().IsEmpty()) {
      Complete(relationship->GetId(), relationship->GetPhysicalId());
    }
  }
  return writes_.Status();
}

/// The first physical id stays, but that an empty one gives way to the first that is not.
void RequestRelationships::Complete(const ZYMUnicodeString& id, const ZYMUnicodeString& physicalId) {
  const std::uint32_t hash = HashOf(id);
  CompleteThoseIn(untouched_, id, hash, physicalId);
  if (!physicalId.IsEmpty()) {
    CompleteThoseIn(awaitingPhid_, id, hash, physicalId);
  }
}

// What is completed leaves its chain, so that nobody walks past it again.
void RequestRelationships::CompleteThoseIn(Chains& chains, const ZYMUnicodeString& id, std::uint32_t hash,
                                           const ZYMUnicodeString& physicalId) {
  for (Number* link = &ChainOf(chains, hash); *link != 0;) {
    const Number number = *link;
    Entry& entry = entries_[number - 1];
    if (entry.hash != hash || Attribute(entry.element, Word::RelUuid) != id) {
      link = &entry.next;
      continue;
    }
    writes_.Set(entry.element, Word::Phid, physicalId);
    *link = entry.next;
    if (physicalId.IsEmpty()) {
      entry.next = std::exchange(ChainOf(awaitingPhid_, hash), number);
    }
  }
}
