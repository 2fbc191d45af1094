#pragma once

#include <string>
#include <utility>

#include "platform/ZYMNullHandleError.h"

/// Raised for an element of a record file that lacks an element which it must have; to clients a null-handle error.
class IncompleteRecord : public ZYMNullHandleError {
 public:
  IncompleteRecord(const char* interfaceName, std::string reason)
      : ZYMNullHandleError(interfaceName), reason_(std::move(reason)) {}

  /// "<object> lacks the element <phid>"
  const std::string& Reason() const noexcept { return reason_; }

 private:
  std::string reason_;
};
