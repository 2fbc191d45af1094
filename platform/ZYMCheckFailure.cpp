#include "platform/ZYMCheckFailure.h"

#include <iostream>
#include <utility>

namespace {

void ReportToStandardError(std::string_view text, std::string_view source, int line) {
  std::cerr << source << ':' << line << ": check failed: " << text << '\n';
}

ZYMCheckFailureObserver currentObserver = nullptr;

}  // namespace

void ZYMReportCheckFailure(std::string_view text, std::string_view source, int line) {
  (currentObserver == nullptr ? ReportToStandardError : currentObserver)(text, source, line);
}

ZYMCheckFailureObserver ZYMObserveCheckFailures(ZYMCheckFailureObserver observer) {
  return std::exchange(currentObserver, observer);
}
