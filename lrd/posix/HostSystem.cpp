#include "lrd/HostSystem.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace lrd {

bool IsTerminal(std::FILE* stream) { return ::isatty(::fileno(stream)) == 1; }

void ReportBrokenPipes() { std::signal(SIGPIPE, SIG_IGN); }

std::error_code WouldRefuseFileIn(const std::string& folder) {
  const std::string place = folder.empty() ? "." : folder;
  return ::access(place.c_str(), W_OK | X_OK) == 0 ? std::error_code()
                                                   : std::error_code(errno, std::generic_category());
}

}  // namespace lrd
