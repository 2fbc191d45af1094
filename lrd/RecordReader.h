#pragma once

#include <string>

#include "component/QELXIVARDOSLRDXMLHandler.h"

namespace lrd {

/// What is wrong with a record file, if anything.
enum class RecordFault { None, Unreadable, NotWellFormed, Incomplete, UnknownVersion, NoRecord };

struct RecordReading {
  /// null when there is a fault.
  QELXIVARDOSLRDObject_var record;
  RecordFault fault = RecordFault::None;
  /// The fault in words, without the file's name.
  std::string reason;
};

/// Reads record files through the module and explains what it refuses.
class RecordReader {
 public:
  RecordReader();
  RecordReading Read(const std::string& file) const;

 private:
  QELXIVARDOSLRDXMLHandler_var handler_;
};

}  // namespace lrd
