#pragma once

#include <cstdint>
#include <optional>

#include "platform/ZYMUnicodeString.h"

/// Why recognition gave an object its verdict: one closed list, with the facts that are known of it. What was not
/// looked at is empty.
struct QELXVARDOSReason {
  enum class Kind {
    // From the request alone; no record and no file was looked at.
    /// It has a physical id: EXISTS.
    PhysicalIdGiven,
    /// It has none, and the command runs without records: UNKNOWN.
    NoPhysicalId,

    // From the request, over what the records say.
    /// modified="TRUE" on an object that is not UNKNOWN: MODIFIED.
    MarkedAsModified,
    /// "recognizeasnew": UNKNOWN.
    MarkedAsNew,

    // From the object's own record.
    /// EXISTS.
    StampsAgree,
    /// MODIFIED, like the three that follow.
    FileNewer,
    FileOlder,
    RecordWithoutStamp,
    StampIsNoTime,
    /// There is a record, but no file any more, and the record has no entry of the object: UNKNOWN.
    ObjectFileGone,

    // From the entry of the object in a record.
    /// Found by the physical id that a relationship of the record gives its child: EXISTS.
    EntryOfRelationship,
    /// Found by its identifier: EXISTS.
    EntryOfIdentifier,
    /// Found, but it has no physical id: UNKNOWN.
    EntryWithoutPhysicalId,
    /// UNKNOWN.
    NoSuchEntry,

    // There is no record to decide by: UNKNOWN.
    NoRecord,
    /// The record file holds none of a format version that this module knows.
    NoKnownRecord,

    // Nothing was decided, and the call ended here.
    /// The record file is there and damaged: UNKNOWN, E_FAIL.
    RecordDamaged,
    /// A place that the verdict rests on could not be looked at: no verdict, E_FAIL.
    CannotBeLookedAt
  };

  Kind kind = Kind::NoRecord;
  /// The record file that was looked at, or looked for.
  ZYMUnicodeString recordFile;
  /// The modification time of the object's file.
  std::optional<std::int64_t> fileStamp;
  /// What the record has as the file's modification time.
  ZYMUnicodeString recordStamp;
  /// What the object was looked for by in a record.
  ZYMUnicodeString identifier;
  /// Path and reason of a failure; also of a look at the object's file that the verdict does not rest on.
  ZYMUnicodeString failure;
};
