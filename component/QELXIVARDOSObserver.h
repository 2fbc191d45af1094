#pragma once

#include "platform/ZYMUnicodeString.h"

/// What a host may be told while an operation of the module runs. The host implements what it wants to hear of; it
/// keeps the object, which must outlive the handler that it was given to. Every call comes on the thread of the
/// operation.
class QELXIVARDOSObserver {
 public:
  QELXIVARDOSObserver() = default;
  QELXIVARDOSObserver(const QELXIVARDOSObserver&) = delete;
  QELXIVARDOSObserver& operator=(const QELXIVARDOSObserver&) = delete;
  virtual ~QELXIVARDOSObserver() = default;

  /// A record file is of a format version that this module does not know. Recognition found no record in it, so its
  /// object is new to the server; recording is about to replace it.
  virtual void UnknownFormat(const ZYMUnicodeString& /*recordFile*/, const ZYMUnicodeString& /*version*/) {}
};
