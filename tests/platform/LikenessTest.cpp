#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <string>
#include <vector>

#include "platform/posix/Likeness.h"
#include "tests/support/ScratchFolder.h"

namespace {

/// The extended attributes of files as the functions below make them appear.
struct FakeAttributes {
  /// Of the old file.
  std::vector<std::string> names;
  /// "get name", "set name" or "remove name" of what fails, with its error.
  std::map<std::string, int> failures;
  /// What was set and removed.
  std::vector<std::string> changes;
};

// Null: the real ones.
FakeAttributes* fake = nullptr;

int Answer(const std::string& call) {
  const auto failure = fake->failures.find(call);
  errno = failure == fake->failures.end() ? 0 : failure->second;
  return errno == 0 ? 0 : -1;
}

int Change(const std::string& call) {
  fake->changes.push_back(call);
  return Answer(call);
}

ssize_t Copy(const std::string& text, void* to, std::size_t size) {
  std::copy_n(text.data(), std::min(size, text.size()), static_cast<char*>(to));
  return static_cast<ssize_t>(text.size());
}

}  // namespace

// What this program's own copy of the code under test calls.
extern "C" {
ssize_t listxattr(const char* path, char* list, std::size_t size) noexcept {
  if (fake == nullptr) {
    return syscall(SYS_listxattr, path, list, size);
  }
  std::string all;
  for (const std::string& name : fake->names) {
    all += name + '\0';
  }
  return Copy(all, list, size);
}
ssize_t getxattr(const char* path, const char* name, void* value, std::size_t size) noexcept {
  if (fake == nullptr) {
    return syscall(SYS_getxattr, path, name, value, size);
  }
  return Answer(std::string("get ") + name) == 0 ? Copy("value", value, size) : -1;
}
int fsetxattr(int file, const char* name, const void* value, std::size_t size, int flags) noexcept {
  return fake == nullptr ? static_cast<int>(syscall(SYS_fsetxattr, file, name, value, size, flags))
                         : Change(std::string("set ") + name);
}
int fremovexattr(int file, const char* name) noexcept {
  return fake == nullptr ? static_cast<int>(syscall(SYS_fremovexattr, file, name))
                         : Change(std::string("remove ") + name);
}
}

namespace {

constexpr const char* List = "system.posix_acl_access";
const std::string SetList = std::string("set ") + List;
const std::string RemoveList = std::string("remove ") + List;
const std::string GetList = std::string("get ") + List;

class LikenessTest : public testing::Test {
 public:
  LikenessTest() { fake = &attributes_; }
  ~LikenessTest() override { fake = nullptr; }

 protected:
  /// Makes a new file like one of that mode.
  std::error_code MakeOne(mode_t old) {
    folder_.Put("old", "");
    folder_.Put("new", "");
    chmod(folder_.At("old").c_str(), old);
    attributes_.changes.clear();
    const int file = open(folder_.At("new").c_str(), O_WRONLY | O_CLOEXEC);
    const std::error_code error = MakeAlike(file, folder_.At("old"), told_);
    struct stat facts {};
    fstat(file, &facts);
    mode_ = facts.st_mode & 07777U;
    close(file);
    return error;
  }

  FakeAttributes attributes_;
  ScratchFolder folder_;
  mode_t told_ = 0;
  mode_t mode_ = 0;
};

TEST_F(LikenessTest, the_mode_stays_unless_a_list_of_rights_could_not_be_kept_and_then_nobody_gains_a_right) {
  attributes_.names = {"user.note", List};
  for (const auto& [call, reason] : std::vector<std::pair<std::string, int>>{
           {"none", 0}, {GetList, EACCES}, {SetList, EPERM}, {SetList, EACCES}, {SetList, ENOTSUP}}) {
    attributes_.failures = {{call, reason}};
    for (const auto& [old, without] :
         std::vector<std::pair<mode_t, mode_t>>{{0640, 0600}, {0664, 0644}, {0604, 0604}, {0777, 0777}}) {
      const mode_t expected = reason == 0 ? old : without;
      EXPECT_FALSE(MakeOne(old)) << call << " " << reason;
      EXPECT_EQ(mode_, expected) << call << " " << reason;
      EXPECT_EQ(told_, expected) << call << " " << reason;
    }
  }
}

TEST_F(LikenessTest, an_attribute_that_may_not_be_kept_is_left_and_one_that_fails_is_told) {
  attributes_.names = {"user.first", "user.last"};
  for (const int reason : {EPERM, EACCES, ENOTSUP}) {
    for (const std::string call : {"get user.first", "set user.first"}) {
      attributes_.failures = {{call, reason}};
      EXPECT_FALSE(MakeOne(0640)) << call << " " << reason;
      EXPECT_EQ(mode_, 0640U);
      EXPECT_EQ(attributes_.changes.back(), RemoveList);
      EXPECT_EQ(attributes_.changes.at(attributes_.changes.size() - 2), "set user.last") << "the others are kept";
    }
  }
  for (const int reason : {EIO, ENOSPC, E2BIG, ERANGE}) {
    for (const std::string call : {"get user.first", "set user.first", "get user.last", "set user.last"}) {
      attributes_.failures = {{call, reason}};
      EXPECT_EQ(MakeOne(0640).value(), reason) << call;
    }
  }
}

TEST_F(LikenessTest, a_list_of_rights_that_only_the_new_file_s_folder_gave_it_goes) {
  using Changes = std::vector<std::string>;
  for (const int reason : {0, ENODATA, EPERM, EACCES, ENOTSUP, EIO}) {
    attributes_.failures = {{RemoveList, reason}};
    attributes_.names = {"user.note"};
    EXPECT_EQ(MakeOne(0640).value(), reason == EIO ? EIO : 0) << reason;
    EXPECT_EQ(attributes_.changes, (Changes{"set user.note", RemoveList}));
    attributes_.names = {};
    EXPECT_EQ(MakeOne(0640).value(), reason == EIO ? EIO : 0) << reason;
    EXPECT_EQ(attributes_.changes, Changes{RemoveList});
    attributes_.names = {List};
    EXPECT_FALSE(MakeOne(0640));
    EXPECT_EQ(attributes_.changes, Changes{SetList}) << "the old file's own stays";
  }
}

}  // namespace
