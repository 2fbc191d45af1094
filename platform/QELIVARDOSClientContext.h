#pragma once

#include "platform/ZYMHandle.h"
#include "platform/ZYMUnicodeStringList.h"

/// What the client tells the module about itself. The client implements it.
class ZYM_EXPORT QELIVARDOSClientContext : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(QELIVARDOSClientContext, "{70829E1E-8C8A-4A25-A2DA-998B6A6D694B}");

 public:
  /// The commands whose requests are recognised without looking at local records.
  virtual ZYMUnicodeStringList GetCommandsWithoutLRD() = 0;
};

using QELIVARDOSClientContext_var = ZYMHandle<QELIVARDOSClientContext>;
