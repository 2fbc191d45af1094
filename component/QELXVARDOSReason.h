#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

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
    /// The record file is sound, but what it holds is no record.
    NoKnownRecord,

    // Nothing was decided, and the call ended here.
    /// The record file is there and damaged: UNKNOWN, E_FAIL; for a host that keeps going no verdict.
    RecordDamaged,
    /// A place that the verdict rests on could not be looked at: no verdict, E_FAIL.
    CannotBeLookedAt,

    // Further ways to UNKNOWN, behind the others so that these keep their numbers.
    /// There is no such entry, since nothing tells the object apart in a record: its type has no identifying attribute,
    /// or the object lacks that.
    NoIdentifier,
    /// The record is of a format version that this module does not know.
    UnknownFormat
  };

  /// What a careful person would question although the rules leave no choice.
  enum class Doubt {
    /// EXISTS, and the record was written within the second of the file's time, which lies after the beginning of that
    /// second: a change within it does not show.
    ChangedWithinSecond,
    /// The same, but the fractions of the times are not known, or the file system keeps none.
    MayHaveChangedWithinSecond,
    /// The file's time or the record's stamp has yet to come.
    TimeInFuture,
    /// The file's time lies before its record's stamp.
    OlderThanRecord,
    /// The object's own record has no physical id.
    RecordWithoutPhysicalId,
    /// The object is an entry in a record of an older format version than its own record.
    EntryOfOlderFormat
  };

  /// Of a file, in seconds since 1970-01-01 UTC.
  struct Time {
    std::int64_t seconds = 0;
    /// None where they are not known.
    std::optional<std::int32_t> nanoseconds;
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
  /// The "reluuid" of the relationship through which the entry was found.
  ZYMUnicodeString relationship{};
  /// Of the record that decided, also of one that is not known.
  ZYMUnicodeString formatVersion{};
  /// Record files of the object's compositions, which are looked for first and are not there.
  std::vector<ZYMUnicodeString> missingRecordFiles{};

  static constexpr std::size_t MostNearMisses = 8;
  struct Details {
    std::vector<Doubt> doubts{};
    /// Where there is no such entry: the identifiers of entries that differ from it only in letter case or in a file's
    /// version, at most MostNearMisses.
    std::vector<ZYMUnicodeString> nearMisses{};
    /// The times that ChangedWithinSecond and MayHaveChangedWithinSecond compare.
    Time fileTime{};
    Time recordFileTime{};
    /// Of the object's own record, where it is an entry in an older one.
    ZYMUnicodeString ownFormatVersion{};
  };
  /// Null where there are none, and for an observer that does not want them.
  std::shared_ptr<const Details> details{};
};
