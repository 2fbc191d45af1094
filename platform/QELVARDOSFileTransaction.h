#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMExport.h"

/// Replaces files in whole, many at a time:
/// - open: construct one. Transactions may nest; each knows its own files alone.
/// - Replace, once for each file. A file that already holds the bytes is left alone; any other gets a temporary file
///   beside it, many of them created at once.
/// - Commit: makes all temporary files durable together, renames each over its file, in any order, and makes the
/// folders
///   durable, each once.
/// - destruct: what was not committed is abandoned, its temporary files are removed.
///
/// What is promised, for each file:
/// - A process that ends at any moment leaves the file as it was or as it was to be, on every file system.
/// - After success is told a loss of power leaves it as it was to be, on every file system that keeps what it was asked
///   to write out. A file server's folder, where it cannot be asked, is the server's to keep.
/// - A loss of power before that leaves it as it was or as it was to be on a file system with a journal (ext3, ext4,
///   xfs), or that never writes over what is in use (btrfs, zfs, f2fs). On others (ext2, ext4 without a journal, FAT)
///   content reaches the disk before the name, but a name is changed in more than one block: power that goes between
///   them may leave the name with neither until the file system is repaired.
/// - A new file has the mode that any new file has there. One that is replaced keeps owner, group, mode and extended
///   attributes as far as the process may set them, and is not replaced if its owner could no longer read it.
///
/// One file's failure does not stop the others: its old content stays and its temporary file goes; only when the folder
/// cannot be made durable after the rename, the new content stands and the file counts as failed all the same.
///
/// While a transaction writes in a folder it holds a claim on it. Temporary files that nobody's claim covers any more
/// were left by a process that ended; they go with a later commit into the folder, as a rule the next. In a folder that
/// cannot be claimed, or is one too many of a commit into hundreds, nothing proves that a file was left over, so there
/// none goes by itself.
///
/// While it is open, files are looked up as under QELVARDOSFileLookups: a folder that another process swaps for one of
/// the same name may not be noticed.
class ZYM_EXPORT QELVARDOSFileTransaction {
 public:
  struct Failure {
    std::string path;
    std::error_code error;
  };

  /// Works on the layer that is in use now, which must outlive it.
  QELVARDOSFileTransaction();
  ~QELVARDOSFileTransaction();
  QELVARDOSFileTransaction(const QELVARDOSFileTransaction&) = delete;
  QELVARDOSFileTransaction& operator=(const QELVARDOSFileTransaction&) = delete;

  /// The folder must exist. An error of looking at the file; that it cannot be written may show as late as in Commit.
  std::error_code Replace(const std::string& path, std::string_view bytes);
  /// What the file held when Replace looked at it; empty when there was none or it could not be read.
  const std::string& Present() const noexcept { return present_; }
  /// Tells the file layer that a file will not be replaced because there is nothing to replace it with. reason: the
  /// error in words, its own where it is empty.
  void Refuse(const std::string& path, const std::error_code& error, const std::string& reason = {});
  /// What could not be replaced, refusals of Replace left out.
  std::vector<Failure> Commit();

  /// Whether a file name is one that a transaction gives to its temporary files.
  static bool IsTemporaryName(std::string_view fileName) noexcept;
  /// Of a temporary name: whether its writer held a claim on the folder, so that it is left over once nobody does.
  static bool IsUnderClaim(std::string_view temporaryName) noexcept;

 private:
  struct Staged {
    std::string path;
    /// Empty when there is none (any more).
    std::string temporary;
    QELVARDOSReplacement outcome = QELVARDOSReplacement::Written;
    std::error_code error;
    bool isNew = false;
    bool isDurable = false;
  };
  /// What is still to be written for a staged file.
  struct Unwritten {
    std::size_t staged;
    std::string bytes;
  };
  /// A folder that files are written in.
  struct Entered {
    /// Empty where none was to be had.
    QELVARDOSFolderClaim claim;
    /// Whether the system makes its files durable each by itself.
    bool flushesEach = false;
  };

  std::error_code Stage(const std::string& path, std::string_view bytes, Staged& file);
  void WriteLater(std::string_view bytes);
  void WriteTemporaries();
  void Settle(std::size_t staged, const QELVARDOSNewFile* temporary, const std::error_code& unfinished);
  std::error_code Enter(std::string_view folder);
  QELVARDOSNewFile TemporaryFor(Staged& file, std::string_view bytes);
  std::string NextName(bool claimed);
  void DropSuperseded();
  void MakeContentDurable();
  void RenameAll();
  void MakeFoldersDurable();
  void FlushFolders();
  const std::error_code* UnflushedFor(const Staged& file) const;
  void RemoveLeftOvers();
  void RemoveLeftOversIn(const std::string& folder);
  bool ListingPays(const std::string& folder);
  void Fail(Staged& file, const std::error_code& error);
  void RemoveTemporary(Staged& file);
  void Tell(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error,
            const std::string& reason);
  void Abandon();

  QELVARDOSFileLayer& layer_;
  QELVARDOSFileLookups lookups_;
  std::vector<Staged> staged_;
  std::vector<Unwritten> unwritten_;
  std::size_t unwrittenBytes_ = 0;
  std::map<std::string, Entered, std::less<>> entered_;
  /// The folders of the last commit, and why one of them could not be made durable.
  std::map<std::string, std::error_code, std::less<>> flushed_;
  std::string present_;
  /// What tells the names of this transaction from all others, drawn with the first one, and of each other.
  std::string nameStart_;
  std::uint32_t nameNumber_ = 0;
};

/// Replaces one file at once, in a transaction of its own.
ZYM_EXPORT std::error_code QELVARDOSReplaceFile(const std::string& path, std::string_view bytes);
