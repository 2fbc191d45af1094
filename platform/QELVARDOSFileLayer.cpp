#include "platform/QELVARDOSFileLayer.h"

#include <algorithm>
#include <utility>

namespace {

/// Set by the host, or by a test, before the module works; not guarded against a change while another thread uses it.
QELVARDOSFileLayer* layerInUse = nullptr;

/// No file system keeps a longer name; a path as a whole may be too long and still be there.
bool HasImpossibleName(std::string_view path) noexcept {
  constexpr std::size_t LongestName = 255;
  while (path.size() > LongestName) {
    const std::size_t length = std::min(path.find('/'), path.size());
    if (length > LongestName) {
      return true;
    }
    path.remove_prefix(length + 1);
  }
  return false;
}

}  // namespace

QELVARDOSFileLayer::~QELVARDOSFileLayer() = default;

bool QELVARDOSFileLayer::MeansMissing(const std::error_code& error, std::string_view path) noexcept {
  return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory ||
         (error == std::errc::filename_too_long && HasImpossibleName(path));
}

std::error_code QELVARDOSFileLayer::ReadWithFacts(const std::string& path, std::string& bytes, std::uint64_t atMost,
                                                  QELVARDOSFileFacts& facts) {
  const std::error_code error = Read(path, bytes, atMost);
  if (!error) {
    facts = Stat(path);
  }
  return error;
}

void QELVARDOSFileLayer::BeginLookups() {}

void QELVARDOSFileLayer::EndLookups() {}

std::error_code QELVARDOSFileLayer::ClaimFolder(const std::string& /*folder*/, QELVARDOSFolderUse /*use*/,
                                                QELVARDOSFolderClaim& /*claim*/) {
  return std::make_error_code(std::errc::not_supported);
}

void QELVARDOSFileLayer::Replaced(const std::string& /*path*/, QELVARDOSReplacement /*outcome*/,
                                  const std::error_code& /*error*/) {}

void QELVARDOSFileLayer::WriteAllNew(std::span<QELVARDOSNewFile> files) {
  for (QELVARDOSNewFile& file : files) {
    file.error = WriteNew(file.path, file.bytes, file.like);
  }
}

void QELVARDOSFileLayer::RenameAll(std::span<QELVARDOSFileRenaming> files) {
  for (QELVARDOSFileRenaming& file : files) {
    file.error = Rename(file.from, file.to);
  }
}

bool QELVARDOSFileLayer::WantsNotice() const { return false; }

void QELVARDOSFileLayer::LookAhead(std::vector<QELVARDOSFileLook>&& /*looks*/) {}

QELVARDOSFileLayer& QELVARDOSFileLayer::Current() { return layerInUse == nullptr ? System() : *layerInUse; }

QELVARDOSFileLayer* QELVARDOSFileLayer::Use(QELVARDOSFileLayer* layer) { return std::exchange(layerInUse, layer); }
