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

void Append(std::string& path, std::string_view part) {
  if (path.empty() || part.empty()) {
    path += part;
    return;
  }
  while (path.ends_with('/')) {
    path.pop_back();
  }
  path += '/';
  path += part.substr(std::min(part.find_first_not_of('/'), part.size()));
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

ZYMUnicodeString QELVARDOSPath::GetExtension() const { return ExtensionOf(path_); }

std::string_view QELVARDOSPath::ExtensionOf(std::string_view path) noexcept {
  const std::string_view name = FileName(path);
  return name.substr(std::min(ExtensionDot(name) + 1, name.size()));
}

QELVARDOSPath QELVARDOSPath::Join(std::initializer_list<std::string_view> parts) {
  std::size_t most = parts.size();
  for (const std::string_view part : parts) {
    most += part.size();
  }
  std::string joined;
  joined.reserve(most);
  for (const std::string_view part : parts) {
    Append(joined, part);
  }
  return ZYMUnicodeString(std::move(joined));
}

QELVARDOSPath operator/(const QELVARDOSPath& folder, const QELVARDOSPath& name) {
  return QELVARDOSPath::Join({folder.path_, name.path_});
}
