#pragma once

#include "platform/ZYMIDOMLook.h"
#include "records/QELXVARDOSLRDConstants.h"

/// How many element children a list has.
int CountObjects(const ZYMIDOMElement_var& list);

/// The objects of a request or a response: the element children of the first "cadobjectlist" below the first "info", or
/// below the root itself where there is no "info".
class ObjectsOfTree {
 public:
  explicit ObjectsOfTree(const ZYMIDOMNode_var& root);

  /// False when the root is no element; then there are no objects and the status is 0.
  bool HasRoot() const { return root_.operator bool(); }
  /// The status of the search for "info".
  HRESULT Status() const { return status_; }
  bool InInfo() const { return info_.operator bool(); }
  /// How many children the list has, elements or not.
  int ChildCount() const { return list_ ? ::ChildCount(list_) : 0; }

  /// Calls visit with each object. When the search for "info" failed the list is still there, but nothing is visited.
  template <typename Visit>
  void ForEach(const Visit& visit) const {
    if (list_ && SUCCEEDED(status_)) {
      ForEachChildElement(list_, [&visit](const ZYMIDOMElement_var& object) {
        visit(object);
        return true;
      });
    }
  }

 private:
  ZYMIDOMElement_var root_;
  HRESULT status_ = S_OK;
  ZYMIDOMElement_var info_;
  ZYMIDOMElement_var list_;
};
