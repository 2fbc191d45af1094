#include "records/FileStamp.h"

#include <charconv>

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

std::optional<std::int64_t> SecondsOf(const ZYMUnicodeString& stamp) {
  std::int64_t seconds = 0;
  const std::string_view text = stamp.View();
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  return error == std::errc() && end == text.data() + text.size() ? std::optional(seconds) : std::nullopt;
}
