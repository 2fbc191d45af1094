#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/QELVARDOSClientTrace.h"

/// The lines that are traced as long as the object lives.
class TraceLines {
 public:
  TraceLines() {
    // The lists are mutable, since lines come while a test holds this as a constant.
    QELVARDOSClientTrace::TurnOn([this](std::string_view channel, std::string_view line) {
      channels.emplace_back(channel);
      all.emplace_back(line);
    });
  }
  ~TraceLines() { QELVARDOSClientTrace::TurnOff(); }
  TraceLines(const TraceLines&) = delete;
  TraceLines& operator=(const TraceLines&) = delete;

  /// Whether these lines were traced in this order, others between them or not.
  bool HasInOrder(const std::vector<std::string>& wanted) const {
    std::size_t found = 0;
    for (const std::string& line : all) {
      found += found < wanted.size() && line == wanted[found] ? 1U : 0U;
    }
    return found == wanted.size();
  }

  mutable std::vector<std::string> channels;
  mutable std::vector<std::string> all;
};
