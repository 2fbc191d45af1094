#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

/// The files and folders that the kernel knows, by the numbers that it calls them; a number stands for a path, which
/// moves with every rename. May be used by many threads at once.
class DiskNodes {
 public:
  /// The folder that is mounted.
  static constexpr std::uint64_t Root = 1;
  /// The control file.
  static constexpr std::uint64_t Control = 2;

  /// Below the root, beginning with "/"; empty for the root itself. What was removed has a path that does not exist.
  std::string PathOf(std::uint64_t number) const;
  /// The number of a path that the kernel is told of, once more.
  std::uint64_t Tell(const std::string& path);
  /// The kernel takes back so many tellings.
  void Forget(std::uint64_t number, std::uint64_t tellings);
  void Removed(const std::string& path);
  /// What stood under the new path is removed.
  void Renamed(const std::string& from, const std::string& to);

 private:
  struct Node {
    std::string path;
    std::uint64_t tellings = 0;
  };
  void Drop(const std::string& path);
  void Move(const std::string& from, const std::string& to);

  mutable std::mutex mutex_;
  std::map<std::uint64_t, Node> nodes_;
  std::map<std::string, std::uint64_t> numbers_;  ///< of the paths that are there
  std::uint64_t last_ = Control;
};
