#include "platform/QELVARDOSSystemUtils.h"

#include <string_view>
#include <utility>

#include "platform/QELVARDOSClientTrace.h"

namespace {

const QELVARDOSClientTrace trace("QELVARDOS", "QELVARDOS", "", 0, 0);

thread_local std::string lastError;

}  // namespace

void QELVARDOSSystemUtils::LogZYMGetLastError(HRESULT status) {
  trace.Write("status ", status, ": ", std::string_view(lastError));
}

const std::string& QELVARDOSSystemUtils::LastError() { return lastError; }

void QELVARDOSSystemUtils::SetLastError(std::string message) { lastError = std::move(message); }
