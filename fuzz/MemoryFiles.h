#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"

/// A disk in memory, the file layer in use as long as it lives. Paths are taken as text, but that "a//./b" is "a/b";
/// ".." is a name like any other, so that a path that climbs shows as it was asked for. It notes every path that was
/// changed.
class MemoryFiles : public QELVARDOSFileLayer {
 public:
  static constexpr std::int64_t Now = 1'700'000'000;

  /// With the folders above it, unless a file is in the way of one or a folder in its own. No change is noted.
  void Put(std::string_view name, std::string_view bytes, std::int64_t modified = Now) {
    const std::string path = Plain(name);
    std::vector<std::string> above;
    for (std::string folder = Parent(path); !IsRoot(folder); folder = Parent(folder)) {
      if (files_.contains(folder)) {
        return;
      }
      above.push_back(folder);
    }
    if (!folders_.contains(path) && !IsRoot(path)) {
      folders_.insert(above.begin(), above.end());
      files_[path] = {std::string(bytes), modified};
    }
  }
  void TakeAway(std::string_view name) { files_.erase(Plain(name)); }

  std::vector<std::string> FileNames() const {
    std::vector<std::string> names(files_.size());
    std::transform(files_.begin(), files_.end(), names.begin(), [](const auto& file) { return file.first; });
    return names;
  }
  /// Each file that was created, replaced or removed, and each folder that was made or hidden.
  const std::set<std::string>& ChangedFiles() const { return changedFiles_; }
  const std::set<std::string>& ChangedFolders() const { return changedFolders_; }
  /// The files for which a transaction reported success.
  const std::set<std::string>& Settled() const { return settled_; }

  QELVARDOSFileFacts Stat(const std::string& name) override {
    QELVARDOSFileFacts facts;
    const std::string path = Plain(name);
    if (const auto file = files_.find(path); file != files_.end()) {
      facts = {QELVARDOSFileFacts::Kind::File, file->second.modified, file->second.bytes.size(), {}};
    } else if (!name.empty() && IsFolder(path)) {
      facts = {QELVARDOSFileFacts::Kind::Folder, Now, 0, {}};
    }
    return facts;
  }
  std::error_code Read(const std::string& name, std::string& bytes, std::uint64_t /*atMost*/) override {
    const auto file = files_.find(Plain(name));
    if (file == files_.end()) {
      return Error(std::errc::no_such_file_or_directory);
    }
    bytes = file->second.bytes;
    return {};
  }
  std::error_code List(const std::string& name, std::vector<std::string>& names) override {
    const std::string folder = Plain(name);
    for (const auto& [path, file] : files_) {
      if (Parent(path) == folder) {
        names.push_back(path.substr(path.rfind('/') + 1));
      }
    }
    return {};
  }
  std::error_code MakeFolder(const std::string& name) override {
    const std::string path = Plain(name);
    if (const std::error_code error = RefusalOf(path)) {
      return error;
    }
    folders_.insert(path);
    changedFolders_.insert(path);
    return {};
  }
  std::error_code HideFolder(const std::string& name) override {
    changedFolders_.insert(Plain(name));
    return {};
  }
  std::error_code WriteNew(const std::string& name, std::string_view bytes, const std::string& /*like*/) override {
    const std::string path = Plain(name);
    if (const std::error_code error = RefusalOf(path)) {
      return error;
    }
    files_[path] = {std::string(bytes), Now};
    changedFiles_.insert(path);
    return {};
  }
  std::vector<std::error_code> MakeDurable(const std::vector<std::string>& paths) override {
    return std::vector<std::error_code>(paths.size());
  }
  std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) override {
    return std::vector<std::error_code>(folders.size());
  }
  std::error_code Rename(const std::string& from, const std::string& to) override {
    const std::string target = Plain(to);
    if (IsFolder(target)) {
      return Error(std::errc::is_a_directory);
    }
    auto file = files_.extract(Plain(from));
    if (file.empty() || !IsFolder(Parent(target))) {
      return Error(std::errc::no_such_file_or_directory);
    }
    files_[target] = file.mapped();
    changedFiles_.insert({file.key(), target});
    return {};
  }
  std::error_code Remove(const std::string& name) override {
    const std::string path = Plain(name);
    changedFiles_.insert(path);
    return files_.erase(path) == 0 ? Error(std::errc::no_such_file_or_directory) : std::error_code();
  }
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& /*error*/) override {
    if (outcome != QELVARDOSReplacement::Failed) {
      settled_.insert(Plain(path));
    }
  }

 private:
  struct File {
    std::string bytes;
    std::int64_t modified = 0;
  };

  static std::error_code Error(std::errc reason) { return std::make_error_code(reason); }

  static std::string Plain(std::string_view name) {
    std::string path = name.starts_with('/') ? "/" : "";
    while (!name.empty()) {
      const std::string_view part = name.substr(0, name.find('/'));
      name.remove_prefix(part.size() < name.size() ? part.size() + 1 : part.size());
      if (!part.empty() && part != ".") {
        path.append(IsRoot(path) ? "" : "/").append(part);
      }
    }
    return path;
  }
  static std::string Parent(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash == 0 ? 1 : slash);
  }
  /// The root of the disk, or the working folder.
  static bool IsRoot(const std::string& path) { return path.empty() || path == "/"; }
  bool IsFolder(const std::string& path) const { return IsRoot(path) || folders_.contains(path); }

  /// Why nothing new can be made at path.
  std::error_code RefusalOf(const std::string& path) const {
    if (IsFolder(path) || files_.contains(path)) {
      return Error(std::errc::file_exists);
    }
    if (files_.contains(Parent(path))) {
      return Error(std::errc::not_a_directory);
    }
    return IsFolder(Parent(path)) ? std::error_code() : Error(std::errc::no_such_file_or_directory);
  }

  const QELVARDOSUseFileLayer use_{*this};
  std::map<std::string, File> files_;
  std::set<std::string> folders_;
  std::set<std::string> changedFiles_;
  std::set<std::string> changedFolders_;
  std::set<std::string> settled_;
};
