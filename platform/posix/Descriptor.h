#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

inline std::error_code SystemError() { return {errno, std::system_category()}; }

inline std::error_code ErrorUnless(bool success) { return success ? std::error_code() : SystemError(); }

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto Uninterrupted(const Call& call) {
  auto result = call();
  while (result == -1 && errno == EINTR) {
    result = call();
  }
  return result;
}

/// An open file, closed at the latest when this goes.
class Descriptor {
 public:
  Descriptor(const std::string& path, int flags, mode_t mode = 0) : Descriptor(AT_FDCWD, path.c_str(), flags, mode) {}
  Descriptor(int folder, const char* path, int flags, mode_t mode = 0)
      : number_(Uninterrupted([&] { return openat(folder, path, flags | O_CLOEXEC, mode); })) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool IsOpen() const noexcept { return number_ >= 0; }
  int Number() const noexcept { return number_; }
  /// On some file systems only closing tells that the content could not be kept.
  std::error_code Close() { return IsOpen() ? ErrorUnless(close(std::exchange(number_, -1)) == 0) : std::error_code(); }

 private:
  int number_;
};

/// The working folder has no name in front of a file's.
inline std::string FolderName(const std::string& folder) { return folder.empty() ? "." : folder; }
