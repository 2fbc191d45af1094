#pragma once

#include <system_error>

#include "platform/ZYMExport.h"

/// Why files are not looked at or written, beyond what the system itself says. As error codes they go wherever the
/// system's own errors go.
enum class QELVARDOSFileError {
  /// A file may not be replaced, since the new one would belong to somebody else and its owner could not read it.
  OwnerWouldLoseAccess = 1,
  /// A folder is a link that belongs neither to the user nor to the owner of the folder that holds it.
  ForeignLink,
  /// The file is as it was to be, but its folder could not be written out: a loss of power may bring the old one back.
  MayBeLost,
  /// One look said this and the next that.
  ChangedMeanwhile,
  /// A name that a server sent leads out of the folder that it names a file in.
  LeavesFolder,
};

ZYM_EXPORT std::error_code make_error_code(QELVARDOSFileError error);

template <>
struct std::is_error_code_enum<QELVARDOSFileError> : std::true_type {};
