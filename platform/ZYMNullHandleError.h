#pragma once

#include <stdexcept>

#include "platform/ZYMExport.h"

/// Raised when a null handle is dereferenced. what() names the interface of the handle.
class ZYM_EXPORT ZYMNullHandleError : public std::logic_error {
 public:
  explicit ZYMNullHandleError(const char* interfaceName);
  ZYMNullHandleError(const ZYMNullHandleError&) = default;
  ZYMNullHandleError& operator=(const ZYMNullHandleError&) = default;
  ~ZYMNullHandleError() override;
};

/// Throws the error above; out of line, so that a handle's dereference stays a test and a jump.
[[noreturn]] ZYM_EXPORT void ZYMRaiseNullHandle(const char* interfaceName);
