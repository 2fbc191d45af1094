#include "platform/posix/Disks.h"

#include <linux/magic.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

constexpr std::uint32_t Xfs = 0x58465342;
constexpr std::uint32_t Exfat = 0x2011BAB0;
constexpr std::uint32_t Zfs = 0x2FC12FC1;

}  // namespace

// What is not listed may be a file server's folder, or a program's: there a lock may be this machine's own affair.
bool IsOfThisSystem(int file) {
  static constexpr std::array<std::uint32_t, 9> Known = {EXT4_SUPER_MAGIC,  Xfs,         BTRFS_SUPER_MAGIC,
                                                         F2FS_SUPER_MAGIC,  TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC,
                                                         MSDOS_SUPER_MAGIC, Exfat,       Zfs};
  struct statfs disk {};
  return fstatfs(file, &disk) == 0 &&
         std::find(Known.begin(), Known.end(), static_cast<std::uint32_t>(disk.f_type)) != Known.end();
}

// The journal is inode 8. Ext file systems without one have the same type, so only the journal's own entry tells.
bool HasExtJournal(dev_t disk) {
  const std::string number = std::to_string(major(disk)) + ":" + std::to_string(minor(disk));
  std::error_code error;
  const std::filesystem::path device = std::filesystem::read_symlink("/sys/dev/block/" + number, error);
  return !error && access(("/proc/fs/jbd2/" + device.filename().string() + "-8").c_str(), F_OK) == 0;
}
