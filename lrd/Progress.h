#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace lrd {

/// A line on standard error that tells how far a long command is: on a terminal only, from the second second on, and
/// gone at the end.
class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Tell(const std::string& howFar);
  /// Makes room for another line on the terminal.
  void Hide();

 private:
  std::chrono::steady_clock::time_point next_;
  bool isSeen_;
  bool isShown_ = false;
};

}  // namespace lrd
