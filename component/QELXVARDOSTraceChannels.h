#pragma once

#include "platform/QELVARDOSClientTrace.h"
#include "platform/ZYMLoadOrder.h"

/// The three trace channels of a source file. Every source file that traces makes its own, in the group
/// ZYMLoadOrder::TraceChannels; the module's messages go to details.
struct QELXVARDOSTraceChannels {
  QELVARDOSClientTrace general{"QELVARDOS", "QELVARDOS", "STDOUT", 1024, 0};
  QELVARDOSClientTrace details{"QELVARDOSDetails", "QELVARDOSDetails", "STDOUT", 1024, 0};
  QELVARDOSClientTrace pcs{"QELVARDOSPCS", "QELVARDOSPCS", "STDOUT", 1024, 0};
};

/// The opening of a source file that traces: its channels, the one that messages go to as Trace, and Step.
#define QELXVARDOS_TRACED_HERE                                           \
  namespace {                                                            \
  ZYM_LOADED_AS(TraceChannels) const QELXVARDOSTraceChannels Channels;   \
  [[maybe_unused]] const QELVARDOSClientTrace& Trace = Channels.details; \
  using Step = QELVARDOSClientTraceStep;                                 \
  }                                                                      \
  static_assert(true, "so that a semicolon ends it")
