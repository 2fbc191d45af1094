#include "platform/QELVARDOSPathUtils.h"

#include <algorithm>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace {

QELVARDOSFileFacts Facts(const QELVARDOSPath& path) {
  return QELVARDOSFileLayer::Current().Stat(path.ToString().Str());
}

/// A folder that is there already, perhaps made by another process just now, is as good as a new one.
std::error_code MakeFolder(const QELVARDOSPath& path, std::vector<QELVARDOSPath>& made) {
  const std::error_code error = QELVARDOSFileLayer::Current().MakeFolder(path.ToString().Str());
  if (!error) {
    made.push_back(path);
  }
  return error && QELVARDOSPathUtils::IsDir(path) ? std::error_code() : error;
}

bool HasParent(const QELVARDOSPath& path) {
  const QELVARDOSPath parent = path.GetDirName();
  return !parent.IsEmpty() && !(parent == path);
}

/// Climbs only while the parent is what is missing, so a path that is too long fails at once.
std::error_code MakeWithParents(QELVARDOSPath path, std::vector<QELVARDOSPath>& made) {
  std::vector<QELVARDOSPath> waiting;
  std::error_code error = MakeFolder(path, made);
  while (error == std::errc::no_such_file_or_directory && HasParent(path)) {
    waiting.push_back(path);
    path = path.GetDirName();
    error = MakeFolder(path, made);
  }
  for (; !error && !waiting.empty(); waiting.pop_back()) {
    error = MakeFolder(waiting.back(), made);
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

std::string ParentOf(const QELVARDOSPath& folder) { return folder.GetDirName().ToString().Str(); }

/// Each once: many folders may stand in one.
std::vector<std::string> ParentsOf(const std::vector<QELVARDOSPath>& folders) {
  std::vector<std::string> parents(folders.size());
  std::transform(folders.begin(), folders.end(), parents.begin(), ParentOf);
  std::sort(parents.begin(), parents.end());
  parents.erase(std::unique(parents.begin(), parents.end()), parents.end());
  return parents;
}

}  // namespace

bool QELVARDOSPathUtils::Exists(const QELVARDOSPath& path) { return Facts(path).Exists(); }

bool QELVARDOSPathUtils::IsDir(const QELVARDOSPath& path) {
  return Facts(path).kind == QELVARDOSFileFacts::Kind::Folder;
}

HRESULT QELVARDOSPathUtils::MakeDirs(const QELVARDOSPath& path) {
  std::vector<QELVARDOSPath> made;
  const HRESULT status = MakeDirs(path, made);
  const bool isKept = KeepDirs(made).empty();
  return FAILED(status) || isKept ? status : E_FAIL;
}

HRESULT QELVARDOSPathUtils::MakeDirs(const QELVARDOSPath& path, std::vector<QELVARDOSPath>& made) {
  return Status(path, MakeWithParents(path, made));
}

std::vector<std::pair<QELVARDOSPath, std::error_code>> QELVARDOSPathUtils::KeepDirs(
    const std::vector<QELVARDOSPath>& made) {
  std::vector<std::pair<QELVARDOSPath, std::error_code>> undone;
  if (made.empty()) {
    return undone;
  }
  const std::vector<std::string> parents = ParentsOf(made);
  QELVARDOSFileLayer& layer = QELVARDOSFileLayer::Current();
  const std::vector<std::error_code> errors = layer.MakeFoldersDurable(parents);
  // What stands in a folder that may be lost may be lost with it.
  std::map<std::string, std::error_code> lost;
  for (std::size_t at = 0; at < parents.size(); ++at) {
    if (errors[at]) {
      lost.emplace(parents[at], errors[at]);
    }
  }
  for (const QELVARDOSPath& folder : made) {
    if (const auto place = lost.find(ParentOf(folder)); place != lost.end()) {
      const std::error_code error = place->second;
      Status(folder, error);
      undone.emplace_back(folder, error);
      lost.emplace(folder.ToString().Str(), error);
    }
  }
  std::for_each(undone.rbegin(), undone.rend(),
                [&layer](const auto& folder) { layer.Remove(folder.first.ToString().Str()); });
  return undone;
}

HRESULT QELVARDOSPathUtils::HideFolder(const QELVARDOSPath& path) {
  return Status(path, QELVARDOSFileLayer::Current().HideFolder(path.ToString().Str()));
}

std::int64_t QELVARDOSPathUtils::GetModificationTime(const QELVARDOSPath& path) { return Facts(path).modified; }
