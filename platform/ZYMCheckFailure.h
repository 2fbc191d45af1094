#pragma once

#include <string_view>

#include "platform/ZYMExport.h"

/// Reports a failed framework check: the text of the expression, the source and the line that it names. Without an
/// observer the report goes to standard error. The caller goes on afterwards.
ZYM_EXPORT void ZYMReportCheckFailure(std::string_view text, std::string_view source, int line);

using ZYMCheckFailureObserver = void (*)(std::string_view text, std::string_view source, int line);
/// null ends the observation. Answers the observer before.
ZYM_EXPORT ZYMCheckFailureObserver ZYMObserveCheckFailures(ZYMCheckFailureObserver observer);
