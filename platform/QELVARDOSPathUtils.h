#pragma once

#include <cstdint>

#include "platform/HRESULT.h"
#include "platform/QELVARDOSPath.h"

/// Questions about the files behind paths, through the file layer in use. The empty path does not exist.
class ZYM_EXPORT QELVARDOSPathUtils {
 public:
  static bool Exists(const QELVARDOSPath& path);
  static bool IsDir(const QELVARDOSPath& path);
  /// Makes the folder with all missing parents. A folder that exists is a success; a file in the way: E_FAIL.
  static HRESULT MakeDirs(const QELVARDOSPath& path);
  static HRESULT HideFolder(const QELVARDOSPath& path);
  /// Whole seconds since 1970-01-01 UTC, rounded down; 0 for what does not exist.
  static std::int64_t GetModificationTime(const QELVARDOSPath& path);
};
