#include "platform/QELVARDOSPath.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

std::string_view FileName(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

/// Where the extension's dot stands in a file name; its length when there is none.
std::size_t ExtensionDot(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? name.size() : dot;
}

}  // namespace

QELVARDOSPath QELVARDOSPath::GetDirName() const {
  const std::string_view path = path_.View();
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) {
    return {};
  }
  return ZYMUnicodeString(path.substr(0, std::max<std::size_t>(slash, 1)));
}

ZYMUnicodeString QELVARDOSPath::GetFileName() const { return FileName(path_); }

ZYMUnicodeString QELVARDOSPath::GetBaseName() const {
  const std::string_view name = FileName(path_);
  return name.substr(0, ExtensionDot(name));
}

ZYMUnicodeString QELVARDOSPath::GetExtension() const {
  const std::string_view name = FileName(path_);
  return name.substr(std::min(ExtensionDot(name) + 1, name.size()));
}

QELVARDOSPath operator/(const QELVARDOSPath& folder, const QELVARDOSPath& name) {
  if (folder.IsEmpty() || name.IsEmpty()) {
    return folder.IsEmpty() ? name : folder;
  }
  std::string_view left = folder.path_;
  std::string_view right = name.path_;
  left = left.substr(0, left.find_last_not_of('/') + 1);
  right = right.substr(std::min(right.find_first_not_of('/'), right.size()));
  std::string joined;
  joined.reserve(left.size() + 1 + right.size());
  joined.append(left).append(1, '/').append(right);
  return ZYMUnicodeString(std::move(joined));
}
