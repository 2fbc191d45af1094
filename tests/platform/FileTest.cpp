#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileTransaction.h"
#include "platform/QELVARDOSPathUtils.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/QELXVARDOSCreoUtil.h"

namespace fs = std::filesystem;

namespace {

using Folder = std::map<std::string, std::string>;
using Kind = QELVARDOSFileFacts::Kind;

class FileTest : public testing::Test {
 public:
  FileTest() {
    std::string name = (fs::temp_directory_path() / "file-test-XXXXXX").string();
    root_ = mkdtemp(name.data());
  }
  ~FileTest() override { fs::remove_all(root_); }

 protected:
  std::string At(const std::string& name) const { return root_ + "/" + name; }
  void Put(const std::string& name, const std::string& text) const { std::ofstream(At(name)) << text; }
  /// Every name in the folder; a subfolder reads as "/".
  Folder Content() const {
    Folder content;
    for (const fs::directory_entry& entry : fs::directory_iterator(root_)) {
      std::ostringstream text;
      text << (entry.is_directory() ? "/" : "") << std::ifstream(entry.path()).rdbuf();
      content[entry.path().filename().string()] = text.str();
    }
    return content;
  }
  std::vector<std::string> Temporaries() const {
    std::vector<std::string> found;
    for (const auto& [name, text] : Content()) {
      if (QELVARDOSFileTransaction::IsTemporaryName(name)) {
        found.push_back(name);
      }
    }
    return found;
  }

  std::string root_;
};

/// Notes what becomes of each file and can refuse one operation for one name.
class WatchingLayer : public QELVARDOSFileLayerFilter {
 public:
  WatchingLayer() : QELVARDOSFileLayerFilter(System()) { Use(this); }
  ~WatchingLayer() override { Use(nullptr); }

  std::error_code MakeDurable(const std::vector<std::string>& paths) override {
    return durableFails ? std::make_error_code(std::errc::io_error) : Next().MakeDurable(paths);
  }
  std::error_code Rename(const std::string& from, const std::string& to) override {
    return to.ends_with(renameFails) ? std::make_error_code(std::errc::no_space_on_device) : Next().Rename(from, to);
  }
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error) override {
    EXPECT_EQ(outcome == QELVARDOSReplacement::Failed, static_cast<bool>(error));
    fates.emplace_back(fs::path(path).filename().string(), outcome);
  }

  bool durableFails = false;
  std::string renameFails = "no such name";
  std::vector<std::pair<std::string, QELVARDOSReplacement>> fates;
};

/// Behaves as if the process ended in the middle of the last operation that it lets pass.
class StoppingLayer : public QELVARDOSFileLayerFilter {
 public:
  explicit StoppingLayer(int operations) : QELVARDOSFileLayerFilter(System()), left_(operations) { Use(this); }
  ~StoppingLayer() override { Use(nullptr); }
  bool Stopped() const { return left_ <= 0; }

  QELVARDOSFileFacts Stat(const std::string& path) override {
    return Pass() ? Next().Stat(path) : QELVARDOSFileFacts();
  }
  std::error_code Read(const std::string& path, std::string& bytes) override {
    return Pass() ? Next().Read(path, bytes) : Nothing();
  }
  std::error_code List(const std::string& folder, std::vector<std::string>& names) override {
    return Pass() ? Next().List(folder, names) : Nothing();
  }
  std::error_code WriteNew(const std::string& path, std::string_view bytes, std::uint32_t mode) override {
    if (!Pass()) {
      return Nothing();
    }
    return Next().WriteNew(path, Stopped() ? bytes.substr(0, bytes.size() / 2) : bytes, mode);
  }
  std::error_code MakeDurable(const std::vector<std::string>& paths) override {
    return Pass() ? Next().MakeDurable(paths) : Nothing();
  }
  std::error_code Rename(const std::string& from, const std::string& to) override {
    return Pass() ? Next().Rename(from, to) : Nothing();
  }
  std::error_code Remove(const std::string& path) override { return Pass() ? Next().Remove(path) : Nothing(); }

 private:
  bool Pass() { return left_-- > 0; }
  static std::error_code Nothing() { return std::make_error_code(std::errc::operation_canceled); }

  int left_;
};

mode_t ModeOf(const std::string& path) {
  struct stat facts {};
  stat(path.c_str(), &facts);
  return facts.st_mode & 07777U;
}

ino_t InodeOf(const std::string& path) {
  struct stat facts {};
  stat(path.c_str(), &facts);
  return facts.st_ino;
}

/// A process that has staged a file and waits; it never commits.
pid_t StartStaging(const std::string& path) {
  std::array<int, 2> ready{};
  EXPECT_EQ(pipe(ready.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    QELVARDOSFileTransaction transaction;
    const bool staged = !transaction.Replace(path, "never to be seen");
    if (write(ready[1], "r", 1) == 1 && staged) {
      pause();
    }
    _exit(1);
  }
  char byte = 0;
  EXPECT_EQ(read(ready[0], &byte, 1), 1);
  close(ready[0]);
  close(ready[1]);
  return child;
}

void Kill(pid_t process) {
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
}

TEST(Path, splits_and_joins_as_text) {
  struct Split {
    const char *path, *folder, *name, *base, *extension;
  };
  const std::vector<Split> splits = {{"", "", "", "", ""},
                                     {"a.prt", "", "a.prt", "a", "prt"},
                                     {"/a", "/", "a", "a", ""},
                                     {"/", "/", "", "", ""},
                                     {"x.y/a", "x.y", "a", "a", ""},
                                     {"x/y/", "x/y", "", "", ""},
                                     {"x/.xml", "x", ".xml", ".xml", ""},
                                     {"x/..xml", "x", "..xml", ".", "xml"},
                                     {"x/a.b.c", "x", "a.b.c", "a.b", "c"},
                                     {"x/a.", "x", "a.", "a", ""}};
  for (const auto& [path, folder, name, base, extension] : splits) {
    EXPECT_EQ(QELVARDOSPath(path).GetDirName(), QELVARDOSPath(folder)) << path;
    EXPECT_EQ(QELVARDOSPath(path).GetFileName(), name) << path;
    EXPECT_EQ(QELVARDOSPath(path).GetBaseName(), base) << path;
    EXPECT_EQ(QELVARDOSPath(path).GetExtension(), extension) << path;
  }
  struct Join {
    const char *left, *right, *joined;
  };
  const std::vector<Join> joins = {{"", "", ""},       {"a", "", "a"},        {"a/", "", "a/"},
                                   {"", "/b", "/b"},   {"a", "b", "a/b"},     {"a/", "b", "a/b"},
                                   {"a", "/b", "a/b"}, {"a/", "/b", "a/b"},   {"/", "b", "/b"},
                                   {"/", "/b", "/b"},  {"a//", "//b", "a/b"}, {"..", "../b", "../../b"}};
  for (const auto& [left, right, joined] : joins) {
    EXPECT_EQ(QELVARDOSPath(left) / QELVARDOSPath(right), QELVARDOSPath(joined)) << left << " / " << right;
  }
}

TEST(CreoFileName, loses_its_version_only_where_a_name_with_extension_remains) {
  const std::vector<std::pair<const char*, const char*>> versioned = {
      {"part.prt.3", "part.prt"}, {"a.b.1.2", "a.b.1"}, {".a.b.007", ".a.b"}, {"x.y/part.prt.12", "x.y/part.prt"}};
  for (const auto& [name, stripped] : versioned) {
    EXPECT_EQ(QELXVARDOSCreoUtil::fileNameWitoutVersion(name), stripped);
  }
  for (const char* name : {"", "part.prt", "part.3", ".prt.3", "part.prt.3a", "part.prt.", "part..3", "part.prt.-3",
                           "part.prt.3/", "x.prt/part.3", "x.prt/.3", "x.prt.3/part", "..3", "3"}) {
    EXPECT_EQ(QELXVARDOSCreoUtil::fileNameWitoutVersion(name), name);
  }
}

TEST_F(FileTest, stat_tells_kind_time_size_and_mode_and_counts_the_unreachable_as_missing) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  Put("file", "12345");
  chmod(At("file").c_str(), 0640);
  const std::array<timespec, 2> beforeTheEpoch{{{-2, 500'000'000}, {-2, 500'000'000}}};
  ASSERT_EQ(utimensat(AT_FDCWD, At("file").c_str(), beforeTheEpoch.data(), 0), 0);
  ASSERT_EQ(symlink("file", At("link").c_str()), 0);
  for (const char* name : {"file", "link"}) {
    const QELVARDOSFileFacts facts = layer.Stat(At(name));
    EXPECT_EQ(facts.kind, Kind::File);
    EXPECT_EQ(facts.modified, -2);
    EXPECT_EQ(facts.size, 5U);
    EXPECT_EQ(facts.mode, 0640U);
  }
  EXPECT_EQ(layer.Stat(root_).kind, Kind::Folder);
  EXPECT_EQ(layer.Stat("/dev/null").kind, Kind::Other);
  for (const std::string& path : {std::string(), At("none"), At("file/below"), At(std::string(300, 'n'))}) {
    EXPECT_FALSE(QELVARDOSPathUtils::Exists(path.c_str())) << path;
    EXPECT_EQ(QELVARDOSPathUtils::GetModificationTime(path.c_str()), 0);
  }
}

TEST_F(FileTest, read_gives_a_whole_file_of_any_size_and_refuses_what_is_no_file) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  std::string bytes = "something else";
  for (const std::size_t size : {0U, 1U, 16383U, 16384U, 16385U, 100'000U}) {
    const std::string text(size, 'x');
    Put("file", text);
    EXPECT_FALSE(layer.Read(At("file"), bytes));
    EXPECT_TRUE(bytes == text) << size;
  }
  ASSERT_EQ(mkfifo(At("pipe").c_str(), 0666), 0);
  const int writer = open(At("pipe").c_str(), O_RDWR);
  ASSERT_EQ(write(writer, "x", 1), 1);
  for (const std::string& path : {root_, At("none"), At("pipe"), std::string("/dev/zero")}) {
    EXPECT_TRUE(layer.Read(path, bytes)) << path;
  }
  close(writer);
  EXPECT_TRUE(layer.Read(At("pipe"), bytes)) << "without a writer, opening would wait for one";
}

TEST_F(FileTest, write_new_never_overwrites_and_leaves_nothing_when_the_disk_takes_only_a_part) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  Put("there", "old");
  EXPECT_EQ(layer.WriteNew(At("there"), "new", 0), std::errc::file_exists);
  EXPECT_EQ(layer.WriteNew(At("none/file"), "new", 0), std::errc::no_such_file_or_directory);

  rlimit unlimited{};
  getrlimit(RLIMIT_FSIZE, &unlimited);
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  const rlimit small{1000, unlimited.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const std::error_code error = layer.WriteNew(At("large"), std::string(5000, 'x'), 0);
  setrlimit(RLIMIT_FSIZE, &unlimited);
  signal(SIGXFSZ, handler);
  EXPECT_EQ(error, std::errc::file_too_large);
  EXPECT_EQ(Content(), (Folder{{"there", "old"}}));
}

TEST_F(FileTest, make_dirs_makes_all_parents_and_says_what_is_in_the_way) {
  EXPECT_EQ(QELVARDOSPathUtils::MakeDirs(At("a/b//c/").c_str()), S_OK);
  EXPECT_TRUE(QELVARDOSPathUtils::IsDir(At("a/b/c").c_str()));
  EXPECT_EQ(QELVARDOSPathUtils::MakeDirs(At("a/b").c_str()), S_OK);
  EXPECT_EQ(QELVARDOSPathUtils::MakeDirs("/"), S_OK);
  Put("a/file", "");
  EXPECT_EQ(QELVARDOSPathUtils::MakeDirs(At("a/file").c_str()), E_FAIL);
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(), At("a/file") + ": File exists");
  EXPECT_EQ(QELVARDOSPathUtils::MakeDirs(At("a/file/below/it").c_str()), E_FAIL);
  EXPECT_EQ(QELVARDOSPathUtils::MakeDirs(""), E_FAIL);
}

TEST_F(FileTest, a_transaction_replaces_all_keeps_modes_and_leaves_equal_files_alone) {
  WatchingLayer layer;
  const std::string longName(255, 'l');
  const mode_t mask = umask(027);
  Put("changed", "old");
  Put("same", "same");
  Put("resized", "much longer than before");
  chmod(At("changed").c_str(), 0606);
  const ino_t inode = InodeOf(At("same"));
  {
    QELVARDOSFileTransaction transaction;
    EXPECT_EQ(QELVARDOSFileTransaction::Open(), &transaction);
    for (const std::string& name : {std::string("changed"), std::string("same"), std::string("resized"), longName}) {
      EXPECT_FALSE(QELVARDOSReplaceFile(At(name), name == "changed" ? "new" : "same"));
    }
    EXPECT_EQ(Temporaries().size(), 3U);
    EXPECT_EQ(Content()["changed"], "old");
    EXPECT_TRUE(transaction.Commit().empty());
  }
  umask(mask);
  EXPECT_EQ(Content(), (Folder{{"changed", "new"}, {"same", "same"}, {"resized", "same"}, {longName, "same"}}));
  EXPECT_EQ(InodeOf(At("same")), inode);
  EXPECT_EQ(ModeOf(At("changed")), 0606U);
  EXPECT_EQ(ModeOf(At(longName)), 0640U);
  using enum QELVARDOSReplacement;
  EXPECT_EQ(layer.fates,
            (decltype(layer.fates){
                {"changed", Written}, {"same", AlreadyTheSame}, {"resized", Written}, {longName, Written}}));
}

TEST_F(FileTest, of_two_replacements_of_one_file_the_last_stays_even_if_it_is_what_the_disk_held) {
  WatchingLayer layer;
  Put("back", "old");
  QELVARDOSFileTransaction transaction;
  for (const char* text : {"1", "2", "3"}) {
    EXPECT_FALSE(transaction.Replace(At("file"), text));
  }
  EXPECT_FALSE(transaction.Replace(At("back"), "new"));
  EXPECT_FALSE(transaction.Replace(At("back"), "old"));
  EXPECT_TRUE(transaction.Commit().empty());
  EXPECT_EQ(Content(), (Folder{{"file", "3"}, {"back", "old"}}));
  EXPECT_EQ(layer.fates.size(), 2U);
}

TEST_F(FileTest, one_failure_leaves_the_old_file_and_does_not_stop_the_others) {
  WatchingLayer layer;
  Put("refused", "old");
  Put("durable", "old");
  fs::create_directory(At("folder"));
  fs::create_directory(At("vanishing"));
  layer.renameFails = "refused";
  QELVARDOSFileTransaction transaction;
  EXPECT_EQ(transaction.Replace(At("none/file"), "new"), std::errc::no_such_file_or_directory);
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(), At("none/file") + ": No such file or directory");
  EXPECT_EQ(transaction.Replace(At("folder"), "new"), std::errc::is_a_directory);
  EXPECT_EQ(transaction.Replace("", "new"), std::errc::no_such_file_or_directory);
  for (const char* name : {"refused", "vanishing/file", "good"}) {
    EXPECT_FALSE(transaction.Replace(At(name), "new"));
  }
  fs::remove_all(At("vanishing"));
  const auto failures = transaction.Commit();
  ASSERT_EQ(failures.size(), 2U);
  EXPECT_EQ(failures[0].path, At("refused"));
  EXPECT_EQ(failures[0].error, std::errc::no_space_on_device);
  EXPECT_EQ(failures[1].path, At("vanishing/file"));
  const Folder expected{{"refused", "old"}, {"durable", "old"}, {"folder", "/"}, {"good", "new"}};
  EXPECT_EQ(Content(), expected);
  EXPECT_EQ(layer.fates.size(), 6U);

  layer.durableFails = true;
  EXPECT_FALSE(transaction.Replace(At("durable"), "new"));
  EXPECT_FALSE(transaction.Replace(At("good"), "new"));
  EXPECT_EQ(transaction.Commit().size(), 1U) << "what is not written needs no flush";
  EXPECT_EQ(Content(), expected);
}

TEST_F(FileTest, an_abandoned_transaction_leaves_nothing) {
  WatchingLayer layer;
  Put("file", "old");
  {
    QELVARDOSFileTransaction transaction;
    EXPECT_FALSE(transaction.Replace(At("file"), "new"));
    EXPECT_EQ(Temporaries().size(), 1U);
    EXPECT_THROW(QELVARDOSFileTransaction(), std::logic_error);
  }
  EXPECT_EQ(QELVARDOSFileTransaction::Open(), nullptr);
  EXPECT_EQ(Content(), (Folder{{"file", "old"}}));
  EXPECT_EQ(layer.fates, (decltype(layer.fates){{"file", QELVARDOSReplacement::Failed}}));
}

TEST_F(FileTest, left_overs_of_the_same_file_go_and_those_that_may_be_needed_stay) {
  const pid_t dead = StartStaging(At("file"));
  Kill(dead);
  const std::string leftOver = Temporaries().at(0);
  EXPECT_LE(leftOver.size(), 32U);
  EXPECT_FALSE(leftOver.ends_with(".xml"));
  std::string elsewhere = leftOver;
  elsewhere[12] = elsewhere[12] == '0' ? '1' : '0';
  std::string elsewhereLongAgo = leftOver;
  elsewhereLongAgo[12] = elsewhereLongAgo[12] == '2' ? '3' : '2';
  for (const std::string& name : {elsewhere, elsewhereLongAgo}) {
    fs::copy_file(At(leftOver), At(name));
  }
  fs::last_write_time(At(elsewhereLongAgo), fs::file_time_type::clock::now() - std::chrono::hours(25));

  EXPECT_FALSE(QELVARDOSReplaceFile(At("other"), "new"));
  EXPECT_EQ(Temporaries().size(), 3U);

  const pid_t alive = StartStaging(At("file"));
  EXPECT_EQ(Temporaries().size(), 4U);
  EXPECT_FALSE(QELVARDOSReplaceFile(At("file"), "new"));
  EXPECT_EQ(Temporaries().size(), 2U) << "of another machine, young; of a process that lives";
  EXPECT_TRUE(fs::exists(At(elsewhere)));
  Kill(alive);
  EXPECT_FALSE(QELVARDOSReplaceFile(At("file"), "new")) << "cleans up also behind a file that is as it should be";
  EXPECT_EQ(Temporaries(), std::vector<std::string>{elsewhere});
}

TEST_F(FileTest, an_end_of_the_process_at_any_operation_leaves_each_file_old_or_new_and_the_next_run_cleans_up) {
  const Folder before{{"a", std::string(400, 'o')}, {"b", "old"}, {"same", "same"}};
  const Folder after{{"a", std::string(400, 'n')}, {"b", "new"}, {"c", "new"}, {"same", "same"}};
  const auto replaceAll = [&] {
    QELVARDOSFileTransaction transaction;
    for (const auto& [name, text] : after) {
      transaction.Replace(At(name), text);
    }
    transaction.Commit();
  };
  bool stopped = true;
  int operations = 0;
  for (; stopped; ++operations) {
    ASSERT_LT(operations, 100);
    fs::remove_all(root_);
    fs::create_directory(root_);
    for (const auto& [name, text] : before) {
      Put(name, text);
    }
    {
      StoppingLayer layer(operations);
      replaceAll();
      stopped = layer.Stopped();
    }
    for (const auto& [name, text] : Content()) {
      if (!QELVARDOSFileTransaction::IsTemporaryName(name)) {
        EXPECT_TRUE(text == after.at(name) || (before.contains(name) && text == before.at(name)))
            << name << " after " << operations << " operations";
      }
    }
    for (const auto& [name, text] : before) {
      EXPECT_TRUE(fs::exists(At(name))) << name << " after " << operations << " operations";
    }
    replaceAll();
    EXPECT_EQ(Content(), after) << "after " << operations << " operations";
  }
  EXPECT_GT(operations, 12);
}

}  // namespace
