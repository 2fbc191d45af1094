#include "lrd/Progress.h"

#include <cstdio>

#include "lrd/HostSystem.h"
#include "lrd/Printable.h"

namespace lrd {

namespace {

constexpr const char* ToLineStart = "\r\x1b[K";

}  // namespace

Progress::Progress() : next_(std::chrono::steady_clock::now() + std::chrono::seconds(1)), isSeen_(IsTerminal(stderr)) {}

Progress::~Progress() { Hide(); }

void Progress::Hide() {
  if (isShown_) {
    std::fputs(ToLineStart, stderr);
    isShown_ = false;
  }
}

void Progress::Tell(const std::string& howFar) {
  const auto now = std::chrono::steady_clock::now();
  if (isSeen_ && now >= next_) {
    std::fputs((ToLineStart + Printable(howFar)).c_str(), stderr);
    next_ = now + std::chrono::milliseconds(100);
    isShown_ = true;
  }
}

}  // namespace lrd
