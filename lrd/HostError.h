#pragma once

#include <stdexcept>
#include <string>

namespace lrd {

enum ExitStatus { Done = 0, ModuleRefused = 1, UnusableInput = 2, NullHandle = 3, Interrupted = 130, Terminated = 143 };

/// Ends the command: the message goes to standard error, the status to the caller of the program.
class HostError : public std::runtime_error {
 public:
  HostError(ExitStatus status, const std::string& message) : std::runtime_error(message), status_(status) {}
  ExitStatus Status() const noexcept { return status_; }

 private:
  ExitStatus status_;
};

}  // namespace lrd
