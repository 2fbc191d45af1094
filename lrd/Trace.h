#pragma once

#include <fstream>
#include <string>

namespace lrd {

/// Keeps the trace channels on as long as it lives.
class Trace {
 public:
  /// file: where the lines go, "-" for standard output; with an empty name tracing stays off.
  explicit Trace(const std::string& file);
  ~Trace();
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

  /// Turns them off. Lines that could not be written end the command.
  void Finish();

 private:
  std::string name_;
  std::ofstream file_;
  /// Of the first line that could not be written.
  int reason_ = 0;
};

}  // namespace lrd
