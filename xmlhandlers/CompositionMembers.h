#pragma once

#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "component/QELXIVARDOSLRDObject_varZYMUnicodeStringDico.h"

/// The members of compositions, as the links of one structure ask for them again and again: each composition is looked
/// up once, and each list of children is looked through once, however many links there are. For as long as records only
/// gain relationships and child records.
class CompositionMembers {
 public:
  /// records: by CAD id; must outlive this.
  explicit CompositionMembers(const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) : records_(records) {}

  /// The members that do not hold the composition's record among their children, in the order of its list. A member
  /// that has no record is a null handle.
  const std::vector<QELXIVARDOSLRDObject_var>& Lacking(const QELXIVARDOSLRDObject_var& composition);

 private:
  /// The children of a record that were looked at so far.
  struct Held {
    std::unordered_set<const QELXIVARDOSLRDObject*> children;
    int seen = 0;
  };

  bool Holds(const QELXIVARDOSLRDObject_var& member, const QELXIVARDOSLRDObject_var& child);

  const QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records_;
  std::unordered_map<const QELXIVARDOSLRDObject*, std::vector<QELXIVARDOSLRDObject_var>> lacking_;
  std::unordered_map<const QELXIVARDOSLRDObject*, Held> held_;
};
