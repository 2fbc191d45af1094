#include "platform/QELVARDOSPathUtils.h"

#include <system_error>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace {

QELVARDOSFileFacts Facts(const QELVARDOSPath& path) {
  return QELVARDOSFileLayer::Current().Stat(path.ToString().Str());
}

/// A folder that is there already, perhaps made by another process just now, is as good as a new one.
std::error_code MakeFolder(const QELVARDOSPath& path) {
  const std::error_code error = QELVARDOSFileLayer::Current().MakeFolder(path.ToString().Str());
  return error && QELVARDOSPathUtils::IsDir(path) ? std::error_code() : error;
}

bool HasParent(const QELVARDOSPath& path) {
  const QELVARDOSPath parent = path.GetDirName();
  return !parent.IsEmpty() && !(parent == path);
}

/// Climbs only while the parent is what is missing, so a path that is too long fails at once.
std::error_code MakeWithParents(QELVARDOSPath path) {
  std::vector<QELVARDOSPath> waiting;
  std::error_code error = MakeFolder(path);
  while (error == std::errc::no_such_file_or_directory && HasParent(path)) {
    waiting.push_back(path);
    path = path.GetDirName();
    error = MakeFolder(path);
  }
  for (; !error && !waiting.empty(); waiting.pop_back()) {
    error = MakeFolder(waiting.back());
  }
  return error;
}

HRESULT Status(const QELVARDOSPath& path, const std::error_code& error) {
  if (!error) {
    return S_OK;
  }
  QELVARDOSSystemUtils::SetLastError(path.ToString().Str() + ": " + error.message());
  return E_FAIL;
}

}  // namespace

bool QELVARDOSPathUtils::Exists(const QELVARDOSPath& path) { return Facts(path).Exists(); }

bool QELVARDOSPathUtils::IsDir(const QELVARDOSPath& path) {
  return Facts(path).kind == QELVARDOSFileFacts::Kind::Folder;
}

HRESULT QELVARDOSPathUtils::MakeDirs(const QELVARDOSPath& path) { return Status(path, MakeWithParents(path)); }

HRESULT QELVARDOSPathUtils::HideFolder(const QELVARDOSPath& path) {
  return Status(path, QELVARDOSFileLayer::Current().HideFolder(path.ToString().Str()));
}

std::int64_t QELVARDOSPathUtils::GetModificationTime(const QELVARDOSPath& path) { return Facts(path).modified; }
