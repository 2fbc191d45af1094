#include "platform/posix/PosixFileLayer.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <thread>
#include <utility>

#include "platform/QELVARDOSFileError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Disks.h"
#include "platform/posix/Durability.h"
#include "platform/posix/Likeness.h"

namespace {

/// A writer holds many folders at a time, and its client opens files too: of what a process may have open, and numbers
/// from the bottom, half is left to others.
bool LeavesDescriptors(int descriptor) {
  rlimit limit{};
  return getrlimit(RLIMIT_NOFILE, &limit) == 0 && static_cast<rlim_t>(descriptor) < limit.rlim_cur / 2;
}

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
      known_.clear();
    }
  }

  /// What was seen at the path, if it is the one that was asked for last; else null.
  const QELVARDOSFileFacts* Known(const std::string& path) const {
    return !known_.empty() && known_ == path ? &facts_ : nullptr;
  }
  void Know(const std::string& path, const QELVARDOSFileFacts& facts) {
    if (depth_ > 0) {
      known_ = path;
      facts_ = facts;
    }
  }
  /// Something is changed, there perhaps.
  void Changed() { known_.clear(); }

  /// Where path is to be looked up; the path must outlive the place.
  Place Find(const std::string& path) {
    if (depth_ == 0) {
      return {AT_FDCWD, path.c_str()};
    }
    Folder& folder = FolderOf(path);
    const char* const rest = path.c_str() + folder.prefix.size();
    if (folder.prefix.empty() || *rest == '\0' || *rest == '/' || !IsWorthOpening(folder)) {
      return {AT_FDCWD, path.c_str()};
    }
    return {folder.open->Number(), rest};
  }

 private:
  struct Folder {
    /// The path of the folder, with a "/" at its end.
    std::string prefix;
    int seen = 0;
    std::unique_ptr<Descriptor> open;
  };

  /// The one that was opened first makes room.
  Folder& FolderOf(const std::string& path) {
    const std::size_t length = path.rfind('/') + 1;
    for (Folder& folder : folders_) {
      if (folder.prefix.size() == length && path.starts_with(folder.prefix)) {
        return folder;
      }
    }
    Folder& folder = folders_.at(next_++ % folders_.size());
    folder = {path.substr(0, length), 0, nullptr};
    return folder;
  }

  /// Files that come from many folders in turn would pay for an opening each.
  static bool IsWorthOpening(Folder& folder) {
    constexpr int SeenBefore = 3;
    if (folder.open == nullptr && ++folder.seen > SeenBefore) {
      folder.open = std::make_unique<Descriptor>(folder.prefix, O_PATH | O_DIRECTORY);
      if (!LeavesDescriptors(folder.open->Number())) {
        folder.open->Close();
      }
    }
    return folder.open != nullptr && folder.open->IsOpen();
  }

  void Forget() { folders_ = {}; }

  int depth_ = 0;
  std::string known_;
  QELVARDOSFileFacts facts_;
  /// Object files and records come in turn.
  std::array<Folder, 4> folders_;
  std::size_t next_ = 0;
};

thread_local Lookups lookups;

ssize_t ReadAt(const Descriptor& file, char* to, std::size_t most, std::size_t offset) {
  return Uninterrupted([&] { return pread(file.Number(), to, most, static_cast<off_t>(offset)); });
}

/// What opening or reading a pipe, a socket or a device that is no file may end with.
std::error_code NoFileOr(const std::error_code& error) {
  const bool isNoFile = error == std::errc::invalid_seek || error == std::errc::no_such_device_or_address ||
                        error == std::errc::no_such_device;
  return isNoFile ? std::make_error_code(std::errc::not_supported) : error;
}

std::error_code TooLarge() { return std::make_error_code(std::errc::file_too_large); }

/// Continues behind what bytes holds already.
std::error_code ReadRest(const Descriptor& file, std::string& bytes, std::uint64_t atMost) {
  struct stat facts {};
  if (fstat(file.Number(), &facts) != 0) {
    return SystemError();
  }
  if (!S_ISREG(facts.st_mode)) {
    return std::make_error_code(std::errc::not_supported);
  }
  if (static_cast<std::uint64_t>(facts.st_size) > atMost) {
    return TooLarge();
  }
  std::size_t filled = bytes.size();
  // One byte more than the file should have, so that its end shows without another turn.
  bytes.resize(std::max(filled, static_cast<std::size_t>(facts.st_size)) + 1);
  ssize_t got = 0;
  while ((got = ReadAt(file, bytes.data() + filled, bytes.size() - filled, filled)) > 0) {
    filled += static_cast<std::size_t>(got);
    if (filled > atMost) {
      return TooLarge();
    }
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

using Kind = QELVARDOSFileFacts::Kind;

Kind KindOf(mode_t mode) { return S_ISREG(mode) ? Kind::File : S_ISDIR(mode) ? Kind::Folder : Kind::Other; }

QELVARDOSFileFacts FactsOf(const struct stat& file) {
  return {KindOf(file.st_mode),
          file.st_mtim.tv_sec,
          static_cast<std::uint64_t>(file.st_size),
          {},
          static_cast<std::int32_t>(file.st_mtim.tv_nsec)};
}

/// Whoever may write where a record folder belongs could put a link there to have files written elsewhere in another's
/// name. A link of the user's own, or of the owner of the place, is taken for meant.
bool IsForeignLink(const std::string& path) {
  struct stat link {};
  if (lstat(path.c_str(), &link) != 0 || !S_ISLNK(link.st_mode) || link.st_uid == geteuid()) {
    return false;
  }
  struct stat above {};
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return stat(FolderName(folder).c_str(), &above) != 0 || above.st_uid != link.st_uid;
}

/// Whoever removes left-overs is done soon, so a writer waits for that, but not for ever.
std::error_code Lock(int folder, QELVARDOSFolderUse use) {
  const bool alone = use == QELVARDOSFolderUse::Clean;
  const int kind = alone ? LOCK_EX : LOCK_SH;
  for (int tries = alone ? 1 : 10; tries > 0; --tries) {
    if (Uninterrupted([&] { return flock(folder, kind | LOCK_NB); }) == 0) {
      return {};
    }
    if (errno != EWOULDBLOCK) {
      return SystemError();
    }
    if (tries > 1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  return std::make_error_code(std::errc::device_or_resource_busy);
}

/// What may not be opened again can only be made durable now.
std::error_code WriteOpen(Descriptor& open, QELVARDOSNewFile& file, mode_t mode) {
  std::error_code error = WriteAll(open, file.bytes);
  if (!error && (file.atOnce || (mode & S_IRUSR) == 0)) {
    error = ErrorUnless(Uninterrupted([&] { return fdatasync(open.Number()); }) == 0);
    file.isDurable = !error;
  }
  return error ? error : open.Close();
}

std::error_code Write(QELVARDOSNewFile& file) {
  constexpr mode_t Plain = 0666;
  constexpr mode_t OwnerAlone = 0600;
  const Lookups::Place place = lookups.Find(file.path);
  Descriptor open(place.folder, place.path, O_WRONLY | O_CREAT | O_EXCL, file.like.empty() ? Plain : OwnerAlone);
  if (!open.IsOpen()) {
    return SystemError();
  }
  mode_t mode = Plain;
  std::error_code error = file.like.empty() ? std::error_code() : MakeAlike(open.Number(), file.like, mode);
  error = error ? error : WriteOpen(open, file, mode);
  if (error) {
    unlink(file.path.c_str());
  }
  return error;
}

QELVARDOSFileFacts Look(const std::string& path) {
  const Lookups::Place place = lookups.Find(path);
  struct stat facts {};
  if (fstatat(place.folder, place.path, &facts, 0) != 0) {
    const std::error_code error = SystemError();
    return QELVARDOSFileLayer::MeansMissing(error, path) ? QELVARDOSFileFacts()
                                                         : QELVARDOSFileFacts{Kind::Unseen, 0, 0, error};
  }
  return FactsOf(facts);
}

}  // namespace

QELVARDOSFileLayer& QELVARDOSFileLayer::System() {
  static PosixFileLayer layer;
  return layer;
}

QELVARDOSFileFacts PosixFileLayer::Stat(const std::string& path) {
  if (const QELVARDOSFileFacts* const known = lookups.Known(path)) {
    return *known;
  }
  const QELVARDOSFileFacts facts = Look(path);
  lookups.Know(path, facts);
  return facts;
}

std::error_code PosixFileLayer::Read(const std::string& path, std::string& bytes, std::uint64_t atMost) {
  return ReadFile(path, bytes, atMost, nullptr);
}

std::error_code PosixFileLayer::ReadWithFacts(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                              QELVARDOSFileFacts& facts) {
  return ReadFile(path, bytes, atMost, &facts);
}

/// A small file takes three system calls. Reading at an offset refuses folders, pipes and sockets by itself, opening
/// without blocking keeps a pipe from holding us up, and a read that is shorter than asked ends at a file's end.
std::error_code PosixFileLayer::ReadFile(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                         QELVARDOSFileFacts* facts) {
  const Lookups::Place place = lookups.Find(path);
  const Descriptor file(place.folder, place.path, O_RDONLY | O_NONBLOCK);
  if (!file.IsOpen()) {
    return NoFileOr(SystemError());
  }
  std::array<char, 16384> start;  // NOLINT(cppcoreguidelines-pro-type-member-init): clearing it costs more than a call
  const ssize_t got = ReadAt(file, start.data(), start.size(), 0);
  if (got < 0) {
    return NoFileOr(SystemError());
  }
  if (static_cast<std::uint64_t>(got) > atMost) {
    return TooLarge();
  }
  if (struct stat known{}; facts != nullptr && fstat(file.Number(), &known) == 0) {
    *facts = FactsOf(known);
  }
  bytes.assign(start.data(), static_cast<std::size_t>(got));
  return bytes.size() < start.size() ? std::error_code() : ReadRest(file, bytes, atMost);
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
  lookups.Changed();
  return ErrorUnless(mkdir(path.c_str(), 0777) == 0);
}

/// The dot that a record folder's name begins with hides it.
std::error_code PosixFileLayer::HideFolder(const std::string& /*path*/) { return {}; }

std::error_code PosixFileLayer::ClaimFolder(const std::string& folder, QELVARDOSFolderUse use,
                                            QELVARDOSFolderClaim& claim) {
  const std::string path = FolderName(folder);
  if (IsForeignLink(path)) {
    return QELVARDOSFileError::ForeignLink;
  }
  auto held = std::make_shared<const Descriptor>(path, O_RDONLY | O_DIRECTORY);
  if (!held->IsOpen()) {
    return SystemError();
  }
  if (!IsOfThisSystem(held->Number())) {
    return std::make_error_code(std::errc::not_supported);
  }
  if (use == QELVARDOSFolderUse::Write && !LeavesDescriptors(held->Number())) {
    return std::make_error_code(std::errc::too_many_files_open);
  }
  const std::error_code error = Lock(held->Number(), use);
  if (!error) {
    claim = std::move(held);
  }
  return error;
}

std::error_code PosixFileLayer::WriteNew(const std::string& path, std::string_view bytes, const std::string& like) {
  QELVARDOSNewFile file;
  file.path = path;
  file.bytes = bytes;
  file.like = like;
  WriteAllNew({&file, 1});
  return file.error;
}

void PosixFileLayer::WriteAllNew(std::span<QELVARDOSNewFile> files) {
  lookups.Changed();
  for (QELVARDOSNewFile& file : files) {
    file.error = Write(file);
  }
}

std::vector<std::error_code> PosixFileLayer::MakeDurable(const std::vector<std::string>& paths) {
  return MakeContentDurable(paths);
}

std::vector<std::error_code> PosixFileLayer::MakeFoldersDurable(const std::vector<std::string>& folders) {
  return MakeEntriesDurable(folders);
}

std::error_code PosixFileLayer::Rename(const std::string& from, const std::string& to) {
  lookups.Changed();
  const std::size_t folder = from.rfind('/') + 1;
  if (to.rfind('/') + 1 != folder || to.compare(0, folder, from, 0, folder) != 0) {
    return ErrorUnless(rename(from.c_str(), to.c_str()) == 0);
  }
  const Lookups::Place place = lookups.Find(from);
  const char* const name = to.c_str() + (place.path - from.c_str());
  return ErrorUnless(renameat(place.folder, place.path, place.folder, name) == 0);
}

std::error_code PosixFileLayer::Remove(const std::string& path) {
  lookups.Changed();
  return ErrorUnless(remove(path.c_str()) == 0);
}
