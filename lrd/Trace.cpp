#include "lrd/Trace.h"

#include <cerrno>
#include <string_view>
#include <system_error>

#include "lrd/Console.h"
#include "lrd/HostError.h"
#include "lrd/Printable.h"
#include "platform/QELVARDOSClientTrace.h"

namespace lrd {

Trace::Trace(const std::string& file) : name_(file) {
  if (file == "-") {
    QELVARDOSClientTrace::TurnOn([](std::string_view, std::string_view line) { Print(Printable(line) + "\n"); });
  } else if (!file.empty()) {
    file_.open(file, std::ios::binary);
    if (!file_) {
      throw HostError(UnusableInput, file + ": " + std::generic_category().message(errno));
    }
    QELVARDOSClientTrace::TurnOn([this](std::string_view, std::string_view line) {
      if (!(file_ << Printable(line) << '\n') && reason_ == 0) {
        reason_ = errno;
      }
    });
  }
}

Trace::~Trace() { QELVARDOSClientTrace::TurnOff(); }

void Trace::Finish() {
  QELVARDOSClientTrace::TurnOff();
  if (file_.is_open() && !file_.flush()) {
    const int reason = reason_ == 0 ? errno : reason_;
    throw HostError(UnusableInput, name_ + ": " + std::generic_category().message(reason));
  }
}

}  // namespace lrd
