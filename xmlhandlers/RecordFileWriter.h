#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "component/QELXIVARDOSLRDObject_varList.h"
#include "platform/QELVARDOSFileTransaction.h"
#include "platform/ZYMIDOM.h"
#include "xmlhandlers/RecordFileReader.h"

/// From a record folder that could not be made to the reason.
using RefusedFolders = std::map<std::string, std::string>;

/// Brings record files up to date, all in one transaction. What cannot be written is traced, told to the file layer and
/// does not stop the others.
class RecordFileWriter {
 public:
  /// largest: in bytes; nothing larger is written. observer: may be null, not owned. refused: no record is written
  /// there; must outlive the writer.
  RecordFileWriter(const ZYMIXMLDOMDocumentBuilder_var& builder, std::uint64_t largest, QELXIVARDOSObserver* observer,
                   const RefusedFolders& refused);

  /// E_ABORT when the observer ends it: then nothing is written, and the files go back to what they were with the
  /// writer. A record that raises ends it too, but those before it are written.
  HRESULT Write(const QELXIVARDOSLRDObject_varList& records);

 private:
  HRESULT Stage(const QELXIVARDOSLRDObject_varList& records);
  void Cancel(const QELXIVARDOSLRDObject_varList& records, int from);
  void Write(const QELXIVARDOSLRDObject_var& record);
  void Commit();
  bool HasFolder(const QELXIVARDOSLRDObject_var& record, const ZYMUnicodeString& path);
  void WriteElement(const ZYMIDOMElement_var& element, const ZYMUnicodeString& path);
  bool Serialize(const ZYMIDOMElement_var& element, const ZYMUnicodeString& path);
  void Refuse(const ZYMUnicodeString& path, std::errc error, const std::string& reason = {});

  ZYMIXMLDOMDocumentBuilder_var builder_;
  std::uint64_t largest_;
  QELXIVARDOSObserver* observer_;
  const RefusedFolders& refused_;
  /// Looks at what is about to be replaced; null when nobody wants to know.
  std::optional<RecordFileReader> replaced_;
  QELVARDOSFileTransaction files_;
  std::string text_;
};
