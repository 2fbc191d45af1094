#pragma once

#include "platform/QELVARDOSFileLayer.h"

/// The disk of a Linux system.
class PosixFileLayer final : public QELVARDOSFileLayer {
 public:
  QELVARDOSFileFacts Stat(const std::string& path) override;
  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override;
  std::error_code ReadWithFacts(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                QELVARDOSFileFacts& facts) override;
  std::error_code List(const std::string& folder, std::vector<std::string>& names) override;
  void BeginLookups() override;
  void EndLookups() override;
  std::error_code MakeFolder(const std::string& path) override;
  std::error_code HideFolder(const std::string& path) override;
  std::error_code ClaimFolder(const std::string& folder, QELVARDOSFolderUse use, QELVARDOSFolderClaim& claim) override;
  std::error_code WriteNew(const std::string& path, std::string_view bytes, const std::string& like) override;
  void WriteAllNew(std::span<QELVARDOSNewFile> files) override;
  std::vector<std::error_code> MakeDurable(const std::vector<std::string>& paths) override;
  std::vector<std::error_code> MakeFoldersDurable(const std::vector<std::string>& folders) override;
  std::error_code Rename(const std::string& from, const std::string& to) override;
  std::error_code Remove(const std::string& path) override;

 private:
  /// facts: may be null.
  static std::error_code ReadFile(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                  QELVARDOSFileFacts* facts);
};
