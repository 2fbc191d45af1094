#include "lrd/FileWatch.h"

#include "platform/QELVARDOSSystemUtils.h"

namespace lrd {

std::error_code FileWatch::Read(const std::string& path, std::string& bytes, std::uint64_t atMost) {
  lastRead_ = path;
  return QELVARDOSFileLayerFilter::Read(path, bytes, atMost);
}

std::error_code FileWatch::ReadWithFacts(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                         QELVARDOSFileFacts& facts) {
  lastRead_ = path;
  return Next().ReadWithFacts(path, bytes, atMost, facts);
}

void FileWatch::Replaced(const std::string& path, QELVARDOSReplacement outcome, const std::error_code& error) {
  if (outcome == QELVARDOSReplacement::Failed) {
    const std::string& reason = QELVARDOSSystemUtils::LastError();
    failed_.emplace(path, reason.starts_with(path + ": ") ? reason.substr(path.size() + 2) : error.message());
  } else {
    settled_.insert_or_assign(path, outcome);
  }
  QELVARDOSFileLayerFilter::Replaced(path, outcome, error);
}

}  // namespace lrd
