#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/QELVARDOSFileError.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileTransaction.h"
#include "platform/QELVARDOSParallelFileLayer.h"
#include "platform/QELVARDOSPathUtils.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/QELXVARDOSCreoUtil.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestLayer.h"
#include "tests/support/Trees.h"

namespace fs = std::filesystem;

namespace {

using Folder = std::map<std::string, std::string>;
using Kind = QELVARDOSFileFacts::Kind;

class FileTest : public testing::Test {
 protected:
  std::string At(const std::string& name) const { return scratch_.At(name); }
  void Put(const std::string& name, const std::string& text) const { scratch_.Put(name, text); }
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

  const ScratchFolder scratch_;
  const std::string& root_ = scratch_.Root();
};

/// Behaves as if the process ended in the middle of the last operation that it lets pass.
class StoppingLayer : public TestLayer {
 public:
  /// seed: shuffles the operations of several threads; 0: none of them waits.
  StoppingLayer(int operations, int seed)
      : TestLayer([this, seed](const std::string&, const std::string&) {
          std::this_thread::sleep_for(std::chrono::microseconds(seed * left_ % 7 * 20));
          return left_-- > 0 ? std::error_code() : make_error_code(std::errc::operation_canceled);
        }),
        left_(operations) {}
  bool Stopped() const { return left_ <= 0; }
  std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) override {
    return TestLayer::WriteNew(path, left_ == 1 ? bytes.substr(0, bytes.size() / 2) : bytes, like);
  }

 private:
  std::atomic<int> left_;
};

struct stat FactsOf(const std::string& path) {
  struct stat facts {};
  EXPECT_EQ(lstat(path.c_str(), &facts), 0) << path;
  return facts;
}

/// So much is not kept until there is more.
const std::string WrittenAtOnce(std::size_t{1} << 20U, 'w');

mode_t ModeOf(const std::string& path) { return FactsOf(path).st_mode & 07777U; }

/// A process that ends with what run answers.
template <typename Run>
pid_t StartChild(const Run& run) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(run());
  }
  return child;
}

/// A process that has staged a file and waits; it never commits.
pid_t StartStaging(const std::string& path) {
  std::array<int, 2> ready{};
  EXPECT_EQ(pipe(ready.data()), 0);
  const pid_t child = StartChild([&] {
    QELVARDOSFileTransaction transaction;
    const bool staged = !transaction.Replace(path, WrittenAtOnce);
    return write(ready[1], "r", 1) == 1 && staged ? pause() : 1;
  });
  char byte = 0;
  EXPECT_EQ(read(ready[0], &byte, 1), 1);
  close(ready[0]);
  close(ready[1]);
  return child;
}

int EndOf(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void Kill(pid_t process) {
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
}

TEST(Path, splits_and_joins_as_text) {
  const Rows<5> splits = {{"", "", "", "", ""},
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
  const Rows<3> joins = {{"", "", ""},      {"a", "", "a"},     {"a/", "", "a/"},      {"", "/b", "/b"},
                         {"a", "b", "a/b"}, {"a/", "b", "a/b"}, {"a", "/b", "a/b"},    {"a/", "/b", "a/b"},
                         {"/", "b", "/b"},  {"/", "/b", "/b"},  {"a//", "//b", "a/b"}, {"..", "../b", "../../b"}};
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

TEST_F(FileTest, stat_tells_kind_time_and_size_and_what_is_missing_from_what_could_not_be_looked_at) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  Put("file", "12345");
  const std::array<timespec, 2> beforeTheEpoch{{{-2, 500'000'000}, {-2, 500'000'000}}};
  ASSERT_EQ(utimensat(AT_FDCWD, At("file").c_str(), beforeTheEpoch.data(), 0), 0);
  ASSERT_EQ(symlink("file", At("link").c_str()), 0);
  for (const char* name : {"file", "link"}) {
    const QELVARDOSFileFacts facts = layer.Stat(At(name));
    EXPECT_EQ(facts.kind, Kind::File);
    EXPECT_EQ(facts.modified, -2);
    EXPECT_EQ(facts.size, 5U);
  }
  EXPECT_EQ(layer.Stat(root_).kind, Kind::Folder);
  EXPECT_EQ(layer.Stat("/dev/null").kind, Kind::Other);
  for (const std::string& path : {std::string(), At("none"), At("file/below"), At(std::string(300, 'n'))}) {
    EXPECT_FALSE(QELVARDOSPathUtils::Exists(path.c_str())) << path;
    EXPECT_EQ(QELVARDOSPathUtils::GetModificationTime(path.c_str()), 0);
    EXPECT_EQ(layer.Stat(path).kind, Kind::Missing) << path;
  }
  ASSERT_EQ(symlink("circle", At("circle").c_str()), 0);
  std::string deep = root_;
  while (deep.size() < 5000) {
    deep += "/below";
  }
  for (const auto& [path, error] : {std::pair(At("circle"), std::errc::too_many_symbolic_link_levels),
                                    std::pair(deep, std::errc::filename_too_long)}) {
    const QELVARDOSFileFacts facts = layer.Stat(path);
    EXPECT_EQ(facts.kind, Kind::Unseen);
    EXPECT_EQ(facts.error, error);
    EXPECT_FALSE(QELVARDOSPathUtils::Exists(path.c_str()));
    std::string bytes;
    const std::error_code unread = layer.Read(path, bytes, QELVARDOSFileLayer::AnySize);
    EXPECT_EQ(unread, error);
    EXPECT_FALSE(QELVARDOSFileLayer::MeansMissing(unread, path));
  }
}

TEST_F(FileTest, read_gives_a_whole_file_of_any_size_and_refuses_what_is_no_file) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  std::string bytes = "something else";
  for (const std::size_t size : {0U, 1U, 16383U, 16384U, 16385U, 100'000U}) {
    const std::string text(size, 'x');
    Put("file", text);
    EXPECT_FALSE(layer.Read(At("file"), bytes, size));
    EXPECT_TRUE(bytes == text) << size;
    EXPECT_TRUE(size == 0 || layer.Read(At("file"), bytes, size - 1) == std::errc::file_too_large) << size;
  }
  ASSERT_EQ(mkfifo(At("pipe").c_str(), 0666), 0);
  const int writer = open(At("pipe").c_str(), O_RDWR);
  ASSERT_EQ(write(writer, "x", 1), 1);
  for (const std::string& path : {root_, At("none"), At("pipe"), std::string("/dev/zero")}) {
    const std::error_code error = layer.Read(path, bytes, QELVARDOSFileLayer::AnySize);
    EXPECT_TRUE(error == std::errc::is_a_directory || error == std::errc::not_supported ||
                QELVARDOSFileLayer::MeansMissing(error, path))
        << path << ": " << error.message();
  }
  close(writer);
  EXPECT_TRUE(layer.Read(At("pipe"), bytes, QELVARDOSFileLayer::AnySize))
      << "without a writer, opening would wait for one";
}

TEST_F(FileTest, a_listing_takes_the_place_of_what_was_listed_before_also_where_there_is_nothing) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  Put("file", "");
  std::vector<std::string> names{"of another folder"};
  EXPECT_FALSE(layer.List(root_, names));
  EXPECT_EQ(names, std::vector<std::string>{"file"});
  EXPECT_TRUE(layer.List(At("none"), names));
  EXPECT_TRUE(names.empty());
}

/// How many files and folders this process has open.
int OpenFiles() {
  const fs::directory_iterator open("/proc/self/fd");
  return static_cast<int>(std::distance(begin(open), end(open)));
}

TEST_F(FileTest, no_operation_leaves_a_file_open_whether_it_succeeds_or_fails) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  Put("file", "text");
  Put("large", std::string(100'000, 'x'));
  fs::create_directory(At("folder"));
  ASSERT_EQ(mkfifo(At("pipe").c_str(), 0666), 0);
  std::string bytes;
  std::vector<std::string> names;
  const auto write = [&](const std::string& like, std::size_t size) {
    layer.WriteNew(At("new"), std::string(size, 'x'), like);
    layer.Remove(At("new"));
  };
  const auto claim = [&](const std::string& folder, QELVARDOSFolderUse use) {
    QELVARDOSFolderClaim held;
    QELVARDOSFolderClaim refused;
    layer.ClaimFolder(folder, use, held);
    layer.ClaimFolder(folder, QELVARDOSFolderUse::Clean, refused);
  };
  const std::vector<std::string> several = {At("file"), At("large"), At("none")};
  const std::vector<std::pair<std::string, std::function<void()>>> operations = {
      {"Stat", [&] { layer.Stat(At("file")); }},
      {"Read", [&] { layer.Read(At("file"), bytes, QELVARDOSFileLayer::AnySize); }},
      {"Read much", [&] { layer.Read(At("large"), bytes, QELVARDOSFileLayer::AnySize); }},
      {"Read too much", [&] { EXPECT_TRUE(layer.Read(At("large"), bytes, 20'000)); }},
      {"Read more than little", [&] { EXPECT_TRUE(layer.Read(At("file"), bytes, 1)); }},
      {"Read what is no file", [&] { layer.Read(At("pipe"), bytes, 1), layer.Read(root_, bytes, 1); }},
      {"Read what is none", [&] { EXPECT_TRUE(layer.Read(At("none"), bytes, 1)); }},
      {"List", [&] { layer.List(root_, names), layer.List(At("file"), names); }},
      {"MakeFolder", [&] { layer.MakeFolder(At("made")), layer.HideFolder(At("made")), layer.Remove(At("made")); }},
      {"ClaimFolder", [&] { claim(root_, QELVARDOSFolderUse::Write), claim(At("file"), QELVARDOSFolderUse::Write); }},
      {"WriteNew", [&] { write("", 4), write(At("file"), 4), layer.WriteNew(At("file"), "", ""); }},
      {"WriteNew like none", [&] { write(At("none"), 4); }},
      {"WriteNew like a closed one", [&] { chmod(At("pipe").c_str(), 0), write(At("pipe"), 4); }},
      {"MakeDurable", [&] { layer.MakeDurable(several), layer.MakeFoldersDurable({root_}); }},
      {"MakeDurable many", [&] { layer.MakeDurable(std::vector<std::string>(20, At("file"))); }},
      {"MakeFoldersDurable of none", [&] { layer.MakeFoldersDurable({At("none")}); }},
      {"Rename", [&] { layer.Rename(At("file"), At("file")), layer.Rename(At("none"), At("file")); }},
      {"Remove", [&] { layer.Remove(At("none")); }},
      {"many lookups",
       [&] {
         const QELVARDOSFileLookups lookups;
         for (int count = 0; count < 40; ++count) {
           layer.Stat(count % 2 == 0 || count > 20 ? At("file") : At("folder/none"));
         }
       }},
      {"a transaction", [&] { QELVARDOSReplaceFile(At("file"), std::to_string(bytes.size())); }},
      {"one that is given up", [&] { QELVARDOSFileTransaction().Replace(At("file"), "never"); }},
      {"MakeDirs", [&] { QELVARDOSPathUtils::MakeDirs(At("a/b").c_str()), fs::remove_all(At("a")); }},
  };
  for (const auto& [name, operation] : operations) {
    const int before = OpenFiles();
    operation();
    EXPECT_EQ(OpenFiles(), before) << name;
  }
}

TEST_F(FileTest, lookups_that_ended_know_nothing_of_a_folder_that_was_replaced_meanwhile) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  const auto put = [this](const std::string& text) {
    fs::create_directory(At("folder"));
    fs::rename(At("folder"), At("moved to " + text));
    Put("folder/file", text);
  };
  const auto look = [&](const std::string& text) {
    // So many that the folder is kept open, if folders are.
    for (int count = 0; count < 6; ++count) {
      std::string bytes;
      EXPECT_EQ(layer.Stat(At("folder/file")).size, text.size());
      EXPECT_FALSE(layer.Read(At("folder/file"), bytes, QELVARDOSFileLayer::AnySize));
      EXPECT_EQ(bytes, text);
    }
  };
  for (const char* text : {"1", "22", "333"}) {
    put(text);
    const QELVARDOSFileLookups outer;
    const QELVARDOSFileLookups inner;
    look(text);
  }
  put("4444");
  look("4444");
}

TEST_F(FileTest, write_new_never_overwrites_and_leaves_nothing_when_the_disk_takes_only_a_part) {
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::System();
  Put("there", "old");
  EXPECT_EQ(layer.WriteNew(At("there"), "new", ""), std::errc::file_exists);
  EXPECT_EQ(layer.WriteNew(At("none/file"), "new", ""), std::errc::no_such_file_or_directory);

  rlimit unlimited{};
  getrlimit(RLIMIT_FSIZE, &unlimited);
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  const rlimit small{1000, unlimited.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const std::error_code error = layer.WriteNew(At("large"), std::string(5000, 'x'), "");
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
  TestLayer layer;
  const std::string longName(255, 'l');
  const mode_t mask = umask(027);
  Put("changed", "old");
  Put("same", "same");
  Put("resized", "much longer than before");
  chmod(At("changed").c_str(), 0606);
  const ino_t inode = FactsOf(At("same")).st_ino;
  {
    QELVARDOSFileTransaction transaction;
    for (const std::string& name : {std::string("changed"), std::string("same"), std::string("resized"), longName}) {
      EXPECT_FALSE(transaction.Replace(At(name), name == "changed" ? "new" : "same"));
    }
    EXPECT_EQ(Content()["changed"], "old");
    EXPECT_TRUE(transaction.Commit().empty());
  }
  umask(mask);
  EXPECT_EQ(Content(), (Folder{{"changed", "new"}, {"same", "same"}, {"resized", "same"}, {longName, "same"}}));
  EXPECT_EQ(FactsOf(At("same")).st_ino, inode);
  EXPECT_EQ(ModeOf(At("changed")), 0606U);
  EXPECT_EQ(ModeOf(At(longName)), 0640U);
  EXPECT_EQ(layer.fates, (TestLayer::Names{"changed: written", "same: already the same", "resized: written",
                                           longName + ": written"}));
}

TEST_F(FileTest, of_two_replacements_of_one_file_the_last_stays_even_if_it_is_what_the_disk_held) {
  TestLayer layer;
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
  bool flushFails = false;
  TestLayer layer([&flushFails](const std::string& operation, const std::string&) {
    return operation == "MakeDurable" && std::exchange(flushFails, false) ? make_error_code(std::errc::io_error)
                                                                          : std::error_code();
  });
  Put("refused", "old");
  Put("durable", "old");
  fs::create_directory(At("folder"));
  fs::create_directory(At("vanishing"));
  layer.failing["Rename " + At("refused")] = std::errc::no_space_on_device;
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

  flushFails = true;
  EXPECT_FALSE(transaction.Replace(At("durable"), "lost"));
  EXPECT_FALSE(transaction.Replace(At("good"), "better"));
  EXPECT_EQ(transaction.Commit().size(), 1U) << "a flush that fails for one file fails that one";
  EXPECT_EQ(Content(), (Folder{{"refused", "old"}, {"durable", "old"}, {"folder", "/"}, {"good", "better"}}));
}

TEST_F(FileTest, folders_are_flushed_once_after_the_renames_and_new_folders_in_the_folder_above) {
  TestLayer layer;
  ASSERT_EQ(QELVARDOSPathUtils::MakeDirs(At("a/b").c_str()), S_OK);
  fs::create_directory(At("c"));
  EXPECT_EQ(layer.Of("MakeFoldersDurable"), (std::vector{root_ + " " + At("a")}));
  layer.calls.clear();
  Put("c/same", "same");
  QELVARDOSFileTransaction transaction;
  for (const char* name : {"a/b/1", "c/same", "a/b/2", "a/1"}) {
    EXPECT_FALSE(transaction.Replace(At(name), "same"));
  }
  EXPECT_TRUE(transaction.Commit().empty());
  EXPECT_EQ(layer.Of("MakeFoldersDurable"), (std::vector{root_ + " " + At("a ") + At("a/b ") + At("c")}))
      << "a process that ended after its rename may have left the folder of an equal file unflushed, and one that made "
         "a folder the folder above it";

  layer.failing["MakeFoldersDurable " + At("a/b")] = std::errc::io_error;
  EXPECT_FALSE(transaction.Replace(At("a/b/1"), "new"));
  EXPECT_FALSE(transaction.Replace(At("a/1"), "new"));
  const auto failures = transaction.Commit();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].path, At("a/b/1"));
  EXPECT_EQ(failures[0].error, QELVARDOSFileError::MayBeLost);
  EXPECT_EQ(QELVARDOSSystemUtils::LastError(),
            At("a/b/1") + ": It is as it should be, but a loss of power may undo that: Input/output error");
  std::string bytes;
  EXPECT_FALSE(layer.Read(At("a/b/1"), bytes, QELVARDOSFileLayer::AnySize));
  EXPECT_EQ(bytes, "new") << "the new content stands";

  EXPECT_EQ(QELVARDOSPathUtils::MakeDirs(At("a/b/new/er").c_str()), E_FAIL);
  EXPECT_FALSE(fs::exists(At("a/b/new"))) << "what may be lost is taken away, so that nothing is written into it";
}

TEST_F(FileTest, a_layer_that_throws_leaves_no_temporary_and_tells_what_became_of_each_file) {
  const TestLayer layer([](const std::string& operation, const std::string& path) {
    return operation == "Rename" && path.ends_with("/b") ? throw std::runtime_error("no more") : std::error_code();
  });
  {
    QELVARDOSFileTransaction transaction;
    for (const char* name : {"a", "b", "c"}) {
      EXPECT_FALSE(transaction.Replace(At(name), "new"));
    }
    EXPECT_THROW(transaction.Commit(), std::runtime_error);
  }
  EXPECT_EQ(Content(), (Folder{{"a", "new"}}));
  EXPECT_EQ(layer.fates.size(), 3U);
  EXPECT_THAT(layer.fates, testing::Not(testing::Contains(testing::EndsWith("written"))))
      << "what was renamed is there, but its folder was not flushed";
}

TEST_F(FileTest, transactions_nest_and_know_their_own_files_and_leave_nothing_when_abandoned) {
  const TestLayer layer;
  EXPECT_FALSE(QELVARDOSFileTransaction().Replace(At("abandoned"), "new"));
  EXPECT_EQ(Content(), Folder());
  EXPECT_EQ(layer.fates.size(), 1U);
  QELVARDOSFileTransaction outer;
  EXPECT_FALSE(outer.Replace(At("outer"), WrittenAtOnce));
  EXPECT_FALSE(QELVARDOSReplaceFile(At("inner"), "2"));
  EXPECT_EQ(Temporaries().size(), 1U) << "the outer one lives, so what it has staged is no left-over";
  EXPECT_TRUE(outer.Commit().empty());
  EXPECT_EQ(Content(), (Folder{{"outer", WrittenAtOnce}, {"inner", "2"}}));
}

TEST_F(FileTest, a_replaced_file_keeps_its_owner_mode_and_attributes) {
  Put("file", "old");
  const std::string path = At("file");
  if (geteuid() == 0) {
    ASSERT_EQ(chown(path.c_str(), 65534, 12345), 0);
  }
  ASSERT_EQ(chmod(path.c_str(), 0604), 0);
  const bool hasAttributes = setxattr(path.c_str(), "user.note", "kept", 4, 0) == 0;
  const mode_t mask = umask(0);
  EXPECT_FALSE(QELVARDOSReplaceFile(path, "new"));
  umask(mask);
  const struct stat facts = FactsOf(path);
  EXPECT_EQ(facts.st_mode & 07777U, 0604U);
  if (geteuid() == 0) {
    EXPECT_EQ(facts.st_uid, 65534U);
    EXPECT_EQ(facts.st_gid, 12345U);
  }
  std::array<char, 8> value{};
  EXPECT_EQ(getxattr(path.c_str(), "user.note", value.data(), value.size()), hasAttributes ? 4 : -1);
  chmod(path.c_str(), 0);
  EXPECT_FALSE(QELVARDOSReplaceFile(path, "newer"));
  EXPECT_EQ(ModeOf(path), 0U) << "a mode without any right is a mode like others";
}

TEST_F(FileTest, who_may_not_set_owners_locks_nobody_out_and_opens_nothing) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "needs root to make files of others";
  }
  constexpr uid_t Nobody = 65534;
  chmod(root_.c_str(), 0777);
  struct Case {
    const char* name;
    uid_t owner;
    gid_t group;
    mode_t mode;
    bool written;
    mode_t after;
  };
  const std::vector<Case> cases = {{"shared", 1234, 1234, 0644, true, 0644},
                                   {"of all", 1234, 1234, 0666, true, 0666},
                                   {"of a group that is not ours", 1234, 1234, 0664, true, 0644},
                                   {"private", 1234, 1234, 0600, false, 0600},
                                   {"of others than the owner's group", 1234, 1234, 0640, false, 0640},
                                   {"closed to the group that its owner is in", 1, 60, 0604, false, 0604},
                                   {"closed to a group that its owner is not in", 2, 2, 0604, true, 0604},
                                   {"closed to a group, of a user whom nobody knows", 1234, 1, 0604, false, 0604},
                                   {"closed to its owner too", 1234, 1234, 0000, true, 0000},
                                   {"the superuser's", 0, 0, 0600, true, 0600},
                                   {"own", Nobody, Nobody, 0600, true, 0600}};
  for (const Case& file : cases) {
    Put(file.name, "old");
    ASSERT_EQ(chown(At(file.name).c_str(), file.owner, file.group), 0);
    ASSERT_EQ(chmod(At(file.name).c_str(), file.mode), 0);
  }
  const int status = EndOf(StartChild([&] {
    if (setgroups(0, nullptr) != 0 || setgid(1) != 0 || setuid(Nobody) != 0) {
      return 1;
    }
    for (const Case& file : cases) {
      const std::error_code error = QELVARDOSReplaceFile(At(file.name), "new");
      if (file.written ? static_cast<bool>(error) : error != QELVARDOSFileError::OwnerWouldLoseAccess) {
        std::cerr << file.name << ": " << error.message() << "\n";
        return 1;
      }
    }
    return 0;
  }));
  EXPECT_EQ(status, 0);
  for (const Case& file : cases) {
    EXPECT_EQ(Content()[file.name], file.written ? "new" : "old") << file.name;
    EXPECT_EQ(ModeOf(At(file.name)), file.after) << file.name;
  }
  EXPECT_TRUE(Temporaries().empty());
}

TEST_F(FileTest, nothing_is_written_through_links_that_others_could_have_made) {
  Put("aim", "old");
  fs::create_directory(At("elsewhere"));
  ASSERT_EQ(symlink("aim", At("link").c_str()), 0);
  ASSERT_EQ(symlink("elsewhere", At("own").c_str()), 0);
  EXPECT_FALSE(QELVARDOSReplaceFile(At("link"), "new"));
  EXPECT_FALSE(fs::is_symlink(At("link"))) << "a link in a file's place is replaced by a file";
  EXPECT_EQ(Content()["aim"], "old");
  EXPECT_FALSE(QELVARDOSReplaceFile(At("own/file"), "new")) << "a folder behind the user's own link is meant";
  if (geteuid() == 0) {
    ASSERT_EQ(symlink("elsewhere", At("foreign").c_str()), 0);
    ASSERT_EQ(lchown(At("foreign").c_str(), 1234, 1234), 0);
    EXPECT_EQ(QELVARDOSReplaceFile(At("foreign/other"), "new"), QELVARDOSFileError::ForeignLink);
    ASSERT_EQ(chown(root_.c_str(), 1234, 1234), 0);
    EXPECT_FALSE(QELVARDOSReplaceFile(At("foreign/other"), "new")) << "made by the owner of the place";
  }
}

TEST_F(FileTest, what_a_dead_writer_left_goes_with_the_next_writing_and_what_a_living_one_needs_stays) {
  Kill(StartStaging(At("file")));
  const std::string leftOver = Temporaries().at(0);
  EXPECT_LE(leftOver.size(), 32U);
  EXPECT_FALSE(leftOver.ends_with(".xml"));
  std::string ofAnUnclaimedFolder = leftOver;
  ofAnUnclaimedFolder[2] = 'f';
  fs::copy_file(At(leftOver), At(ofAnUnclaimedFolder));

  const pid_t alive = StartStaging(At("file"));
  EXPECT_FALSE(QELVARDOSReplaceFile(At("other"), "new"));
  EXPECT_EQ(Temporaries().size(), 3U) << "while one writer lives, nothing proves whose a file is";
  Kill(alive);
  EXPECT_FALSE(QELVARDOSReplaceFile(At("other"), "newer"));
  EXPECT_EQ(Temporaries(), std::vector<std::string>{ofAnUnclaimedFolder}) << "no claim ever covered it";
}

TEST_F(FileTest, many_single_writings_into_one_folder_do_not_list_it_each_time) {
  TestLayer layer;
  for (int number = 0; number < 2000; ++number) {
    Put("a record with a name as long as they are in real folders " + std::to_string(number), "");
  }
  for (int number = 0; number < 64; ++number) {
    EXPECT_FALSE(QELVARDOSReplaceFile(At("file"), std::to_string(number)));
  }
  EXPECT_LT(layer.Of("List").size(), 40U);
}

TEST_F(FileTest, clients_that_write_the_same_files_at_once_leave_each_whole_and_nothing_else) {
  constexpr int Clients = 4;
  constexpr int Files = 5;
  std::vector<pid_t> clients(Clients);
  for (int client = 0; client < Clients; ++client) {
    clients[static_cast<std::size_t>(client)] = StartChild([&] {
      int failures = 0;
      for (int round = 0; round < 20; ++round) {
        QELVARDOSFileTransaction transaction;
        for (int file = 0; file < Files; ++file) {
          const std::string text(400, static_cast<char>('a' + client));
          failures += transaction.Replace(At(std::to_string(file)), text) ? 1 : 0;
        }
        failures += static_cast<int>(transaction.Commit().size());
      }
      return failures == 0 ? 0 : 1;
    });
  }
  for (const pid_t client : clients) {
    EXPECT_EQ(EndOf(client), 0);
  }
  EXPECT_FALSE(QELVARDOSReplaceFile(At("last"), ""));
  const Folder content = Content();
  EXPECT_EQ(content.size(), Files + 1U);
  for (int file = 0; file < Files; ++file) {
    const std::string& text = content.at(std::to_string(file));
    EXPECT_EQ(text, std::string(400, text.at(0)));
  }
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
  // Side by side in three orders, and one after the other.
  for (int seed = 0; seed < 4; ++seed) {
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
        StoppingLayer layer(operations, seed);
        QELVARDOSParallelFileLayer front(layer, seed == 0 ? 1 : 4);
        const QELVARDOSUseFileLayer use(front);
        replaceAll();
        stopped = layer.Stopped();
      }
      for (const auto& [name, text] : Content()) {
        if (!QELVARDOSFileTransaction::IsTemporaryName(name)) {
          EXPECT_TRUE(text == after.at(name) || (before.contains(name) && text == before.at(name)))
              << name << " after " << operations << " operations, seed " << seed;
        }
      }
      for (const auto& [name, text] : before) {
        EXPECT_TRUE(fs::exists(At(name))) << name << " after " << operations << " operations, seed " << seed;
      }
      replaceAll();
      EXPECT_EQ(Content(), after) << "after " << operations << " operations, seed " << seed;
    }
    EXPECT_GT(operations, 12);
  }
}

}  // namespace
