#include "tests/disk/DiskNodes.h"

#include <utility>
#include <vector>

namespace {

/// Nothing can be made below a folder that is not there.
const char* const Gone = "/.test-disk-removed/file";

}  // namespace

std::string DiskNodes::PathOf(std::uint64_t number) const {
  const std::lock_guard lock(mutex_);
  const auto found = nodes_.find(number);
  return number == Root ? "" : found != nodes_.end() ? found->second.path : Gone;
}

std::uint64_t DiskNodes::Tell(const std::string& path) {
  const std::lock_guard lock(mutex_);
  const auto [entry, fresh] = numbers_.try_emplace(path, last_ + 1);
  if (fresh) {
    nodes_[++last_].path = path;
  }
  ++nodes_[entry->second].tellings;
  return entry->second;
}

void DiskNodes::Forget(std::uint64_t number, std::uint64_t tellings) {
  const std::lock_guard lock(mutex_);
  const auto found = nodes_.find(number);
  if (found == nodes_.end() || (found->second.tellings -= tellings) > 0) {
    return;
  }
  // Another file may have the path by now.
  const auto entry = numbers_.find(found->second.path);
  if (entry != numbers_.end() && entry->second == number) {
    numbers_.erase(entry);
  }
  nodes_.erase(found);
}

void DiskNodes::Removed(const std::string& path) {
  const std::lock_guard lock(mutex_);
  Drop(path);
}

void DiskNodes::Renamed(const std::string& from, const std::string& to) {
  const std::lock_guard lock(mutex_);
  if (from != to) {
    Drop(to);
    Move(from, to);
  }
}

void DiskNodes::Drop(const std::string& path) {
  if (const auto entry = numbers_.find(path); entry != numbers_.end()) {
    nodes_[entry->second].path = Gone;
    numbers_.erase(entry);
  }
}

void DiskNodes::Move(const std::string& from, const std::string& to) {
  std::vector<std::pair<std::string, std::uint64_t>> moved;
  const auto take = [&](std::map<std::string, std::uint64_t>::iterator entry) {
    moved.emplace_back(to + entry->first.substr(from.size()), entry->second);
    return numbers_.erase(entry);
  };
  if (const auto own = numbers_.find(from); own != numbers_.end()) {
    take(own);
  }
  for (auto entry = numbers_.lower_bound(from + "/");
       entry != numbers_.end() && entry->first.starts_with(from + "/");) {
    entry = take(entry);
  }
  for (const auto& [path, number] : moved) {
    numbers_[path] = number;
    nodes_[number].path = path;
  }
}
