#pragma once

#include <cstdint>
#include <optional>
#include <system_error>

#include "platform/QELVARDOSPath.h"
#include "platform/ZYMUnicodeString.h"

/// A file's modification time as it stands in records and is compared with them: whole seconds since 1970-01-01 UTC, in
/// decimal. One way to write it, so that equal times are equal strings. Empty when the file does not exist, and when it
/// could not be looked at: then unseen tells why, else it is cleared.
ZYMUnicodeString FileStamp(const QELVARDOSPath& file, std::error_code& unseen);

/// The form of a time that is known already.
ZYMUnicodeString StampOf(std::int64_t seconds);

/// The time that a stamp means, in whatever form it is written; none when it is no time.
std::optional<std::int64_t> SecondsOf(const ZYMUnicodeString& stamp);
