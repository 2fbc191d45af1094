#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMExport.h"

/// Replaces files in whole, many at a time, so that an interruption at any moment leaves each as it was or as it was to
/// be:
/// - open: construct one. It becomes the thread's transaction; transactions do not nest.
/// - Replace, once for each file. A file that already holds the bytes is left alone; any other gets a temporary file
///   beside it.
/// - Commit: makes all temporary files durable together, then renames each over its file, in the order of Replace.
/// - destruct: what was not committed is abandoned, its temporary files are removed.
///
/// One file's failure does not stop the others: its old content stays and its temporary file goes. A temporary file
/// that a stopped process left behind goes with the next successful replacement of the same file.
class ZYM_EXPORT QELVARDOSFileTransaction {
 public:
  struct Failure {
    std::string path;
    std::error_code error;
  };

  QELVARDOSFileTransaction();
  ~QELVARDOSFileTransaction();
  QELVARDOSFileTransaction(const QELVARDOSFileTransaction&) = delete;
  QELVARDOSFileTransaction& operator=(const QELVARDOSFileTransaction&) = delete;

  /// The folder must exist. A new file gets the mode of a plainly created one, an existing file keeps its own.
  std::error_code Replace(const std::string& path, std::string_view bytes);
  /// Tells the file layer that a file will not be replaced because there is nothing to replace it with. A file whose
  /// Replace has just failed is not told of twice.
  void Refuse(const std::string& path, const std::error_code& error);
  /// What could not be replaced, refusals of Replace left out.
  std::vector<Failure> Commit();

  /// The transaction that is open on this thread, or null.
  static QELVARDOSFileTransaction* Open() noexcept;
  /// Whether a file name is one that a transaction gives to its temporary files.
  static bool IsTemporaryName(std::string_view fileName) noexcept;

 private:
  struct Staged {
    std::string path;
    std::string temporary;
    std::size_t hash;  ///< of the path
  };
  void Abandon();

  QELVARDOSFileLookups lookups_;
  std::vector<Staged> staged_;
  std::string lastFailure_;
};

/// Replaces one file: in the open transaction when there is one, else at once in a transaction of its own.
ZYM_EXPORT std::error_code QELVARDOSReplaceFile(const std::string& path, std::string_view bytes);
