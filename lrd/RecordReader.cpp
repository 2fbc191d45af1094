#include "lrd/RecordReader.h"

#include <algorithm>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMNullHandleError.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

namespace lrd {

namespace {

/// What the module saw when it read a file.
class Look : public QELVARDOSFileLayerFilter {
 public:
  Look() : QELVARDOSFileLayerFilter(Current()) {}

  std::error_code Read(const std::string& path, std::string& bytes, std::uint64_t atMost) override {
    return error = Next().Read(path, bytes, atMost);
  }

  std::error_code error;
};

RecordReading Fault(RecordFault fault, const std::string& reason) { return {nullptr, fault, reason}; }

RecordReading ExplainFailure(const std::string& file, const Look& look) {
  if (look.error) {
    const bool isMissing = QELVARDOSFileLayer::MeansMissing(look.error, file);
    return Fault(isMissing ? RecordFault::Missing : RecordFault::Unreadable, look.error.message());
  }
  const std::string reason = WithoutFile(QELVARDOSSystemUtils::LastError(), file);
  const bool hasPlace = !reason.empty() && reason.front() >= '0' && reason.front() <= '9';
  return Fault(hasPlace ? RecordFault::NotWellFormed : RecordFault::Unreadable, reason);
}

}  // namespace

std::string WithoutFile(const std::string& message, const std::string& file) {
  const std::string reason = message.starts_with(file + ":") ? message.substr(file.size() + 1) : message;
  return reason.substr(std::min(reason.find_first_not_of(' '), reason.size()));
}

void RecordsAhead::Before(std::size_t record) {
  notices_.Before(static_cast<int>(record), [this](int ahead, QELVARDOSFileNotices::Looks& looks) {
    const auto number = static_cast<std::size_t>(ahead);
    if (number < count_) {
      looks.push_back({fileOf_(number), QELVARDOSFileLook::Kind::Content});
    }
    return number < count_;
  });
}

RecordReader::RecordReader() {
  QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(nullptr, handler_);
  handler_->SetObserver(this);
}

void RecordReader::UnknownFormat(const ZYMUnicodeString& /*recordFile*/, const ZYMUnicodeString& version) {
  unknownVersion_ = version.Str();
}

RecordReading RecordReader::Read(const std::string& file) {
  unknownVersion_.clear();
  QELVARDOSSystemUtils::SetLastError("");
  Look look;
  const QELVARDOSUseFileLayer use(look);
  try {
    QELXIVARDOSLRDObject_var record;
    if (FAILED(handler_->ReadLRDFile(file, record))) {
      return ExplainFailure(file, look);
    }
    if (record) {
      return {record, RecordFault::None, ""};
    }
  } catch (const ZYMNullHandleError&) {
    return Fault(RecordFault::Incomplete, WithoutFile(QELVARDOSSystemUtils::LastError(), file));
  }
  return unknownVersion_.empty()
             ? Fault(RecordFault::NoRecord, "holds no record")
             : Fault(RecordFault::UnknownVersion, "unknown format version \"" + unknownVersion_ + "\"");
}

}  // namespace lrd
