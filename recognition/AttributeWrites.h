#pragma once

#include "platform/ZYMIDOM.h"

/// Writes attributes, goes on behind one that the tree does not take, and keeps the first failure for the answer of the
/// call: a tree that ran out of memory must not pass for one that holds what was decided.
class AttributeWrites {
 public:
  void Set(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name, const ZYMUnicodeString& value) {
    const HRESULT status = element->setAttribute(name, value);
    if (FAILED(status) && SUCCEEDED(status_)) {
      status_ = status;
    }
  }
  HRESULT Status() const noexcept { return status_; }

 private:
  HRESULT status_ = S_OK;
};
