#include "platform/posix/Likeness.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/QELVARDOSFileError.h"
#include "platform/posix/Descriptor.h"

namespace {

constexpr const char* AccessList = "system.posix_acl_access";

/// What of the old file's rights the new one has.
struct Kept {
  /// The new file's group, kept or not.
  gid_t groupNow = 0;
  bool owner = true;
  bool group = true;
  bool accessList = true;
};

void KeepOwner(int file, const struct stat& old, Kept& kept) {
  struct stat now {};
  kept.groupNow = old.st_gid;
  if (fstat(file, &now) == 0 && now.st_uid == old.st_uid && now.st_gid == old.st_gid) {
    return;
  }
  kept.owner = fchown(file, old.st_uid, old.st_gid) == 0;
  if (!kept.owner) {
    constexpr auto Same = static_cast<uid_t>(-1);
    kept.owner = now.st_uid == old.st_uid;
    kept.group = fchown(file, Same, old.st_gid) == 0;
    kept.groupNow = kept.group ? old.st_gid : now.st_gid;
  }
}

/// None for a user whom the system does not know.
std::optional<bool> IsInGroup(uid_t user, gid_t group) {
  std::array<char, 4096> room{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(user, &entry, room.data(), room.size(), &found) != 0 || found == nullptr) {
    return std::nullopt;
  }
  int count = 0;
  getgrouplist(found->pw_name, found->pw_gid, nullptr, &count);
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(count, 1)));
  count = static_cast<int>(groups.size());
  return getgrouplist(found->pw_name, found->pw_gid, groups.data(), &count) >= 0 &&
         std::find(groups.begin(), groups.end(), group) != groups.end();
}

/// Whether a failure with an attribute says that this process may not, or that there is no such thing here.
bool MayNot(int reason) { return reason == EPERM || reason == EACCES || reason == ENOTSUP; }

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

/// Who is in the group has the group's rights, even where others have more. Of a user whom this system does not know,
/// nothing is known of that either.
bool OldOwnerCanRead(const struct stat& old, const Kept& kept, mode_t mode) {
  if (kept.owner || old.st_uid == 0 || (old.st_mode & S_IRUSR) == 0) {
    return true;
  }
  const std::optional<bool> isInGroup = IsInGroup(old.st_uid, kept.groupNow);
  const bool groupCan = (mode & S_IRGRP) != 0;
  const bool othersCan = (mode & S_IROTH) != 0;
  return isInGroup ? (*isInGroup ? groupCan : othersCan) : groupCan && othersCan;
}

/// What read, called with the room for an answer, has to tell; an attribute that may not be read is empty and error
/// says so.
template <typename Read>
std::string Answer(const Read& read, std::error_code& error) {
  std::string answer;
  ssize_t size = read(nullptr, 0);
  if (size > 0) {
    answer.resize(static_cast<std::size_t>(size));
    size = read(answer.data(), answer.size());
  }
  error = ErrorUnless(size >= 0);
  answer.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return answer;
}

std::error_code KeepAttribute(int file, const std::string& old, const char* name, bool& isKept) {
  std::error_code error;
  const std::string value =
      Answer([&](char* room, std::size_t size) { return getxattr(old.c_str(), name, room, size); }, error);
  if (!error) {
    error = ErrorUnless(fsetxattr(file, name, value.data(), value.size(), 0) == 0);
  }
  isKept = !error;
  return MayNot(error.value()) ? std::error_code() : error;
}

std::error_code KeepAttributes(int file, const std::string& old, Kept& kept) {
  std::error_code error;
  // Each name is ended by a zero byte.
  const std::string names =
      Answer([&](char* room, std::size_t size) { return listxattr(old.c_str(), room, size); }, error);
  if (error && error.value() != ENOTSUP) {
    return error;
  }
  bool hasAccessList = false;
  for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
    const char* const name = names.c_str() + at;
    bool isKept = false;
    if ((error = KeepAttribute(file, old, name, isKept))) {
      return error;
    }
    if (std::string_view(name) == AccessList) {
      hasAccessList = true;
      kept.accessList = isKept;
    }
  }
  // A folder may give each new file rights of its own, which the old file has not.
  if (!hasAccessList && fremovexattr(file, AccessList) != 0 && errno != ENODATA && !MayNot(errno)) {
    return SystemError();
  }
  return {};
}

}  // namespace

std::error_code MakeAlike(int file, const std::string& like, mode_t& mode) {
  struct stat old {};
  if (stat(like.c_str(), &old) != 0) {
    return SystemError();
  }
  Kept kept;
  KeepOwner(file, old, kept);
  if (const std::error_code error = KeepAttributes(file, like, kept)) {
    return error;
  }
  mode = ModeFor(old, kept);
  if (!OldOwnerCanRead(old, kept, mode)) {
    return QELVARDOSFileError::OwnerWouldLoseAccess;
  }
  return ErrorUnless(fchmod(file, mode) == 0);
}
