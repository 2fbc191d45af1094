#include "platform/QELXVARDOSCreoUtil.h"

#include <string_view>

#include "platform/QELVARDOSPath.h"

namespace {

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

ZYMUnicodeString QELXVARDOSCreoUtil::fileNameWitoutVersion(const ZYMUnicodeString& fileName) {
  const std::string_view name = fileName;
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || !IsNumber(name.substr(dot + 1))) {
    return fileName;
  }
  const std::string_view unversioned = name.substr(0, dot);
  return QELVARDOSPath::ExtensionOf(unversioned).empty() ? fileName : ZYMUnicodeString(unversioned);
}
