#include "platform/QELVARDOSClientTrace.h"

#include <utility>

namespace {

bool tracing = false;

QELVARDOSClientTrace::Sink& TheSink() {
  static QELVARDOSClientTrace::Sink& sink = *new QELVARDOSClientTrace::Sink;
  return sink;
}

}  // namespace

QELVARDOSClientTrace::QELVARDOSClientTrace(const char* name, const char* /*label*/, const char* /*output*/,
                                           int /*bufferSize*/, int /*flag*/)
    : name_(name), on_(&tracing) {}

void QELVARDOSClientTrace::TurnOn(Sink sink) {
  TheSink() = std::move(sink);
  tracing = static_cast<bool>(TheSink());
}

void QELVARDOSClientTrace::WriteLine(std::string_view line) const {
  if (line.ends_with('\n')) {
    line.remove_suffix(1);
  }
  TheSink()(name_, line);
}
