#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

/// What a test wants of the disk, and what the disk was asked to do. May be used by many threads at once.
class DiskSettings {
 public:
  /// The control lines, for a help text.
  static const char* const Lines;

  /// False when the line says nothing that is known; then nothing changes. An empty line is obeyed.
  bool Obey(const std::string& line);

  /// Counts an operation and waits as long as it is to take; operations wait side by side. The error number that it is
  /// to fail with, or 0.
  int Begin(const std::string& operation, const std::string& path);

  bool Ignores(const std::string& operation) const;

  /// Makes the times of a file what the disk is to show.
  void Adjust(struct stat& facts) const;

  /// A line with name and number for each operation that was asked for.
  std::string Counts() const;

 private:
  struct Fault {
    std::string operation;
    std::string pattern;
    int error = 0;
    std::uint64_t left = 0;
  };
  int TakeFault(const std::string& operation, const std::string& path);

  mutable std::mutex mutex_;
  std::map<std::string, std::uint64_t> delays_;  ///< microseconds
  std::vector<Fault> faults_;
  std::set<std::string> ignored_;
  std::int64_t coarse_ = 0;
  std::int64_t shift_ = 0;
  std::map<std::string, std::uint64_t> counts_;
};
