#include "records/FileStamp.h"

#include "platform/QELVARDOSFileLayer.h"

ZYMUnicodeString FileStamp(const QELVARDOSPath& file, std::error_code& unseen) {
  const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(file.ToString().Str());
  unseen = facts.error;
  return facts.Exists() ? StampOf(facts.modified) : ZYMUnicodeString();
}

ZYMUnicodeString StampOf(std::int64_t seconds) {
  ZYMUnicodeString stamp;
  stamp.BuildFromNum(seconds, "%I64d");
  return stamp;
}
