#include "lrd/HostSystem.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>

namespace lrd {

namespace {

std::error_code SystemError() { return {errno, std::generic_category()}; }

volatile std::sig_atomic_t noticed = 0;

extern "C" void Notice(int signal) {
  if (noticed == 0) {
    noticed = signal;
  }
}

void NoticeUnlessIgnored(int signal) {
  struct sigaction action {};
  if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
    action = {};
    action.sa_handler = Notice;
    // Files are not to fail because a signal came while one was written.
    action.sa_flags = SA_RESTART;
    ::sigaction(signal, &action, nullptr);
  }
}

/// Whether the file became ready; false: an ending was noticed before it did. One more moment is given to a reader that
/// is merely slow.
bool BecomesReady(int file, short what) {
  constexpr int Milliseconds = 500;
  pollfd awaited{file, what, 0};
  for (;;) {
    const int ready = ::poll(&awaited, 1, Milliseconds);
    // A file that cannot be waited for tells its error when it is used.
    if (ready > 0 || (ready < 0 && errno != EINTR)) {
      return true;
    }
    if (NoticedEnding() != Ending::None) {
      return false;
    }
  }
}

/// A reader that has stopped reading must not keep the program from ending, so no write asks for more room than a pipe
/// that is ready has.
std::error_code WriteAll(int file, std::string_view text) {
  constexpr std::size_t AtOnce = PIPE_BUF;
  while (!text.empty()) {
    if (!BecomesReady(file, POLLOUT)) {
      return std::make_error_code(std::errc::operation_canceled);
    }
    const ssize_t written = ::write(file, text.data(), std::min(text.size(), AtOnce));
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR && errno != EAGAIN) {
      return SystemError();
    }
  }
  return {};
}

bool IsPipe(const std::string& path) {
  struct stat facts {};
  return ::stat(path.c_str(), &facts) == 0 && S_ISFIFO(facts.st_mode);
}

/// Waits for the reader of a pipe, but not when an ending was noticed: then the answer is -1.
int OpenForWriting(const std::string& device) {
  constexpr int Milliseconds = 50;
  for (;;) {
    const int file = ::open(device.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (file >= 0 || errno != ENXIO || !IsPipe(device)) {
      return file;
    }
    if (NoticedEnding() != Ending::None) {
      errno = ECANCELED;
      return -1;
    }
    ::poll(nullptr, 0, Milliseconds);
  }
}

}  // namespace

bool IsTerminal(std::FILE* stream) { return ::isatty(::fileno(stream)) == 1; }

void ReportFailedWrites() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

void NoticeEndings() {
  NoticeUnlessIgnored(SIGINT);
  NoticeUnlessIgnored(SIGTERM);
}

Ending NoticedEnding() {
  return noticed == 0 ? Ending::None : noticed == SIGINT ? Ending::Interrupt : Ending::Termination;
}

std::error_code WriteOut(std::string_view text) { return WriteAll(STDOUT_FILENO, text); }

std::error_code WriteToDevice(const std::string& device, std::string_view text) {
  const int file = OpenForWriting(device);
  if (file < 0) {
    return SystemError();
  }
  const std::error_code error = WriteAll(file, text);
  const bool isClosed = ::close(file) == 0;
  return error || isClosed ? error : SystemError();
}

std::string ReadLine() {
  std::string line;
  char next = 0;
  while (!line.ends_with('\n')) {
    if (!BecomesReady(STDIN_FILENO, POLLIN) || ::read(STDIN_FILENO, &next, 1) != 1) {
      return "";
    }
    line += next;
  }
  line.pop_back();
  return line;
}

std::error_code WouldRefuseFileIn(const std::string& folder) {
  const std::string place = folder.empty() ? "." : folder;
  return ::access(place.c_str(), W_OK | X_OK) == 0 ? std::error_code() : SystemError();
}

}  // namespace lrd
