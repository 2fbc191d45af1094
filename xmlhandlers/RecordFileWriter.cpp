#include "xmlhandlers/RecordFileWriter.h"

#include <new>

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/QELVARDOSFileError.h"
#include "platform/QELVARDOSFileNotices.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "records/HostLeave.h"
#include "xmlhandlers/RecordFolder.h"

QELXVARDOS_TRACED_HERE;

namespace {

const ZYMUnicodeStringList WriterOptions{"ZYMEncoding"};
const ZYMUnicodeStringList WriterValues{"UTF-8"};

/// The element of a record, and why there is none.
struct Format {
  explicit Format(const QELXIVARDOSLRDObject_var& record) {
    const std::string before = QELVARDOSSystemUtils::LastError();
    QELVARDOSSystemUtils::SetLastError({});
    status = record->GetXMLFormat(QELXIVARDOSLRDObject_varList(), element);
    if (FAILED(status)) {
      reason = QELVARDOSSystemUtils::LastError();
    }
    QELVARDOSSystemUtils::SetLastError(before);
  }

  HRESULT status = S_OK;
  std::string reason;
  ZYMIDOMElement_var element;
};

/// Whether two records have the same declaration and the same root, and with that the same format.
bool BeginsLike(std::string_view a, std::string_view b) {
  const std::size_t declaration = b.find('>');
  const std::size_t root = declaration == std::string_view::npos ? declaration : b.find('>', declaration + 1);
  return root != std::string_view::npos && a.substr(0, root + 1) == b.substr(0, root + 1);
}

/// A record is compared with what its file holds, unless nothing may be written there.
bool AddLook(const QELXIVARDOSLRDObject_varList& records, int at, QELVARDOSFileNotices::Looks& looks) {
  if (at >= records.Size()) {
    return false;
  }
  if (const QELXIVARDOSLRDObject_var& record = records[at + 1]; record) {
    if (const ZYMUnicodeString path = record->GetLRDFilePath(); RefusalOf(path) == QELVARDOSNameRules::Refusal::None) {
      looks.push_back({path.Str(), QELVARDOSFileLook::Kind::Content});
    }
  }
  return true;
}

}  // namespace

RecordFileWriter::RecordFileWriter(const ZYMIXMLDOMDocumentBuilder_var& builder, std::uint64_t largest,
                                   QELXIVARDOSObserver* observer, const RefusedFolders& refused)
    : builder_(builder), largest_(largest), observer_(observer), refused_(refused) {
  if (observer != nullptr) {
    replaced_.emplace(builder, largest, observer);
  }
}

HRESULT RecordFileWriter::Write(const QELXIVARDOSLRDObject_varList& records) {
  HRESULT status = S_OK;
  try {
    status = Stage(records);
  } catch (...) {
    // The records before the one that raised are written, as if each had been written in its turn.
    Commit();
    throw;
  }
  if (SUCCEEDED(status)) {
    Commit();
  }
  return status;
}

HRESULT RecordFileWriter::Stage(const QELXIVARDOSLRDObject_varList& records) {
  const HostLeave leave(observer_, HostLeave::Stage::Recording, records.Size());
  QELVARDOSFileNotices notices;
  int done = 0;
  for (const QELXIVARDOSLRDObject_var& record : records) {
    notices.Before(done, [&](int ahead, QELVARDOSFileNotices::Looks& looks) { return AddLook(records, ahead, looks); });
    Write(record);
    if (const HRESULT status = leave.Ask(++done); FAILED(status)) {
      Cancel(records, done);
      return status;
    }
  }
  return S_OK;
}

/// Those that are staged are told of when they are abandoned.
void RecordFileWriter::Cancel(const QELXIVARDOSLRDObject_varList& records, int from) {
  for (int at = from + 1; at <= records.Size(); ++at) {
    if (const QELXIVARDOSLRDObject_var& record = records[at]; record) {
      Refuse(record->GetLRDFilePath(), std::errc::operation_canceled);
    }
  }
}

void RecordFileWriter::Write(const QELXIVARDOSLRDObject_var& record) {
  const ZYMUnicodeString path = record->GetLRDFilePath();
  try {
    const Format format(record);
    Trace.Write("Wrinting into file : ", path);
    if (const auto refusal = RefusalOf(path); refusal != QELVARDOSNameRules::Refusal::None) {
      Trace.Write("Refused to leave the record folder : ", path);
      files_.Refuse(path.Str(), QELVARDOSFileError::LeavesFolder, std::string(QELVARDOSNameRules::Reason(refusal)));
    } else if (FAILED(format.status)) {
      Refuse(path, std::errc::io_error, format.reason);
    } else if (format.element && HasFolder(record, path)) {
      WriteElement(format.element, path);
    }
  } catch (const std::bad_alloc&) {
    Refuse(path, std::errc::not_enough_memory);
  }
}

/// Writing where no folder could be made would say no more than that there is none.
bool RecordFileWriter::HasFolder(const QELXIVARDOSLRDObject_var& record, const ZYMUnicodeString& path) {
  const auto refused = refused_.empty() ? refused_.end() : refused_.find(record->GetLRDFolderPath().Str());
  if (refused == refused_.end()) {
    return true;
  }
  Refuse(path, std::errc::no_such_file_or_directory, "its folder could not be made: " + refused->second);
  return false;
}

void RecordFileWriter::WriteElement(const ZYMIDOMElement_var& element, const ZYMUnicodeString& path) {
  if (!Serialize(element, path)) {
    return;
  }
  if (files_.Replace(path.Str(), text_)) {
    Trace.Write("Failed to write file : ", QELVARDOSSystemUtils::LastError());
  } else if (replaced_ && !files_.Present().empty() && !BeginsLike(files_.Present(), text_)) {
    replaced_->TellOfUnknownFormat(path, files_.Present());
  }
}

/// The text of the element. False when there is none that may be written, or when the builder wrote it by itself, as
/// one does that cannot tell its text.
bool RecordFileWriter::Serialize(const ZYMIDOMElement_var& element, const ZYMUnicodeString& path) {
  text_.clear();
  bool fits = true;
  const HRESULT status = builder_->Serialize(element, [&](std::string_view piece) {
    fits = text_.size() + piece.size() <= largest_;
    text_.append(fits ? piece : std::string_view());
    return fits;
  });
  if (!fits) {
    Refuse(path, std::errc::file_too_large);
  } else if (status == E_NOTIMPL) {
    if (FAILED(builder_->Write(element, path, WriterOptions, WriterValues))) {
      const std::string said = QELVARDOSSystemUtils::LastError();
      const std::string prefix = path.Str() + ": ";
      Refuse(path, std::errc::invalid_argument, said.starts_with(prefix) ? said.substr(prefix.size()) : said);
    }
    return false;
  } else if (FAILED(status)) {
    Refuse(path, std::errc::invalid_argument, QELVARDOSSystemUtils::LastError());
  }
  return fits && SUCCEEDED(status);
}

void RecordFileWriter::Refuse(const ZYMUnicodeString& path, std::errc error, const std::string& reason) {
  files_.Refuse(path.Str(), std::make_error_code(error), reason);
  Trace.Write("Failed to write file : ", QELVARDOSSystemUtils::LastError());
}

void RecordFileWriter::Commit() {
  for (const QELVARDOSFileTransaction::Failure& failure : files_.Commit()) {
    Trace.Write("Failed to write file : ", failure.path, " : ", failure.error.message());
  }
}
