#pragma once

#include "platform/ZYMIDOM.h"
#include "platform/ZYMUnicodeStringList.h"

/// Reads from an object's element which other objects it depends on. Lists are appended to, not cleared; both
/// operations always answer 0.
class QELXVARDOSIdentifier {
 public:
  /// Keeps a handle to the node.
  explicit QELXVARDOSIdentifier(const ZYMIDOMNode_var& cadObject);

  /// The CAD ids of the objects whose composition it belongs to: "familyid", then "composerid", empty ids left out.
  HRESULT IdentifyComposition(ZYMUnicodeStringList& ids);
  /// The CAD ids of its parents: "parentid", empty ids included.
  HRESULT IdentifyParent(ZYMUnicodeStringList& ids);

 private:
  ZYMIDOMNode_var cadObject_;
};
