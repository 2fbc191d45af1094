#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"

/// Notes what is read and every change on the disk, "Operation path", and passes it on.
class RecordingLayer : public QELVARDOSFileLayerFilter {
 public:
  RecordingLayer() : QELVARDOSFileLayerFilter(Current()) {}

  long CountReads(const std::string& path) const { return std::count(reads.begin(), reads.end(), path); }

  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override {
    reads.push_back(path);
    return Next().Read(path, bytes, atMost);
  }
  std::error_code MakeFolder(const std::string& path) override { return Change("MakeFolder", path).MakeFolder(path); }
  std::error_code HideFolder(const std::string& path) override { return Change("HideFolder", path).HideFolder(path); }
  std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) override {
    return Change("WriteNew", path).WriteNew(path, bytes, like);
  }
  std::vector<std::error_code> MakeDurable(const std::vector<std::string>& paths) override {
    return Change("MakeDurable", std::to_string(paths.size())).MakeDurable(paths);
  }
  std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) override {
    return Change("MakeFoldersDurable", std::to_string(folders.size())).MakeFoldersDurable(folders);
  }
  std::error_code Rename(const std::string& from, const std::string& to) override {
    return Change("Rename", to).Rename(from, to);
  }
  std::error_code Remove(const std::string& path) override { return Change("Remove", path).Remove(path); }

  mutable std::vector<std::string> reads;
  mutable std::vector<std::string> changes;

 private:
  QELVARDOSFileLayer& Change(const char* operation, const std::string& path) {
    changes.push_back(operation + (" " + path));
    return Next();
  }

  const QELVARDOSUseFileLayer use_{*this};
};
