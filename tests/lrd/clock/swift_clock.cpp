// Preloaded into a program it lets a second pass whenever the time is asked for, so that a test of what takes long does
// not.

#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

extern "C" [[gnu::visibility("default")]] int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static time_t passed = 0;
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  if (result == 0 && clock == CLOCK_MONOTONIC) {
    time->tv_sec += ++passed;
  }
  return result;
}
