#include "platform/ahead/Listings.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t MissingBefore = 8;

std::string_view FolderOf(std::string_view path) { return path.substr(0, path.rfind('/') + 1); }

/// As the most tolerant file system compares names.
std::string Folded(std::string_view name) {
  std::string folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(),
                 [](char c) { return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return folded;
}

/// Other letters have more than one spelling, and a server may know a file by a short name with a tilde too.
bool HasOneSpelling(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return ' ' < c && c < '~'; });
}

std::string NameOf(const std::string& path) { return Folded(std::string_view(path).substr(path.rfind('/') + 1)); }

}  // namespace

bool Listings::TellMissing(const std::string& path) {
  const std::scoped_lock guard(mutex_);
  const auto folder = folders_.find(FolderOf(path));
  if (folder == folders_.end() || folder->second.state != Folder::State::Listed) {
    return false;
  }
  const std::string name = NameOf(path);
  return HasOneSpelling(name) && !folder->second.names.contains(name);
}

void Listings::WasMissing(const std::string& path) {
  const std::string_view place = FolderOf(path);
  {
    const std::scoped_lock guard(mutex_);
    Folder& folder = folders_[std::string(place)];
    if (++folder.missing != MissingBefore || folder.state != Folder::State::Unlisted) {
      return;
    }
    folder.state = Folder::State::BeingListed;
  }
  std::vector<std::string> names;
  const std::error_code error = disk_.List(place.empty() ? "." : std::string(place), names);
  const std::scoped_lock guard(mutex_);
  Folder& folder = folders_[std::string(place)];
  for (const std::string& name : names) {
    folder.names.insert(Folded(name));
  }
  const bool isBelieved = !error && names.size() >= folder.found && folder.state == Folder::State::BeingListed;
  folder.state = isBelieved ? Folder::State::Listed : Folder::State::NotBelieved;
}

void Listings::WasFound(const std::string& path) {
  const std::scoped_lock guard(mutex_);
  if (const auto folder = folders_.find(FolderOf(path)); folder != folders_.end()) {
    ++folder->second.found;
    if (folder->second.state == Folder::State::Listed && !folder->second.names.contains(NameOf(path))) {
      folder->second.state = Folder::State::NotBelieved;
    }
  }
}

void Listings::Changed(const std::string& path) {
  const std::scoped_lock guard(mutex_);
  const auto folder = folders_.find(FolderOf(path));
  if (folder != folders_.end() && folder->second.state != Folder::State::Unlisted && HasOneSpelling(NameOf(path))) {
    folder->second.state = Folder::State::NotBelieved;
  }
}
