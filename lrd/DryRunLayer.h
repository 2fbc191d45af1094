#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/QELVARDOSFileLayer.h"

namespace lrd {

/// Answers every change as the disk would, and makes it in memory alone: files and folders made here are seen by
/// whoever looks through this layer, and gone with it. Paths are taken as text, but for slashes at their end.
class DryRunLayer : public QELVARDOSFileLayerFilter {
 public:
  using QELVARDOSFileLayerFilter::QELVARDOSFileLayerFilter;

  QELVARDOSFileFacts Stat(const std::string& path) override;
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override;
  std::error_code List(const std::string& folder, std::vector<std::string>& names) override;
  std::error_code MakeFolder(const std::string& path) override;
  std::error_code HideFolder(const std::string& path) override;
  std::error_code ClaimFolder(const std::string& folder, QELVARDOSFolderUse use, QELVARDOSFolderClaim& claim) override;
  std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) override;
  std::vector<std::error_code> MakeDurable(const std::vector<std::string>& paths) override;
  std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) override;
  std::error_code Rename(const std::string& from, const std::string& to) override;
  std::error_code Remove(const std::string& path) override;

 private:
  /// What differs from the disk at one path. Of kind Missing: it is on the disk and would be there no more.
  struct Change {
    QELVARDOSFileFacts::Kind kind;
    std::string bytes;
  };
  using Changes = std::map<std::string, Change, std::less<>>;

  /// Null where all is as on the disk.
  const Change* Find(std::string_view path) const;
  void Put(std::string_view path, Change change);
  std::error_code RefusalInFolderOf(const std::string& path);

  // By folder, so that listing one does not look at all others, then by the name in it.
  std::map<std::string, Changes, std::less<>> changes_;
};

}  // namespace lrd
