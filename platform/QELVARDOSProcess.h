#pragma once

#include <cstdint>
#include <string>

/// What tells one running program from another.
class QELVARDOSProcess {
 public:
  /// The number of this process; a child made by fork has its own.
  static std::uint32_t Id();
  /// Whether a process of that number runs on this machine.
  static bool Lives(std::uint32_t id);
  static std::string HostName();
};
