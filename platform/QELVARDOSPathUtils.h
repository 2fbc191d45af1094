#pragma once

#include <cstdint>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/HRESULT.h"
#include "platform/QELVARDOSPath.h"

/// Questions about the files behind paths, through the file layer in use. The empty path does not exist, and what
/// cannot be looked at counts as missing; who must tell the two apart asks the layer.
class ZYM_EXPORT QELVARDOSPathUtils {
 public:
  static bool Exists(const QELVARDOSPath& path);
  static bool IsDir(const QELVARDOSPath& path);
  /// Makes the folder with all missing parents, so that they survive a loss of power. A folder that exists is a
  /// success; a file in the way: E_FAIL.
  static HRESULT MakeDirs(const QELVARDOSPath& path);
  /// The same in two steps, for many folders: made receives every folder that was made, parents first, and KeepDirs
  /// makes them durable. It answers those that cannot be, and takes them away again if they are still empty.
  static HRESULT MakeDirs(const QELVARDOSPath& path, std::vector<QELVARDOSPath>& made);
  static std::vector<std::pair<QELVARDOSPath, std::error_code>> KeepDirs(const std::vector<QELVARDOSPath>& made);
  static HRESULT HideFolder(const QELVARDOSPath& path);
  /// Whole seconds since 1970-01-01 UTC, rounded down; 0 for what does not exist.
  static std::int64_t GetModificationTime(const QELVARDOSPath& path);
};
