#pragma once

#include <map>
#include <string>

#include "platform/QELVARDOSFileLayer.h"

namespace lrd {

/// Remembers what the module did on a file layer behind it.
class FileWatch : public QELVARDOSFileLayerFilter {
 public:
  explicit FileWatch(QELVARDOSFileLayer& watched = QELVARDOSFileLayer::Current()) : QELVARDOSFileLayerFilter(watched) {}

  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override;
  void WriteAllNew(std::span<QELVARDOSNewFile> files) override { Next().WriteAllNew(files); }
  void RenameAll(std::span<QELVARDOSFileRenaming> files) override { Next().RenameAll(files); }
  std::error_code ReadWithFacts(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                QELVARDOSFileFacts& facts) override;
  void Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error) override;

  /// The file that was read last; empty before the first.
  const std::string& LastRead() const noexcept { return lastRead_; }
  /// The files that hold what they were to hold: Written or AlreadyTheSame.
  const std::map<std::string, QELVARDOSReplacement>& Settled() const noexcept { return settled_; }
  /// The files that could not be replaced, with the reason.
  const std::map<std::string, std::string>& Failed() const noexcept { return failed_; }

 private:
  std::string lastRead_;
  std::map<std::string, QELVARDOSReplacement> settled_;
  std::map<std::string, std::string> failed_;
};

}  // namespace lrd
