#pragma once

#include <cstdint>
#include <vector>

#include "component/QELXIVARDOSLRDObject.h"
#include "recognition/AttributeWrites.h"

/// The relationships of a request that have no physical id, by their "reluuid". However many relationships and records
/// share one id, each relationship is completed twice at most: with an empty physical id, and with one that is not.
class RequestRelationships {
 public:
  explicit RequestRelationships(const ZYMIDOMNode_var& request);
  /// Gives each of them that is one of the record's the physical id that the record knows. Answers the first failure
  /// of the tree so far.
  HRESULT Complete(const QELXIVARDOSLRDObject_var& record);

 private:
  /// The number of an entry, counted from 1; 0: none.
  using Number = std::uint32_t;
  // A table of its own, since the hash alone keeps an entry small: the id itself is looked up in the element.
  struct Entry {
    ZYMIDOMElement_var element;
    std::uint32_t hash;
    Number next;
  };
  // As many as a power of two.
  using Chains = std::vector<Number>;
  static Number& ChainOf(Chains& chains, std::uint32_t hash) { return chains[hash & (chains.size() - 1)]; }
  void Complete(const ZYMUnicodeString& id, const ZYMUnicodeString& physicalId);
  void CompleteThoseIn(Chains& chains, const ZYMUnicodeString& id, std::uint32_t hash,
                       const ZYMUnicodeString& physicalId);

  std::vector<Entry> entries_;
  AttributeWrites writes_;
  Chains untouched_;
  // Completed with an empty physical id so far: only one that is not empty changes them.
  Chains awaitingPhid_;
};
