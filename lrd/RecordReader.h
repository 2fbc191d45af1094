#pragma once

#include <string>

#include "component/QELXIVARDOSLRDXMLHandler.h"

namespace lrd {

/// What is wrong with a record file, if anything.
enum class RecordFault { None, Missing, Unreadable, NotWellFormed, Incomplete, UnknownVersion, NoRecord };

struct RecordReading {
  /// null when there is a fault.
  QELXIVARDOSLRDObject_var record;
  RecordFault fault = RecordFault::None;
  /// The fault in words, without the file's name.
  std::string reason;
};

/// Reads record files through the module and explains what it refuses, from the one look that it took.
class RecordReader : private QELXIVARDOSObserver {
 public:
  RecordReader();
  RecordReading Read(const std::string& file);

 private:
  void UnknownFormat(const ZYMUnicodeString& recordFile, const ZYMUnicodeString& version) override;

  QELXIVARDOSLRDXMLHandler_var handler_;
  std::string unknownVersion_;
};

/// A message of the module without the name of the file that it begins with.
std::string WithoutFile(const std::string& message, const std::string& file);

}  // namespace lrd
