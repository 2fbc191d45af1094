#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "component/QELXIVARDOSLRDXMLHandler.h"
#include "platform/QELVARDOSFileNotices.h"

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

/// Tells the file layer, in the middle of reading many record files in order, which ones come next.
class RecordsAhead {
 public:
  /// fileOf: the path of each, by its number.
  RecordsAhead(std::size_t count, std::function<std::string(std::size_t record)> fileOf)
      : count_(count), fileOf_(std::move(fileOf)) {}

  void Before(std::size_t record);

 private:
  std::size_t count_;
  std::function<std::string(std::size_t record)> fileOf_;
  QELVARDOSFileLookups lookups_;
  QELVARDOSFileNotices notices_;
};

/// A message of the module without the name of the file that it begins with.
std::string WithoutFile(const std::string& message, const std::string& file);

}  // namespace lrd
