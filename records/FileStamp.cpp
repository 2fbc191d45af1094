#include "records/FileStamp.h"

#include "platform/QELVARDOSFileLayer.h"

ZYMUnicodeString FileStamp(const QELVARDOSPath& file) {
  const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(file.ToString().Str());
  return facts.Exists() ? StampOf(facts.modified) : ZYMUnicodeString();
}

ZYMUnicodeString StampOf(std::int64_t seconds) {
  ZYMUnicodeString stamp;
  stamp.BuildFromNum(seconds, "%I64d");
  return stamp;
}
