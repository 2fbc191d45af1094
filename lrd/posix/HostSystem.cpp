#include "lrd/HostSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace lrd {

namespace {

std::error_code SystemError() { return {errno, std::generic_category()}; }

std::error_code WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return SystemError();
    }
  }
  return {};
}

}  // namespace

bool IsTerminal(std::FILE* stream) { return ::isatty(::fileno(stream)) == 1; }

void ReportFailedWrites() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

std::error_code WriteOut(std::string_view text) { return WriteAll(STDOUT_FILENO, text); }

std::error_code WriteToDevice(const std::string& device, std::string_view text) {
  const int file = ::open(device.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  if (file < 0) {
    return SystemError();
  }
  const std::error_code error = WriteAll(file, text);
  const bool isClosed = ::close(file) == 0;
  return error || isClosed ? error : SystemError();
}

std::error_code WouldRefuseFileIn(const std::string& folder) {
  const std::string place = folder.empty() ? "." : folder;
  return ::access(place.c_str(), W_OK | X_OK) == 0 ? std::error_code() : SystemError();
}

}  // namespace lrd
