#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "platform/QELVARDOSProcess.h"

std::uint32_t QELVARDOSProcess::Id() { return static_cast<std::uint32_t>(getpid()); }

bool QELVARDOSProcess::Lives(std::uint32_t id) {
  const auto process = static_cast<pid_t>(id);
  // Numbers that are not positive address groups of processes.
  return process > 0 && (kill(process, 0) == 0 || errno == EPERM);
}

std::string QELVARDOSProcess::HostName() {
  std::array<char, 256> name{};
  // The last byte stays zero: a name that does not fit may come without its own.
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}
