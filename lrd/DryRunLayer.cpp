#include "lrd/DryRunLayer.h"

#include <utility>
#include <vector>

#include "lrd/HostSystem.h"
#include "platform/QELVARDOSFileError.h"

namespace lrd {

namespace {

using Kind = QELVARDOSFileFacts::Kind;

std::error_code Refusal(std::errc reason) { return std::make_error_code(reason); }

std::string_view WithoutSlashBehind(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.remove_suffix(1);
  }
  return path;
}

/// A path taken apart at its last slash.
struct Place {
  explicit Place(std::string_view path) : name(WithoutSlashBehind(path)) {
    if (const std::size_t slash = name.rfind('/'); slash != std::string_view::npos) {
      folder = WithoutSlashBehind(name.substr(0, slash + 1));
      name.remove_prefix(slash + 1);
    }
  }

  std::string_view name;
  std::string_view folder = ".";
};

}  // namespace

QELVARDOSFileFacts DryRunLayer::Stat(const std::string& path) {
  const Change* const change = Find(path);
  if (change == nullptr) {
    return Next().Stat(path);
  }
  QELVARDOSFileFacts facts;
  facts.kind = change->kind;
  facts.size = change->bytes.size();
  return facts;
}

std::error_code DryRunLayer::Read(const std::string& path, std::string& bytes, std::uint64_t atMost) {
  const Change* const change = Find(path);
  if (change == nullptr) {
    return Next().Read(path, bytes, atMost);
  }
  bytes = change->bytes;
  switch (change->kind) {
    case Kind::File:
      return bytes.size() > atMost ? Refusal(std::errc::file_too_large) : std::error_code();
    case Kind::Folder:
      return Refusal(std::errc::is_a_directory);
    default:
      return Refusal(std::errc::no_such_file_or_directory);
  }
}

std::error_code DryRunLayer::List(const std::string& folder, std::vector<std::string>& names) {
  names.clear();
  const Change* const made = Find(folder);
  if (made != nullptr && made->kind != Kind::Folder) {
    return Refusal(made->kind == Kind::File ? std::errc::not_a_directory : std::errc::no_such_file_or_directory);
  }
  const std::error_code error = made == nullptr ? Next().List(folder, names) : std::error_code();
  if (const auto changes = changes_.find(WithoutSlashBehind(folder)); changes != changes_.end()) {
    std::erase_if(names, [&](const std::string& name) { return changes->second.contains(name); });
    for (const auto& [name, change] : changes->second) {
      if (change.kind != Kind::Missing) {
        names.push_back(name);
      }
    }
  }
  return error;
}

std::error_code DryRunLayer::MakeFolder(const std::string& path) {
  if (Stat(path).Exists()) {
    return Refusal(std::errc::file_exists);
  }
  const std::error_code refusal = RefusalInFolderOf(path);
  if (!refusal) {
    Put(path, {Kind::Folder, {}});
  }
  return refusal;
}

std::error_code DryRunLayer::HideFolder(const std::string& path) {
  return Stat(path).Exists() ? std::error_code() : Refusal(std::errc::no_such_file_or_directory);
}

/// Nothing is left in the folder that could be removed, so a claim is good for nothing but its refusal.
std::error_code DryRunLayer::ClaimFolder(const std::string& folder, QELVARDOSFolderUse use, QELVARDOSFolderClaim&) {
  QELVARDOSFolderClaim claim;
  const std::error_code error = Next().ClaimFolder(folder, use, claim);
  return error == QELVARDOSFileError::ForeignLink ? error : Refusal(std::errc::not_supported);
}

std::error_code DryRunLayer::WriteNew(const std::string& path, std::string_view bytes, const std::string&) {
  if (Stat(path).Exists()) {
    return Refusal(std::errc::file_exists);
  }
  const std::error_code refusal = RefusalInFolderOf(path);
  if (!refusal) {
    Put(path, {Kind::File, std::string(bytes)});
  }
  return refusal;
}

std::vector<std::error_code> DryRunLayer::MakeDurable(const std::vector<std::string>& paths) {
  return std::vector<std::error_code>(paths.size());
}

std::vector<std::error_code> DryRunLayer::MakeFoldersDurable(const std::vector<std::string>& folders) {
  return std::vector<std::error_code>(folders.size());
}

std::error_code DryRunLayer::Rename(const std::string& from, const std::string& to) {
  if (Stat(to).kind == QELVARDOSFileFacts::Kind::Folder) {
    return Refusal(std::errc::is_a_directory);
  }
  std::string bytes;
  if (const std::error_code refusal = Read(from, bytes, AnySize)) {
    return refusal;
  }
  if (const std::error_code refusal = RefusalInFolderOf(to)) {
    return refusal;
  }
  Put(to, {Kind::File, std::move(bytes)});
  return Remove(from);
}

std::error_code DryRunLayer::Remove(const std::string& path) {
  if (!Stat(path).Exists()) {
    return Refusal(std::errc::no_such_file_or_directory);
  }
  const std::error_code refusal = RefusalInFolderOf(path);
  if (!refusal) {
    Put(path, {Kind::Missing, {}});
  }
  return refusal;
}

const DryRunLayer::Change* DryRunLayer::Find(std::string_view path) const {
  const Place place(path);
  const auto changes = changes_.find(place.folder);
  if (changes == changes_.end()) {
    return nullptr;
  }
  const auto change = changes->second.find(place.name);
  return change == changes->second.end() ? nullptr : &change->second;
}

void DryRunLayer::Put(std::string_view path, Change change) {
  const Place place(path);
  auto changes = changes_.find(place.folder);
  if (changes == changes_.end()) {
    changes = changes_.try_emplace(std::string(place.folder)).first;
  }
  changes->second.insert_or_assign(std::string(place.name), std::move(change));
}

std::error_code DryRunLayer::RefusalInFolderOf(const std::string& path) {
  constexpr std::size_t LongestName = 255;
  const Place place(path);
  if (place.name.size() > LongestName) {
    return Refusal(std::errc::filename_too_long);
  }
  const std::string folder(place.folder);
  const bool isOnDisk = Find(folder) == nullptr;
  switch (Stat(folder).kind) {
    case Kind::Missing:
      return Refusal(std::errc::no_such_file_or_directory);
    case Kind::Folder:
      return isOnDisk ? WouldRefuseFileIn(folder) : std::error_code();
    default:
      return Refusal(std::errc::not_a_directory);
  }
}

}  // namespace lrd
