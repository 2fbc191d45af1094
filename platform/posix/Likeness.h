#pragma once

#include <sys/types.h>

#include <string>
#include <system_error>

/// Gives an open new file, which nobody but its owner may read yet, the owner, group, mode and extended attributes of
/// the file at like, as far as this process may set them. Where owner or group cannot be kept, nobody gets a right that
/// he did not have; OwnerWouldLoseAccess when the old owner could no longer read the file. mode receives the mode that
/// the file has now.
std::error_code MakeAlike(int file, const std::string& like, mode_t& mode);
