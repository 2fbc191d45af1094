#include "platform/posix/Durability.h"

#include <sys/stat.h>

#include <map>

#include "platform/posix/Descriptor.h"
#include "platform/posix/Disks.h"

namespace {

/// A file and where to say what became of it.
struct File {
  const std::string* path;
  std::error_code* error;
};
using Files = std::vector<File>;

/// Calls synchronise with the open file.
template <typename Synchronise>
std::error_code WithOpen(const std::string& path, const Synchronise& synchronise) {
  const Descriptor file(path, O_RDONLY);
  return ErrorUnless(file.IsOpen() && Uninterrupted([&] { return synchronise(file.Number()); }) == 0);
}

/// What is already to blame is not asked again.
void SynchroniseEach(const Files& files) {
  for (const File& file : files) {
    if (!*file.error) {
      *file.error = WithOpen(*file.path, fdatasync);
    }
  }
}

/// That a file's content could not be written out is told once: whoever asks again hears that all is well. So such an
/// error stays with the file; after any other the file may be synchronised in another way.
template <typename Synchronise>
bool Succeeds(const File& file, const Synchronise& synchronise) {
  const std::error_code error = WithOpen(*file.path, synchronise);
  if (error == std::errc::io_error || error == std::errc::no_space_on_device || error.value() == EDQUOT) {
    *file.error = error;
  }
  return !error;
}

/// fsync commits the journal as far as the file's own last change. Changing the file anew, if only to the mode that it
/// has, carries the commit beyond the last change of every file that was written before.
int CommitJournal(int file) {
  struct stat facts {};
  const bool changed = fstat(file, &facts) == 0 && fchmod(file, facts.st_mode & 07777U) == 0;
  return changed ? fsync(file) : -1;
}

bool WriteOut(const Files& files, unsigned phase) {
  for (const File& file : files) {
    if (!Succeeds(file, [phase](int number) { return sync_file_range(number, 0, 0, phase); })) {
      return false;
    }
  }
  return true;
}

bool CommitTogether(const Files& files) {
  constexpr unsigned Start = SYNC_FILE_RANGE_WRITE;
  constexpr unsigned Finish = SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
  return WriteOut(files, Start) && WriteOut(files, Finish) && Succeeds(files.back(), CommitJournal);
}

int SynchroniseDiskOf(int file) {
  if (IsOfThisSystem(file)) {
    return syncfs(file);
  }
  errno = ENOTSUP;
  return -1;
}

bool SynchroniseDisk(const Files& files) { return !WithOpen(*files.front().path, SynchroniseDiskOf); }

/// syncfs is the cheapest way for many files of a quiet disk, but it also waits for whatever else the disk owes, such
/// as gigabytes of CAD files that were just checked out. A journal is committed in order: there it is enough to write
/// out these files' own data and then to commit once. Where there is no such journal, syncfs pays only for more than a
/// few files, and a file server does not hear of it. Whatever fails for all is done for each, so that only those are
/// blamed that are to blame.
void SynchroniseOn(dev_t disk, const Files& files) {
  constexpr std::size_t Few = 16;
  const bool together =
      files.size() > 1 && (HasExtJournal(disk) ? CommitTogether(files) : files.size() > Few && SynchroniseDisk(files));
  if (!together) {
    SynchroniseEach(files);
  }
}

}  // namespace

/// What not even its owner may open was made durable when it was written.
std::vector<std::error_code> MakeContentDurable(const std::vector<std::string>& paths) {
  std::vector<std::error_code> errors(paths.size());
  std::map<dev_t, Files> disks;
  for (std::size_t at = 0; at < paths.size(); ++at) {
    struct stat facts {};
    if (stat(paths[at].c_str(), &facts) == 0) {
      if ((facts.st_mode & S_IRUSR) == 0) {
        continue;
      }
      disks[facts.st_dev].push_back({&paths[at], &errors[at]});
    } else if (errno != ENOENT && errno != ENOTDIR) {
      errors[at] = SystemError();
    }
  }
  for (const auto& [disk, files] : disks) {
    SynchroniseOn(disk, files);
  }
  return errors;
}

// Some file systems do not know how to flush a folder, mostly those of servers, which answer for their folders
// themselves: there is nothing more to be had.
std::vector<std::error_code> MakeEntriesDurable(const std::vector<std::string>& folders) {
  std::vector<std::error_code> errors;
  for (const std::string& folder : folders) {
    const std::error_code error = WithOpen(FolderName(folder), fsync);
    const bool unknown = error == std::errc::invalid_argument || error == std::errc::not_supported ||
                         error == std::errc::operation_not_supported || error == std::errc::function_not_supported;
    errors.push_back(unknown ? std::error_code() : error);
  }
  return errors;
}
