#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "component/QELXIVARDOSObserver.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/QELVARDOSFileLayer.h"
#include "recognition/SharedRecord.h"
#include "xmlhandlers/RecordFileReader.h"

/// Finds out for an observer what a verdict can do without: near misses, and what is doubtful about it. Lives as long
/// as one recognition, and changes nothing that it decides.
class ReasonDetails {
 public:
  /// objects: how many there are.
  ReasonDetails(const QELIVARDOSGlobalConfigObject_var& config, QELXIVARDOSObserver& observer, int objects);

  /// The object that was decided, and by what.
  struct Decided {
    /// How many objects were decided before.
    int number;
    const ZYMUnicodeString& ownRecordFile;
    const QELVARDOSFileFacts& file;
    bool isInComposition;
    /// Whether its own record or an entry was found, and so gave the stamps.
    bool isFound;
    /// That was looked at; may be null.
    SharedRecord* record;
    /// Of its own record file, if that was read.
    const QELVARDOSFileFacts& recordFile;
  };
  void AddTo(QELXVARDOSReason& reason, const Decided& decided);
  /// Tells of objects that share a record file; for when all are decided.
  void TellOfSharing();

 private:
  using Details = QELXVARDOSReason::Details;
  void CompareWithinSecond(const QELVARDOSFileFacts& file, const QELVARDOSFileFacts& recordFile);
  void CompareTimes(const QELXVARDOSReason& reason);
  bool IsToCome(const std::optional<std::int64_t>& time);
  void CompareFormats(const QELXVARDOSReason& reason, const Decided& decided);
  void NoteOwner(const QELXVARDOSReason& reason, const Decided& decided);
  void Add(QELXVARDOSReason::Doubt doubt) { New().doubts.push_back(doubt); }
  Details& New();

  RecordFileReader reader_;
  std::int64_t now_;
  QELXIVARDOSObserver& observer_;
  /// The objects with own record files, by the keyed hash of its path. That two paths of a request share 64 bits under
  /// a key that nobody knows does not happen; to keep the paths, or to look each up in a table of all, would take
  /// longer than all else here.
  struct Owner {
    std::uint64_t recordFile;
    int number;
  };
  std::vector<Owner> owners_;
  /// Of the object at hand; null until there are some.
  std::shared_ptr<Details> details_;
};
