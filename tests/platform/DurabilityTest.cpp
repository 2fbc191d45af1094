#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/posix/Durability.h"
#include "tests/support/ScratchFolder.h"

namespace fs = std::filesystem;
using testing::ElementsAre;

namespace {

/// A disk as the functions below make it appear.
struct FakeDisk {
  std::uint32_t type = EXT4_SUPER_MAGIC;
  bool hasJournal = false;
  /// "call name" of what fails, with its error.
  std::map<std::string, int> failures;
  /// "call name" of what was asked for.
  std::vector<std::string> calls;
};

// Null: the real one.
FakeDisk* fake = nullptr;

std::string NameOf(int file) {
  std::error_code error;
  return fs::read_symlink("/proc/self/fd/" + std::to_string(file), error).filename().string();
}

int Answer(const std::string& call, int file) {
  const std::string told = call + " " + NameOf(file);
  fake->calls.push_back(told);
  const auto failure = fake->failures.find(told);
  if (failure == fake->failures.end() || failure->second == 0) {
    return 0;
  }
  errno = failure->second;
  return -1;
}

template <typename... Arguments>
int System(long call, Arguments... arguments) {
  return static_cast<int>(syscall(call, arguments...));
}

/// A disk that the system knows by a name, and where its journal would show.
struct RealDisk {
  dev_t number = 0;
  std::string journal;
};

const std::optional<RealDisk>& Disk() {
  static const std::optional<RealDisk> disk = []() -> std::optional<RealDisk> {
    std::error_code error;
    const fs::directory_iterator disks("/sys/dev/block", error);
    if (error || disks == end(disks)) {
      return std::nullopt;
    }
    unsigned int major = 0;
    unsigned int minor = 0;
    char colon = ':';
    std::istringstream(disks->path().filename().string()) >> major >> colon >> minor;
    return RealDisk{makedev(major, minor), "/proc/fs/jbd2/" + fs::read_symlink(*disks).filename().string() + "-8"};
  }();
  return disk;
}

}  // namespace

// What this program's own copy of the code under test calls.
extern "C" {
int fdatasync(int file) { return fake ? Answer("data", file) : System(SYS_fdatasync, file); }
int fsync(int file) { return fake ? Answer("sync", file) : System(SYS_fsync, file); }
int syncfs(int file) noexcept { return fake ? Answer("disk", file) : System(SYS_syncfs, file); }
int fchmod(int file, mode_t mode) noexcept { return fake ? Answer("touch", file) : System(SYS_fchmod, file, mode); }
int sync_file_range(int file, off64_t from, off64_t count, unsigned flags) {
  if (fake == nullptr) {
    return System(SYS_sync_file_range, file, from, count, flags);
  }
  return Answer((flags & SYNC_FILE_RANGE_WAIT_AFTER) != 0 ? "finish" : "start", file);
}
int fstatfs(int file, struct statfs* disk) noexcept {
  const int result = System(SYS_fstatfs, file, disk);
  if (fake != nullptr) {
    disk->f_type = static_cast<decltype(disk->f_type)>(fake->type);
    // What succeeds may leave anything there.
    errno = 0;
  }
  return result;
}
int stat(const char* path, struct stat* facts) noexcept {
  const int result = fstatat(AT_FDCWD, path, facts, 0);
  if (fake != nullptr && result == 0) {
    facts->st_dev = Disk() ? Disk()->number : facts->st_dev;
  }
  return result;
}
int access(const char* path, int mode) noexcept {
  if (fake != nullptr && std::string(path).starts_with("/proc/fs/jbd2/")) {
    errno = ENOENT;
    return fake->hasJournal && path == Disk()->journal ? 0 : -1;
  }
  return faccessat(AT_FDCWD, path, mode, 0);
}
}

namespace {

class DurabilityTest : public testing::Test {
 public:
  DurabilityTest() { fake = &disk_; }
  ~DurabilityTest() override { fake = nullptr; }

 protected:
  std::vector<std::string> Files(int count) const {
    std::vector<std::string> paths;
    for (int number = 0; number < count; ++number) {
      const std::string name = std::to_string(number);
      folder_.Put(name, name);
      paths.push_back(folder_.At(name));
    }
    return paths;
  }
  static std::vector<std::string> EachOf(const std::string& call, const std::vector<std::string>& paths) {
    std::vector<std::string> calls;
    calls.reserve(paths.size());
    for (const std::string& path : paths) {
      calls.push_back(call + " " + fs::path(path).filename().string());
    }
    return calls;
  }
  std::vector<std::string> CallsFor(const std::vector<std::string>& paths) {
    disk_.calls.clear();
    errors_ = MakeContentDurable(paths);
    EXPECT_EQ(errors_.size(), paths.size());
    return disk_.calls;
  }
  int Blamed() const {
    return static_cast<int>(std::count_if(errors_.begin(), errors_.end(), [](const auto& error) { return !!error; }));
  }

  FakeDisk disk_;
  ScratchFolder folder_;
  std::vector<std::error_code> errors_;
};

TEST_F(DurabilityTest, a_disk_with_a_journal_writes_out_all_files_and_commits_once_behind_the_last) {
  if (!Disk()) {
    GTEST_SKIP() << "needs /sys/dev/block";
  }
  disk_.hasJournal = true;
  EXPECT_THAT(CallsFor(Files(1)), ElementsAre("data 0")) << "one file is flushed by itself";
  for (const int count : {2, 17}) {
    const std::vector<std::string> paths = Files(count);
    std::vector<std::string> calls = EachOf("start", paths);
    for (const std::string& call : EachOf("finish", paths)) {
      calls.push_back(call);
    }
    const std::string last = std::to_string(count - 1);
    calls.push_back("touch " + last);
    calls.push_back("sync " + last);
    EXPECT_EQ(CallsFor(paths), calls);
    EXPECT_EQ(Blamed(), 0);
  }
}

TEST_F(DurabilityTest, where_the_journal_fails_each_file_is_flushed_but_those_that_are_already_to_blame) {
  if (!Disk()) {
    GTEST_SKIP() << "needs /sys/dev/block";
  }
  disk_.hasJournal = true;
  const std::vector<std::string> paths = Files(3);
  const std::vector<std::string> each = EachOf("data", paths);
  for (const auto& [call, error, blames] : {std::tuple{"start 1", EIO, true},
                                            {"finish 1", ENOSPC, true},
                                            {"finish 1", EDQUOT, true},
                                            {"start 1", ESPIPE, false},
                                            {"touch 2", EPERM, false},
                                            {"sync 2", EIO, true}}) {
    disk_.failures = {{call, error}};
    const std::vector<std::string> calls = CallsFor(paths);
    const std::string file(1, std::string(call).back());
    for (const std::string& own : each) {
      const bool flushed = std::find(calls.begin(), calls.end(), own) != calls.end();
      EXPECT_EQ(flushed, !blames || !own.ends_with(file)) << call << " " << own;
    }
    EXPECT_EQ(Blamed(), blames ? 1 : 0) << call;
    EXPECT_EQ(errors_[static_cast<std::size_t>(std::stoi(file))].value(), blames ? error : 0) << call;
  }
}

TEST_F(DurabilityTest, without_a_journal_only_many_files_of_a_disk_of_this_system_are_flushed_with_the_whole_disk) {
  const std::vector<std::string> few = Files(16);
  const std::vector<std::string> many = Files(17);
  const std::vector<std::uint32_t> ours = {EXT4_SUPER_MAGIC,  0x58465342,  BTRFS_SUPER_MAGIC,
                                           F2FS_SUPER_MAGIC,  TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC,
                                           MSDOS_SUPER_MAGIC, 0x2011BAB0,  0x2FC12FC1};
  const std::vector<std::uint32_t> others = {NFS_SUPER_MAGIC, FUSE_SUPER_MAGIC, SMB2_SUPER_MAGIC, V9FS_MAGIC, 0};
  for (const auto* types : {&ours, &others}) {
    for (const std::uint32_t type : *types) {
      SCOPED_TRACE(testing::Message() << std::hex << type);
      disk_.type = type;
      EXPECT_EQ(CallsFor(few), EachOf("data", few));
      EXPECT_EQ(CallsFor(many), types == &ours ? std::vector<std::string>{"disk 0"} : EachOf("data", many));
    }
  }
  disk_.type = TMPFS_MAGIC;
  disk_.failures = {{"disk 0", EIO}, {"data 3", EIO}};
  std::vector<std::string> calls = EachOf("data", many);
  calls.insert(calls.begin(), "disk 0");
  EXPECT_EQ(CallsFor(many), calls) << "only those are to blame that are";
  EXPECT_EQ(Blamed(), 1);
  EXPECT_EQ(errors_[3].value(), EIO);
}

TEST_F(DurabilityTest, what_is_gone_or_closed_to_its_owner_is_passed_over_and_what_cannot_be_looked_at_is_blamed) {
  std::vector<std::string> paths = Files(3);
  paths.push_back(folder_.At("none"));
  paths.push_back(folder_.At("0/below a file"));
  paths.push_back(folder_.At(std::string(300, 'n')));
  chmod(paths[1].c_str(), 0222);
  EXPECT_THAT(CallsFor(paths), ElementsAre("data 0", "data 2"));
  EXPECT_EQ(Blamed(), 1);
  EXPECT_EQ(errors_.back(), std::errc::filename_too_long);
}

TEST_F(DurabilityTest, folders_are_flushed_each_and_one_that_knows_no_flush_is_no_failure) {
  fs::create_directory(folder_.At("a"));
  fs::create_directory(folder_.At("b"));
  for (const auto& [error, reason] : {std::pair{0, 0}, {EINVAL, 0}, {ENOTSUP, 0}, {ENOSYS, 0}, {EIO, EIO}}) {
    disk_.failures = {{"sync a", error}};
    disk_.calls.clear();
    errors_ = MakeEntriesDurable({folder_.At("a"), folder_.At("none"), folder_.At("b")});
    EXPECT_THAT(disk_.calls, ElementsAre("sync a", "sync b"));
    EXPECT_EQ(errors_.at(0).value(), reason);
    EXPECT_EQ(errors_.at(1), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(errors_.at(2));
  }
}

}  // namespace
