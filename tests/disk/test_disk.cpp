// A file system for tests. It shows a backing folder, every operation of every program reaches it, and it answers many
// at once. Each operation can be made to take longer or to fail, times can be shown coarse or shifted, operations are
// counted, and all changes and flushes are logged, so that a test can make of the log what a loss of power would have
// left. Nothing is flushed to the backing folder itself, and syncfs does not reach a file system of this kind.

#define FUSE_USE_VERSION 312

#include <dirent.h>
#include <fcntl.h>
#include <fuse_lowlevel.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/disk/ChangeLog.h"
#include "tests/disk/DiskNodes.h"
#include "tests/disk/DiskSettings.h"

namespace {

constexpr int Skipped = 77;
const char* const ControlName = ".test-disk-control";

std::string backing;
DiskSettings settings;
DiskNodes nodes;
ChangeLog changes;
/// Held while something changes, so that the log has the order in which things happened.
std::mutex changing;

std::string Child(fuse_ino_t folder, const char* name) { return nodes.PathOf(folder) + "/" + name; }

std::string Backed(const std::string& path) { return backing + path; }

ino_t InodeOf(const std::string& path) {
  struct stat facts {};
  return lstat(Backed(path).c_str(), &facts) == 0 ? facts.st_ino : 0;
}

ino_t InodeOf(int file) {
  struct stat facts {};
  return fstat(file, &facts) == 0 ? facts.st_ino : 0;
}

/// What an open file's handle is: a descriptor, or the address of what is kept for it.
int DescriptorOf(const fuse_file_info* file) { return static_cast<int>(file->fh); }

template <typename Kept>
Kept& KeptFor(const fuse_file_info* file) {
  return *reinterpret_cast<Kept*>(file->fh);  // NOLINT(performance-no-int-to-ptr): to the kernel it is a number
}

template <typename Kept>
void KeepFor(fuse_file_info* file, Kept kept) {
  file->fh = reinterpret_cast<std::uint64_t>(std::make_unique<Kept>(std::move(kept)).release());
}

/// What an operation returns that has answered; another value is the error number to answer with, or 0.
constexpr int Answered = -1;

int ErrorUnless(bool done) { return done ? 0 : errno; }

/// Does one operation: counts it, lets it take its time and fail if it is to, and answers.
template <typename Work>
void Operate(fuse_req_t request, const char* operation, const std::string& path, const Work& work) {
  int error = settings.Begin(operation, path.empty() ? "/" : path);
  if (error == 0) {
    error = work();
  }
  if (error != Answered) {
    fuse_reply_err(request, error);
  }
}

/// The control file has no operations but those that treat it themselves before.
template <typename Work>
void Operate(fuse_req_t request, const char* operation, fuse_ino_t node, const Work& work) {
  if (node == DiskNodes::Control) {
    fuse_reply_err(request, ENODATA);
  } else {
    Operate(request, operation, nodes.PathOf(node), work);
  }
}

/// An operation that may change something.
template <typename Place, typename Work>
void Change(fuse_req_t request, const char* operation, const Place& place, const Work& work) {
  Operate(request, operation, place, [&] {
    const std::lock_guard lock(changing);
    return work();
  });
}

/// Logs what a system call has done; false when it failed.
template <typename... Fields>
bool Logged(int result, const char* word, const Fields&... fields) {
  if (result == 0) {
    changes.Add(word, fields...);
  }
  return result == 0;
}

struct stat ControlFacts() {
  struct stat facts {};
  facts.st_ino = DiskNodes::Control;
  facts.st_mode = S_IFREG | 0600U;
  facts.st_nlink = 1;
  facts.st_uid = geteuid();
  return facts;
}

/// All its times of validity are 0, so the kernel keeps neither entries nor attributes.
bool EntryOf(const std::string& path, fuse_entry_param& entry) {
  if (lstat(Backed(path).c_str(), &entry.attr) != 0) {
    return false;
  }
  settings.Adjust(entry.attr);
  entry.ino = nodes.Tell(path);
  return true;
}

int AnswerEntry(fuse_req_t request, const std::string& path) {
  fuse_entry_param entry{};
  if (!EntryOf(path, entry)) {
    return errno;
  }
  fuse_reply_entry(request, &entry);
  return Answered;
}

int AnswerAttributes(fuse_req_t request, fuse_ino_t node) {
  struct stat facts {};
  if (lstat(Backed(nodes.PathOf(node)).c_str(), &facts) != 0) {
    return errno;
  }
  settings.Adjust(facts);
  fuse_reply_attr(request, &facts, 0);
  return Answered;
}

int AnswerBytes(fuse_req_t request, ssize_t size, const char* bytes) {
  if (size < 0) {
    return errno;
  }
  fuse_reply_buf(request, bytes, static_cast<std::size_t>(size));
  return Answered;
}

void Lookup(fuse_req_t request, fuse_ino_t folder, const char* name) {
  if (folder == DiskNodes::Root && std::strcmp(name, ControlName) == 0) {
    fuse_entry_param entry{};
    entry.ino = DiskNodes::Control;
    entry.attr = ControlFacts();
    fuse_reply_entry(request, &entry);
  } else {
    const std::string path = Child(folder, name);
    Operate(request, "lookup", path, [&] { return AnswerEntry(request, path); });
  }
}

void AnswerControlFacts(fuse_req_t request) {
  const struct stat facts = ControlFacts();
  fuse_reply_attr(request, &facts, 0);
}

void GetAttributes(fuse_req_t request, fuse_ino_t node, fuse_file_info* /*file*/) {
  if (node == DiskNodes::Control) {
    return AnswerControlFacts(request);
  }
  Operate(request, "getattr", node, [&] { return AnswerAttributes(request, node); });
}

timespec TimeToSet(int wanted, int now, int given, const timespec& time) {
  return (wanted & given) == 0 ? timespec{0, UTIME_OMIT} : (wanted & now) != 0 ? timespec{0, UTIME_NOW} : time;
}

bool SetTimes(const char* file, const struct stat& facts, int wanted) {
  const std::array times = {TimeToSet(wanted, FUSE_SET_ATTR_ATIME_NOW, FUSE_SET_ATTR_ATIME, facts.st_atim),
                            TimeToSet(wanted, FUSE_SET_ATTR_MTIME_NOW, FUSE_SET_ATTR_MTIME, facts.st_mtim)};
  return utimensat(AT_FDCWD, file, times.data(), AT_SYMLINK_NOFOLLOW) == 0;
}

/// One request may set several attributes; each is a change of its own.
bool Set(const std::string& path, const struct stat& facts, int wanted) {
  const auto wants = [=](int attributes) { return (wanted & attributes) != 0; };
  const std::string file = Backed(path);
  const ino_t inode = InodeOf(path);
  const uid_t owner = wants(FUSE_SET_ATTR_UID) ? facts.st_uid : static_cast<uid_t>(-1);
  const gid_t group = wants(FUSE_SET_ATTR_GID) ? facts.st_gid : static_cast<gid_t>(-1);
  return (!wants(FUSE_SET_ATTR_MODE) ||
          Logged(chmod(file.c_str(), facts.st_mode), "chmod", inode, facts.st_mode & 07777U)) &&
         (!wants(FUSE_SET_ATTR_UID | FUSE_SET_ATTR_GID) ||
          Logged(lchown(file.c_str(), owner, group), "chown", inode, owner, group)) &&
         (!wants(FUSE_SET_ATTR_SIZE) ||
          Logged(truncate(file.c_str(), facts.st_size), "truncate", inode, facts.st_size)) &&
         (!wants(FUSE_SET_ATTR_ATIME | FUSE_SET_ATTR_MTIME) ||
          Logged(SetTimes(file.c_str(), facts, wanted) ? 0 : -1, "utimens", inode, facts.st_mtim.tv_sec));
}

void SetAttributes(fuse_req_t request, fuse_ino_t node, struct stat* facts, int wanted, fuse_file_info* /*file*/) {
  if (node == DiskNodes::Control) {
    return AnswerControlFacts(request);
  }
  Change(request, "setattr", node,
         [&] { return Set(nodes.PathOf(node), *facts, wanted) ? AnswerAttributes(request, node) : errno; });
}

void ReadLink(fuse_req_t request, fuse_ino_t node) {
  Operate(request, "readlink", node, [&] {
    std::string target(PATH_MAX, '\0');
    if (readlink(Backed(nodes.PathOf(node)).c_str(), target.data(), target.size() - 1) < 0) {
      return errno;
    }
    fuse_reply_readlink(request, target.c_str());
    return Answered;
  });
}

/// Makes something new at a path, logs it with its inode and answers with it.
template <typename Make, typename... Fields>
void MakeEntry(fuse_req_t request, const char* operation, const std::string& path, const Make& make,
               const Fields&... fields) {
  Change(request, operation, path, [&] {
    if (make(Backed(path).c_str()) != 0) {
      return errno;
    }
    changes.Add(operation, InodeOf(path), path, fields...);
    return AnswerEntry(request, path);
  });
}

void RemoveEntry(fuse_req_t request, const char* operation, const std::string& path, int (*remove)(const char*)) {
  Change(request, operation, path, [&] {
    const bool done = Logged(remove(Backed(path).c_str()), operation, path);
    if (done) {
      nodes.Removed(path);
    }
    return ErrorUnless(done);
  });
}

void Rename(fuse_req_t request, fuse_ino_t folder, const char* name, fuse_ino_t newFolder, const char* newName,
            unsigned flags) {
  Change(request, "rename", Child(newFolder, newName), [&] {
    const std::string from = Child(folder, name);
    const std::string to = Child(newFolder, newName);
    if ((flags & ~static_cast<unsigned>(RENAME_NOREPLACE)) != 0) {
      return EINVAL;
    }
    if (renameat2(AT_FDCWD, Backed(from).c_str(), AT_FDCWD, Backed(to).c_str(), flags) != 0) {
      return errno;
    }
    // Of two names of one file both stay.
    if (InodeOf(from) == 0) {
      nodes.Renamed(from, to);
      changes.Add("rename", from, to);
    }
    return 0;
  });
}

/// Every read and write is to reach the disk; the kernel itself places what is appended.
int OpenBacking(const std::string& path, fuse_file_info* file, int more = 0, mode_t mode = 0) {
  const int flags = (file->flags & ~(O_APPEND | O_DIRECT | O_NOFOLLOW)) | O_CLOEXEC | more;
  const int descriptor = open(Backed(path).c_str(), flags, mode);
  file->fh = static_cast<std::uint64_t>(descriptor);
  file->direct_io = 1;
  return descriptor;
}

void Create(fuse_req_t request, fuse_ino_t folder, const char* name, mode_t mode, fuse_file_info* file) {
  const std::string path = Child(folder, name);
  Change(request, "create", path, [&] {
    fuse_entry_param entry{};
    if (OpenBacking(path, file, O_CREAT, mode) < 0 || !EntryOf(path, entry)) {
      return errno;
    }
    changes.Add("create", entry.attr.st_ino, path, mode);
    fuse_reply_create(request, &entry, file);
    return Answered;
  });
}

void Open(fuse_req_t request, fuse_ino_t node, fuse_file_info* file) {
  if (node == DiskNodes::Control) {
    // Who reads piece by piece reads the counts of one moment.
    KeepFor(file, settings.Counts());
    file->direct_io = 1;
    fuse_reply_open(request, file);
    return;
  }
  Change(request, "open", node, [&] {
    const int descriptor = OpenBacking(nodes.PathOf(node), file);
    if (descriptor < 0) {
      return errno;
    }
    if ((file->flags & O_TRUNC) != 0) {
      changes.Add("truncate", InodeOf(descriptor), 0);
    }
    fuse_reply_open(request, file);
    return Answered;
  });
}

void Release(fuse_req_t request, fuse_ino_t node, fuse_file_info* file) {
  if (node == DiskNodes::Control) {
    const std::unique_ptr<std::string> counts(&KeptFor<std::string>(file));
  } else {
    close(DescriptorOf(file));
  }
  // Nobody waits for it: the program went on when it closed the file.
  fuse_reply_err(request, 0);
}

void Read(fuse_req_t request, fuse_ino_t node, std::size_t size, off_t offset, fuse_file_info* file) {
  if (node == DiskNodes::Control) {
    // A copy: whoever has the answer may close the file before the call that gives it returns.
    const auto counts = KeptFor<std::string>(file);
    const std::size_t from = std::min(static_cast<std::size_t>(offset), counts.size());
    fuse_reply_buf(request, counts.data() + from, std::min(size, counts.size() - from));
    return;
  }
  Operate(request, "read", node, [&] {
    std::string bytes(size, '\0');
    return AnswerBytes(request, pread(DescriptorOf(file), bytes.data(), size, offset), bytes.data());
  });
}

bool Obey(const std::string& line) {
  constexpr std::string_view Mark = "mark ";
  if (!line.starts_with(Mark)) {
    return settings.Obey(line);
  }
  const std::lock_guard lock(changing);
  changes.Add("mark", line.substr(Mark.size()));
  return true;
}

bool ObeyAll(const std::string& lines) {
  std::istringstream stream(lines);
  bool obeyed = true;
  for (std::string line; std::getline(stream, line);) {
    obeyed = Obey(line) && obeyed;
  }
  return obeyed;
}

void Write(fuse_req_t request, fuse_ino_t node, const char* bytes, std::size_t size, off_t offset,
           fuse_file_info* file) {
  if (node == DiskNodes::Control) {
    ObeyAll({bytes, size}) ? fuse_reply_write(request, size) : fuse_reply_err(request, EINVAL);
    return;
  }
  Change(request, "write", node, [&] {
    const ssize_t written = pwrite(DescriptorOf(file), bytes, size, offset);
    if (written < 0) {
      return errno;
    }
    const auto count = static_cast<std::size_t>(written);
    changes.Add("write", InodeOf(DescriptorOf(file)), offset, std::string_view(bytes, count));
    fuse_reply_write(request, count);
    return Answered;
  });
}

/// To the log, a flush that is ignored has not been.
void Flush(fuse_req_t request, const char* operation, fuse_ino_t node, ino_t inode) {
  Change(request, operation, node, [=] {
    if (!settings.Ignores(operation)) {
      changes.Add(operation, inode);
    }
    return 0;
  });
}

using Listing = std::vector<std::pair<std::string, struct stat>>;

void OpenFolder(fuse_req_t request, fuse_ino_t node, fuse_file_info* folder) {
  Operate(request, "opendir", node, [&] {
    KeepFor(folder, Listing());
    fuse_reply_open(request, folder);
    return Answered;
  });
}

bool List(const std::string& path, Listing& listing) {
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(Backed(path).c_str()), closedir);
  listing.clear();
  while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
    struct stat facts {};
    facts.st_ino = entry->d_ino;
    facts.st_mode = DTTOIF(entry->d_type);
    listing.emplace_back(entry->d_name, facts);
  }
  return folder != nullptr;
}

/// A folder is listed when it is read from its beginning; what is read on is of that moment.
void ReadFolder(fuse_req_t request, fuse_ino_t node, std::size_t size, off_t offset, fuse_file_info* folder) {
  Operate(request, "readdir", node, [&] {
    auto& listing = KeptFor<Listing>(folder);
    if (offset == 0 && !List(nodes.PathOf(node), listing)) {
      return errno;
    }
    std::string bytes(size, '\0');
    std::size_t filled = 0;
    for (auto next = static_cast<std::size_t>(offset); next < listing.size(); ++next) {
      const auto& [name, facts] = listing[next];
      const std::size_t needed = fuse_add_direntry(request, bytes.data() + filled, size - filled, name.c_str(), &facts,
                                                   static_cast<off_t>(next + 1));
      if (needed > size - filled) {
        break;
      }
      filled += needed;
    }
    return AnswerBytes(request, static_cast<ssize_t>(filled), bytes.data());
  });
}

/// Answers with a text, or with its length when the caller has no room yet.
template <typename Get>
void AnswerText(fuse_req_t request, const char* operation, fuse_ino_t node, std::size_t size, const Get& get) {
  Operate(request, operation, node, [&] {
    std::string text(size, '\0');
    const ssize_t length = get(Backed(nodes.PathOf(node)).c_str(), text.data());
    if (size == 0 && length >= 0) {
      fuse_reply_xattr(request, static_cast<std::size_t>(length));
      return Answered;
    }
    return AnswerBytes(request, length, text.data());
  });
}

void SetExtended(fuse_req_t request, fuse_ino_t node, const char* name, const char* value, std::size_t size,
                 int flags) {
  Change(request, "setxattr", node, [=] {
    const std::string path = nodes.PathOf(node);
    const ino_t inode = InodeOf(path);
    const int set = lsetxattr(Backed(path).c_str(), name, value, size, flags);
    return ErrorUnless(Logged(set, "setxattr", inode, name, std::string_view(value, size)));
  });
}

fuse_lowlevel_ops Operations() {
  fuse_lowlevel_ops table{};
  table.lookup = Lookup;
  table.forget = [](fuse_req_t request, fuse_ino_t node, std::uint64_t tellings) {
    nodes.Forget(node, tellings);
    fuse_reply_none(request);
  };
  table.getattr = GetAttributes;
  table.setattr = SetAttributes;
  table.readlink = ReadLink;
  table.mkdir = [](fuse_req_t request, fuse_ino_t folder, const char* name, mode_t mode) {
    MakeEntry(
        request, "mkdir", Child(folder, name), [=](const char* path) { return mkdir(path, mode); }, mode);
  };
  table.unlink = [](fuse_req_t request, fuse_ino_t folder, const char* name) {
    RemoveEntry(request, "unlink", Child(folder, name), unlink);
  };
  table.rmdir = [](fuse_req_t request, fuse_ino_t folder, const char* name) {
    RemoveEntry(request, "rmdir", Child(folder, name), rmdir);
  };
  table.symlink = [](fuse_req_t request, const char* target, fuse_ino_t folder, const char* name) {
    MakeEntry(
        request, "symlink", Child(folder, name), [=](const char* path) { return symlink(target, path); }, target);
  };
  table.rename = Rename;
  table.link = [](fuse_req_t request, fuse_ino_t node, fuse_ino_t folder, const char* name) {
    MakeEntry(request, "link", Child(folder, name),
              [=](const char* path) { return link(Backed(nodes.PathOf(node)).c_str(), path); });
  };
  table.open = Open;
  table.read = Read;
  table.write = Write;
  table.release = Release;
  table.fsync = [](fuse_req_t request, fuse_ino_t node, int /*dataOnly*/, fuse_file_info* file) {
    Flush(request, "fsync", node, InodeOf(DescriptorOf(file)));
  };
  table.opendir = OpenFolder;
  table.readdir = ReadFolder;
  table.releasedir = [](fuse_req_t request, fuse_ino_t /*node*/, fuse_file_info* folder) {
    const std::unique_ptr<Listing> listing(&KeptFor<Listing>(folder));
    fuse_reply_err(request, 0);
  };
  table.fsyncdir = [](fuse_req_t request, fuse_ino_t node, int /*dataOnly*/, fuse_file_info* /*folder*/) {
    Flush(request, "fsyncdir", node, InodeOf(nodes.PathOf(node)));
  };
  table.setxattr = SetExtended;
  table.getxattr = [](fuse_req_t request, fuse_ino_t node, const char* name, std::size_t size) {
    AnswerText(request, "getxattr", node, size,
               [=](const char* path, char* value) { return lgetxattr(path, name, value, size); });
  };
  table.listxattr = [](fuse_req_t request, fuse_ino_t node, std::size_t size) {
    AnswerText(request, "listxattr", node, size,
               [=](const char* path, char* names) { return llistxattr(path, names, size); });
  };
  table.access = [](fuse_req_t request, fuse_ino_t node, int mask) {
    Operate(request, "access", node,
            [=] { return ErrorUnless(access(Backed(nodes.PathOf(node)).c_str(), mask) == 0); });
  };
  table.create = Create;
  return table;
}

/// Many operations may be under way at once, each holding a thread for as long as it is made to take.
int AnswerAll(fuse_session* connection) {
  constexpr unsigned Threads = 128;
  const std::unique_ptr<fuse_loop_config, void (*)(fuse_loop_config*)> loop(fuse_loop_cfg_create(),
                                                                            fuse_loop_cfg_destroy);
  fuse_loop_cfg_set_max_threads(loop.get(), Threads);
  fuse_loop_cfg_set_idle_threads(loop.get(), Threads);
  return fuse_session_loop_mt(connection, loop.get());
}

/// Unmounts whatever ends it: auto_unmount starts a watcher that sees to it even when this program is killed, though
/// not for every user.
int MountAndAnswer(const std::string& mountPoint) {
  std::array arguments = {std::string("test_disk"), std::string("-ofsname=test_disk,auto_unmount")};
  std::array pointers = {arguments[0].data(), arguments[1].data()};
  fuse_args args = FUSE_ARGS_INIT(static_cast<int>(pointers.size()), pointers.data());
  const fuse_lowlevel_ops table = Operations();
  const std::unique_ptr<fuse_session, void (*)(fuse_session*)> connection(
      fuse_session_new(&args, &table, sizeof table, nullptr), fuse_session_destroy);
  if (connection == nullptr || fuse_set_signal_handlers(connection.get()) != 0) {
    return 1;
  }
  if (fuse_session_mount(connection.get(), mountPoint.c_str()) != 0) {
    std::cerr << "test_disk: nothing can be mounted here\n";
    return Skipped;
  }
  const int ended = AnswerAll(connection.get());
  fuse_session_unmount(connection.get());
  fuse_remove_signal_handlers(connection.get());
  return ended < 0 ? 1 : 0;
}

int Run(int argc, char** argv) {
  CLI::App app(
      "Shows the folder BACKING in the folder MOUNTPOINT until it is unmounted, gets SIGTERM or its parent\n"
      "ends. Exits with 77 where nothing can be mounted.");
  std::string mountPoint;
  std::string log;
  std::vector<std::string> lines;
  app.add_option("BACKING", backing, "what is shown")->required()->check(CLI::ExistingDirectory);
  app.add_option("MOUNTPOINT", mountPoint, "where it is shown")->required()->check(CLI::ExistingDirectory);
  app.add_option("--log", log, "gets a line for each change and each flush");
  app.add_option("--set", lines, "a control line to begin with; may be repeated")->allow_extra_args(false);
  app.footer(DiskSettings::Lines);
  CLI11_PARSE(app, argc, argv);

  backing = std::filesystem::canonical(backing);
  if (!log.empty() && !changes.Open(log)) {
    throw std::runtime_error("cannot write " + log);
  }
  for (const std::string& line : lines) {
    if (!Obey(line)) {
      throw std::runtime_error("not understood: " + line);
    }
  }
  umask(0);
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  // Delays of less than a millisecond are to be as long as they say.
  prctl(PR_SET_TIMERSLACK, 1);
  return MountAndAnswer(mountPoint);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& failure) {
    std::cerr << "test_disk: " << failure.what() << '\n';
    return 2;
  }
}
