#include "recognition/ReasonDetails.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <tuple>
#include <utility>

#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMNullHandleError.h"
#include "records/FileStamp.h"
#include "records/QELXVARDOSLRDVersionInfo.h"
#include "xmlhandlers/QELXVARDOSLRDXMLHandler.h"

namespace {

using Reason = QELXVARDOSReason;
using Kind = Reason::Kind;
using Doubt = Reason::Doubt;

std::int64_t Now() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

Reason::Time TimeOf(const QELVARDOSFileFacts& file) { return {file.modified, file.nanoseconds}; }

}  // namespace

// Nobody is told twice of an unknown format.
ReasonDetails::ReasonDetails(const QELIVARDOSGlobalConfigObject_var& config, QELXIVARDOSObserver& observer, int objects)
    : reader_(ZYMMakeComponent<QELXVARDOSLRDXMLHandler>(config)->Reader()), now_(Now()), observer_(observer) {
  owners_.reserve(static_cast<std::size_t>(objects));
}

void ReasonDetails::AddTo(QELXVARDOSReason& reason, const Decided& decided) {
  details_ = nullptr;
  if (reason.kind == Kind::NoSuchEntry) {
    std::vector<ZYMUnicodeString> alike = decided.record->IdentifiersLike(reason.identifier);
    if (!alike.empty()) {
      New().nearMisses = std::move(alike);
    }
  }
  if (reason.kind == Kind::StampsAgree) {
    CompareWithinSecond(decided.file, decided.recordFile);
  }
  CompareTimes(reason);
  if (decided.isFound && !decided.isInComposition && decided.record->Get()->GetPhysicalId().IsEmpty()) {
    Add(Doubt::RecordWithoutPhysicalId);
  }
  if (decided.isFound && decided.isInComposition) {
    CompareFormats(reason, decided);
  }
  NoteOwner(reason, decided);
  reason.details = std::move(details_);
}

ReasonDetails::Details& ReasonDetails::New() {
  if (details_ == nullptr) {
    details_ = std::make_shared<Details>();
  }
  return *details_;
}

/// Stamps are whole seconds, so what happens within one does not show in them.
void ReasonDetails::CompareWithinSecond(const QELVARDOSFileFacts& file, const QELVARDOSFileFacts& recordFile) {
  if (!recordFile.Exists() || recordFile.modified != file.modified) {
    return;
  }
  // Where both times are whole seconds, it is the file system that keeps no others.
  const bool cannotTell = !file.nanoseconds || (*file.nanoseconds == 0 && recordFile.nanoseconds.value_or(0) == 0);
  if (cannotTell || *file.nanoseconds != 0) {
    Add(cannotTell ? Doubt::MayHaveChangedWithinSecond : Doubt::ChangedWithinSecond);
    New().fileTime = TimeOf(file);
    New().recordFileTime = TimeOf(recordFile);
  }
}

void ReasonDetails::CompareTimes(const QELXVARDOSReason& reason) {
  const std::optional<std::int64_t> recordStamp = SecondsOf(reason.recordStamp);
  if (IsToCome(reason.fileStamp) || IsToCome(recordStamp)) {
    Add(Doubt::TimeInFuture);
  }
  if (reason.fileStamp && recordStamp && *reason.fileStamp < *recordStamp) {
    Add(Doubt::OlderThanRecord);
  }
}

/// The clock is looked at again for times that were not past at the last look.
bool ReasonDetails::IsToCome(const std::optional<std::int64_t>& time) {
  return time && *time > now_ && *time > (now_ = Now());
}

/// An own record is only looked at where it can be newer; one that cannot be read says nothing.
void ReasonDetails::CompareFormats(const QELXVARDOSReason& reason, const Decided& decided) {
  if (!QELXVARDOSLRDVersionInfo::IsOlder(reason.formatVersion, QELXVARDOSLRDVersionInfo::NewestVersion())) {
    return;
  }
  const std::string lastError = QELVARDOSSystemUtils::LastError();
  QELXIVARDOSLRDObject_var own;
  std::error_code error;
  try {
    reader_.ReadIfPresent(decided.ownRecordFile, own, error);
  } catch (const ZYMNullHandleError&) {
    own = nullptr;
  }
  QELVARDOSSystemUtils::SetLastError(lastError);
  const ZYMUnicodeString version = own ? own->GetVersion() : ZYMUnicodeString();
  if (own && QELXVARDOSLRDVersionInfo::IsOlder(reason.formatVersion, version)) {
    Add(Doubt::EntryOfOlderFormat);
    New().ownFormatVersion = version;
  }
}

/// Only of files that are there: objects without a record share nothing yet.
void ReasonDetails::NoteOwner(const QELXVARDOSReason& reason, const Decided& decided) {
  const bool isThere = decided.record != nullptr || reason.kind == Kind::NoKnownRecord ||
                       reason.kind == Kind::UnknownFormat || reason.kind == Kind::RecordDamaged;
  if (isThere && !decided.isInComposition) {
    owners_.push_back({ZYMKeyedHash()(decided.ownRecordFile.View()), decided.number});
  }
}

void ReasonDetails::TellOfSharing() {
  std::sort(owners_.begin(), owners_.end(), [](const Owner& a, const Owner& b) {
    return std::tie(a.recordFile, a.number) < std::tie(b.recordFile, b.number);
  });
  const Owner* first = nullptr;
  for (const Owner& owner : owners_) {
    if (first != nullptr && first->recordFile == owner.recordFile) {
      observer_.SharedRecordFile(first->number, owner.number);
    } else {
      first = &owner;
    }
  }
}
