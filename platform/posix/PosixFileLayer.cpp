#include "platform/posix/PosixFileLayer.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <utility>

namespace {

std::error_code SystemError() { return {errno, std::system_category()}; }

std::error_code ErrorUnless(bool success) { return success ? std::error_code() : SystemError(); }

/// Repeats a system call that a signal interrupted.
template <typename Call>
auto Uninterrupted(const Call& call) {
  auto result = call();
  while (result == -1 && errno == EINTR) {
    result = call();
  }
  return result;
}

/// An open file, closed at the latest when this goes.
class Descriptor {
 public:
  Descriptor(const std::string& path, int flags, mode_t mode = 0) : Descriptor(AT_FDCWD, path.c_str(), flags, mode) {}
  Descriptor(int folder, const char* path, int flags, mode_t mode = 0)
      : number_(Uninterrupted([&] { return openat(folder, path, flags | O_CLOEXEC, mode); })) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool IsOpen() const noexcept { return number_ >= 0; }
  int Number() const noexcept { return number_; }
  /// On some file systems only closing tells that the content could not be kept.
  std::error_code Close() { return IsOpen() ? ErrorUnless(close(std::exchange(number_, -1)) == 0) : std::error_code(); }

 private:
  int number_;
};

/// Finds files below the folder that is asked for again and again without walking its path each time: that saves a
/// microsecond of the six or so that looking at a record takes.
class Lookups {
 public:
  struct Place {
    int folder;
    const char* path;
  };

  void Begin() { ++depth_; }
  void End() {
    if (--depth_ == 0) {
      Forget();
    }
  }

  /// Where path is to be looked up; the path must outlive the place.
  Place Find(const std::string& path) {
    if (depth_ == 0) {
      return {AT_FDCWD, path.c_str()};
    }
    if (prefix_.empty() || !path.starts_with(prefix_)) {
      Forget();
      prefix_.assign(path, 0, path.rfind('/') + 1);
    }
    const char* const rest = path.c_str() + prefix_.size();
    if (prefix_.empty() || *rest == '\0' || *rest == '/' || !IsWorthOpening()) {
      return {AT_FDCWD, path.c_str()};
    }
    return {folder_->Number(), rest};
  }

 private:
  /// Files that come from many folders in turn would pay for an opening each.
  bool IsWorthOpening() {
    constexpr int SeenBefore = 3;
    if (folder_ == nullptr && ++seen_ > SeenBefore) {
      folder_ = std::make_unique<Descriptor>(prefix_, O_PATH | O_DIRECTORY);
    }
    return folder_ != nullptr && folder_->IsOpen();
  }

  void Forget() {
    folder_.reset();
    prefix_.clear();
    seen_ = 0;
  }

  int depth_ = 0;
  /// The path of the folder, with a "/" at its end.
  std::string prefix_;
  int seen_ = 0;
  std::unique_ptr<Descriptor> folder_;
};

thread_local Lookups lookups;

ssize_t ReadAt(const Descriptor& file, char* to, std::size_t most, std::size_t offset) {
  return Uninterrupted([&] { return pread(file.Number(), to, most, static_cast<off_t>(offset)); });
}

/// Continues behind what bytes holds already.
std::error_code ReadRest(const Descriptor& file, std::string& bytes) {
  struct stat facts {};
  if (fstat(file.Number(), &facts) != 0) {
    return SystemError();
  }
  if (!S_ISREG(facts.st_mode)) {
    return std::make_error_code(std::errc::not_supported);
  }
  std::size_t filled = bytes.size();
  // One byte more than the file should have, so that its end shows without another turn.
  bytes.resize(std::max(filled, static_cast<std::size_t>(facts.st_size)) + 1);
  ssize_t got = 0;
  while ((got = ReadAt(file, bytes.data() + filled, bytes.size() - filled, filled)) > 0) {
    filled += static_cast<std::size_t>(got);
    if (filled == bytes.size()) {
      bytes.resize(2 * filled);
    }
  }
  bytes.resize(filled);
  return ErrorUnless(got == 0);
}

std::error_code WriteAll(const Descriptor& file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = Uninterrupted([&] { return write(file.Number(), bytes.data(), bytes.size()); });
    if (written < 0) {
      return SystemError();
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

std::error_code Fill(Descriptor& file, std::string_view bytes, std::uint32_t mode) {
  std::error_code error = WriteAll(file, bytes);
  // The mode that a file is created with is cut by the process' mask.
  if (!error && mode != 0) {
    error = ErrorUnless(fchmod(file.Number(), mode) == 0);
  }
  return error ? error : file.Close();
}

using Files = std::vector<const std::string*>;

/// Calls synchronise with the open file.
template <typename Synchronise>
std::error_code WithOpen(const std::string& path, const Synchronise& synchronise) {
  const Descriptor file(path, O_RDONLY);
  return ErrorUnless(file.IsOpen() && Uninterrupted([&] { return synchronise(file.Number()); }) == 0);
}

template <typename Synchronise>
std::error_code WithEach(const Files& files, const Synchronise& synchronise) {
  for (const std::string* path : files) {
    if (const std::error_code error = WithOpen(*path, synchronise)) {
      return error;
    }
  }
  return {};
}

/// Whether the disk is an ext file system that keeps a journal on itself, in its inode 8. Those without one have the
/// same file system type, so only the journal's own entry tells them apart.
bool HasExtJournal(dev_t disk) {
  const std::string number = std::to_string(major(disk)) + ":" + std::to_string(minor(disk));
  std::error_code error;
  const std::filesystem::path device = std::filesystem::read_symlink("/sys/dev/block/" + number, error);
  return !error && access(("/proc/fs/jbd2/" + device.filename().string() + "-8").c_str(), F_OK) == 0;
}

/// fsync commits the journal as far as the file's own last change. Changing the file anew, if only to the mode that it
/// has, carries the commit beyond the last change of every file that was written before.
int CommitJournal(int file) {
  struct stat facts {};
  const bool changed = fstat(file, &facts) == 0 && fchmod(file, facts.st_mode & 07777U) == 0;
  return changed ? fsync(file) : -1;
}

std::error_code CommitTogether(const Files& files) {
  constexpr unsigned Start = SYNC_FILE_RANGE_WRITE;
  constexpr unsigned Finish = SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
  for (const unsigned phase : {Start, Finish}) {
    if (const auto error = WithEach(files, [phase](int file) { return sync_file_range(file, 0, 0, phase); })) {
      return error;
    }
  }
  return WithOpen(*files.back(), CommitJournal);
}

/// syncfs is the cheapest way for many files of a quiet disk, but it also waits for whatever else the disk owes, such
/// as gigabytes of CAD files that were just checked out. A journal is committed in order: there it is enough to write
/// out these files' own data and then to commit once. Where there is no such journal, syncfs pays only for more than a
/// few files.
std::error_code MakeDurableOn(dev_t disk, const Files& files) {
  constexpr std::size_t Few = 16;
  if (HasExtJournal(disk)) {
    return CommitTogether(files);
  }
  return files.size() <= Few ? WithEach(files, fdatasync) : WithOpen(*files.front(), syncfs);
}

QELVARDOSFileFacts::Kind KindOf(mode_t mode) {
  using Kind = QELVARDOSFileFacts::Kind;
  return S_ISREG(mode) ? Kind::File : S_ISDIR(mode) ? Kind::Folder : Kind::Other;
}

}  // namespace

QELVARDOSFileLayer& QELVARDOSFileLayer::System() {
  static PosixFileLayer layer;
  return layer;
}

QELVARDOSFileFacts PosixFileLayer::Stat(const std::string& path) {
  const Lookups::Place place = lookups.Find(path);
  struct stat facts {};
  if (fstatat(place.folder, place.path, &facts, 0) != 0) {
    return {};
  }
  return {KindOf(facts.st_mode), facts.st_mtim.tv_sec, static_cast<std::uint64_t>(facts.st_size),
          facts.st_mode & 07777U};
}

/// A small file takes three system calls. Reading at an offset refuses folders, pipes and sockets by itself, opening
/// without blocking keeps a pipe from holding us up, and a read that is shorter than asked ends at a file's end.
std::error_code PosixFileLayer::Read(const std::string& path, std::string& bytes) {
  const Lookups::Place place = lookups.Find(path);
  const Descriptor file(place.folder, place.path, O_RDONLY | O_NONBLOCK);
  if (!file.IsOpen()) {
    return SystemError();
  }
  std::array<char, 16384> start;  // NOLINT(cppcoreguidelines-pro-type-member-init): clearing it costs more than a call
  const ssize_t got = ReadAt(file, start.data(), start.size(), 0);
  if (got < 0) {
    return SystemError();
  }
  bytes.assign(start.data(), static_cast<std::size_t>(got));
  return bytes.size() < start.size() ? std::error_code() : ReadRest(file, bytes);
}

std::error_code PosixFileLayer::List(const std::string& folder, std::vector<std::string>& names) {
  names.clear();
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(folder.c_str()), closedir);
  if (listing == nullptr) {
    return SystemError();
  }
  errno = 0;
  while (const dirent* entry = readdir(listing.get())) {
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
      names.emplace_back(entry->d_name);
    }
    errno = 0;
  }
  return SystemError();
}

void PosixFileLayer::BeginLookups() { lookups.Begin(); }

void PosixFileLayer::EndLookups() { lookups.End(); }

std::error_code PosixFileLayer::MakeFolder(const std::string& path) {
  return ErrorUnless(mkdir(path.c_str(), 0777) == 0);
}

/// The dot that a record folder's name begins with hides it.
std::error_code PosixFileLayer::HideFolder(const std::string& /*path*/) { return {}; }

std::error_code PosixFileLayer::WriteNew(const std::string& path, std::string_view bytes, std::uint32_t mode) {
  Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL, mode == 0 ? 0666 : mode);
  if (!file.IsOpen()) {
    return SystemError();
  }
  const std::error_code error = Fill(file, bytes, mode);
  if (error) {
    unlink(path.c_str());
  }
  return error;
}

std::error_code PosixFileLayer::MakeDurable(const std::vector<std::string>& paths) {
  std::map<dev_t, Files> disks;
  for (const std::string& path : paths) {
    struct stat facts {};
    if (stat(path.c_str(), &facts) == 0) {
      disks[facts.st_dev].push_back(&path);
    } else if (errno != ENOENT && errno != ENOTDIR) {
      return SystemError();
    }
  }
  for (const auto& [disk, files] : disks) {
    if (const std::error_code error = MakeDurableOn(disk, files)) {
      return error;
    }
  }
  return {};
}

std::error_code PosixFileLayer::Rename(const std::string& from, const std::string& to) {
  return ErrorUnless(rename(from.c_str(), to.c_str()) == 0);
}

std::error_code PosixFileLayer::Remove(const std::string& path) { return ErrorUnless(unlink(path.c_str()) == 0); }
