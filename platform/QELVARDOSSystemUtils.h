#pragma once

#include <string>

#include "platform/HRESULT.h"
#include "platform/ZYMExport.h"

/// The last error of the framework on this thread, in words.
class ZYM_EXPORT QELVARDOSSystemUtils {
 public:
  /// Traces the status and the last error on the channel "QELVARDOS".
  static void LogZYMGetLastError(HRESULT status);
  /// What the last failed operation of a document builder or of the file layer said, for example
  /// "request.xml:12:7: mismatched tag"; empty before the first failure. An operation that succeeds leaves it.
  static const std::string& LastError();
  static void SetLastError(std::string message);
};
