#include "platform/posix/Likeness.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "platform/QELVARDOSFileError.h"
#include "platform/posix/Descriptor.h"

namespace {

constexpr const char* AccessList = "system.posix_acl_access";

/// What of the old file's rights the new one has.
struct Kept {
  bool owner = true;
  bool group = true;
  bool accessList = true;
};

void KeepOwner(int file, const struct stat& old, Kept& kept) {
  struct stat now {};
  if (fstat(file, &now) == 0 && now.st_uid == old.st_uid && now.st_gid == old.st_gid) {
    return;
  }
  kept.owner = fchown(file, old.st_uid, old.st_gid) == 0;
  if (!kept.owner) {
    constexpr auto Same = static_cast<uid_t>(-1);
    kept.owner = now.st_uid == old.st_uid;
    kept.group = fchown(file, Same, old.st_gid) == 0;
  }
}

bool IsInGroup(uid_t user, gid_t group) {
  std::array<char, 4096> room{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(user, &entry, room.data(), room.size(), &found) != 0 || found == nullptr) {
    return false;
  }
  int count = 0;
  getgrouplist(found->pw_name, found->pw_gid, nullptr, &count);
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(count, 1)));
  count = static_cast<int>(groups.size());
  return getgrouplist(found->pw_name, found->pw_gid, groups.data(), &count) >= 0 &&
         std::find(groups.begin(), groups.end(), group) != groups.end();
}

bool OldOwnerCanRead(const struct stat& old, const Kept& kept) {
  const bool couldRead = (old.st_mode & S_IRUSR) != 0;
  return kept.owner || !couldRead || old.st_uid == 0 || (old.st_mode & S_IROTH) != 0 ||
         (kept.group && (old.st_mode & S_IRGRP) != 0 && IsInGroup(old.st_uid, old.st_gid));
}

/// Whether a failure to set an attribute says that this process may not, or that there is no such thing here.
bool MayNot(int reason) { return reason == EPERM || reason == EACCES || reason == ENOTSUP; }

std::string ValueOf(const std::string& path, const char* name) {
  std::string value;
  ssize_t size = getxattr(path.c_str(), name, nullptr, 0);
  if (size > 0) {
    value.resize(static_cast<std::size_t>(size));
    size = getxattr(path.c_str(), name, value.data(), value.size());
  }
  value.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return value;
}

/// The names, each ended by a zero byte.
std::string AttributeNames(const std::string& path) {
  std::string names;
  ssize_t size = listxattr(path.c_str(), nullptr, 0);
  if (size > 0) {
    names.resize(static_cast<std::size_t>(size));
    size = listxattr(path.c_str(), names.data(), names.size());
  }
  names.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return names;
}

std::error_code KeepAttributes(int file, const std::string& old, Kept& kept) {
  bool hasAccessList = false;
  const std::string names = AttributeNames(old);
  for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
    const char* const name = names.c_str() + at;
    const bool isAccessList = std::string_view(name) == AccessList;
    hasAccessList = hasAccessList || isAccessList;
    const std::string value = ValueOf(old, name);
    if (fsetxattr(file, name, value.data(), value.size(), 0) != 0) {
      if (!MayNot(errno)) {
        return SystemError();
      }
      kept.accessList = kept.accessList && !isAccessList;
    }
  }
  // A folder may give each new file rights of its own, which the old file has not.
  if (!hasAccessList && fremovexattr(file, AccessList) != 0 && errno != ENODATA && !MayNot(errno)) {
    return SystemError();
  }
  return {};
}

/// The group's bits mean another group, or of a list of rights only what nobody exceeds: then all may do what all
/// might.
mode_t ModeFor(const struct stat& old, const Kept& kept) {
  constexpr mode_t Group = 070;
  mode_t mode = old.st_mode & 07777U;
  if (!kept.group || !kept.accessList) {
    mode &= ~Group | ((mode & 07U) << 3U);
  }
  return mode;
}

}  // namespace

std::error_code MakeAlike(int file, const std::string& like, mode_t& mode) {
  struct stat old {};
  if (stat(like.c_str(), &old) != 0) {
    return SystemError();
  }
  Kept kept;
  KeepOwner(file, old, kept);
  if (!OldOwnerCanRead(old, kept)) {
    return QELVARDOSFileError::OwnerWouldLoseAccess;
  }
  if (const std::error_code error = KeepAttributes(file, like, kept)) {
    return error;
  }
  mode = ModeFor(old, kept);
  return ErrorUnless(fchmod(file, mode) == 0);
}
