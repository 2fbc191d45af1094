#pragma once

#include "component/QELXVARDOSReason.h"
#include "platform/ZYMIDOM.h"
#include "platform/ZYMUnicodeString.h"

/// What a host may be told while an operation of the module runs. The host implements what it wants to hear of; it
/// keeps the object, which must outlive the handler that it was given to. Every call comes on the thread of the
/// operation, and must leave the list of objects as it is.
class QELXIVARDOSObserver {
 public:
  QELXIVARDOSObserver() = default;
  QELXIVARDOSObserver(const QELXIVARDOSObserver&) = delete;
  QELXIVARDOSObserver& operator=(const QELXIVARDOSObserver&) = delete;
  virtual ~QELXIVARDOSObserver() = default;

  /// A record file is of a format version that this module does not know. Recognition found no record in it, so its
  /// object is new to the server; recording is about to replace it.
  virtual void UnknownFormat(const ZYMUnicodeString& /*recordFile*/, const ZYMUnicodeString& /*version*/) {}

  /// What a call goes through one by one.
  enum class Stage {
    /// The objects of a request, to which verdicts are written.
    Recognizing,
    /// Records that are made ready beside their files; no file has changed yet.
    Recording
  };
  /// How far a call is, and whether it may go on: asked between two of all objects or records, when done of them are
  /// behind it, and in recording once more when all are ready. After that the files are replaced without a further
  /// question.
  ///
  /// On false the call answers E_ABORT, and QELVARDOSSystemUtils::LastError() says "ended by the host". Recognition
  /// leaves the verdicts written so far and the other objects as they were. Recording leaves every file and every
  /// folder as it was and no temporary file; the file layer is told Failed, operation_canceled, of every record file
  /// that would have changed.
  virtual bool MayGoOn(Stage /*stage*/, int /*done*/, int /*all*/) { return true; }

  /// Verdict and stamps are written into an object of a request; the reason lives as long as the call. Before the error
  /// of a record that lacks what it must have, RecordDamaged is told, and nothing is written.
  virtual void Decided(const ZYMIDOMElement_var& /*object*/, const QELXVARDOSReason& /*reason*/) {}

  /// How much of the reasons is to be told. Details cost time, and a further look at the disk for some objects, so they
  /// are found out only for who wants them; without reasons Decided is not called. Always the same answer.
  enum class Reasons { None, Plain, Detailed };
  virtual Reasons WantsReasons() { return Reasons::Plain; }
  /// A detail that shows when all objects of a recognition are decided: two of them have the same record file, so one
  /// verdict rests on the other's record. first is told with each of the others. The objects are numbered from 0 as
  /// Decided was called for them.
  virtual void SharedRecordFile(int /*first*/, int /*other*/) {}
};
