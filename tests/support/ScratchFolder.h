#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

/// A folder of its own on the real disk, gone with the object. Names are relative to it.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "module-test-XXXXXX").string();
    root_ = mkdtemp(name.data());
  }
  ~ScratchFolder() { std::filesystem::remove_all(root_); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& Root() const { return root_; }
  std::string At(const std::string& name) const { return root_ + "/" + name; }
  /// Makes the folders above it too.
  void Put(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(At(name)).parent_path());
    std::ofstream(At(name)) << text;
  }
  /// A CAD file with that modification time.
  void PutFile(const std::string& name, std::int64_t seconds, std::int32_t nanoseconds = 0) const {
    Put(name, "CAD");
    SetTime(name, seconds, nanoseconds);
  }
  void SetTime(const std::string& name, std::int64_t seconds, std::int32_t nanoseconds = 0) const {
    const std::array<timespec, 2> times{{{seconds, nanoseconds}, {seconds, nanoseconds}}};
    EXPECT_EQ(utimensat(AT_FDCWD, At(name).c_str(), times.data(), 0), 0) << name;
  }
  void PutRecord(const std::string& objectFile, const std::string& text) const {
    Put(".KORVANTHEMIX/" + objectFile + ".xml", text);
  }
  /// Without the XML declaration; empty when there is no such file.
  std::string File(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(At(name)).rdbuf();
    const std::string all = text.str();
    return all.starts_with("<?xml") ? all.substr(all.find('\n') + 1) : all;
  }
  std::string Record(const std::string& objectFile) const { return File(".KORVANTHEMIX/" + objectFile + ".xml"); }
  /// How many files stand below the folder, whatever their depth.
  int FileCount() const {
    int count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_)) {
      count += entry.is_directory() ? 0 : 1;
    }
    return count;
  }

 private:
  std::string root_;
};
