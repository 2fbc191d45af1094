#pragma once

#include <cstdint>
#include <string>
#include <system_error>

#include "component/QELXIVARDOSLRDObject.h"
#include "component/QELXIVARDOSObserver.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMIDOM.h"

/// Reads record files with their nested records.
class RecordFileReader {
 public:
  /// builder parses. largest: in bytes; what is larger counts as damaged. observer: may be null, not owned.
  RecordFileReader(const ZYMIXMLDOMDocumentBuilder_var& builder, std::uint64_t largest, QELXIVARDOSObserver* observer)
      : builder_(builder), largest_(largest), observer_(observer) {}

  /// As QELXIVARDOSLRDXMLHandler::ReadLRDFile.
  HRESULT Read(const ZYMUnicodeString& path, QELXIVARDOSLRDObject_var& record);
  /// The same, but a file that does not exist is no failure: 0, and record is as it was. error: why the file could not
  /// be read, also when there is none; cleared when it was read, even if what it holds is damaged.
  HRESULT ReadIfPresent(const ZYMUnicodeString& path, QELXIVARDOSLRDObject_var& record, std::error_code& error);
  /// Whether such an error leaves open what is there: it is not missing, and what is wrong with it is not known.
  static bool LeavesOpen(const std::error_code& error, const ZYMUnicodeString& path);

  /// Whether it is kept what was known of each file when it was read.
  void KeepFacts() { keepsFacts_ = true; }
  /// Of the file that was read last, if they are kept.
  const QELVARDOSFileFacts& Facts() const { return facts_; }
  /// Of the file that was read last, if it holds a record of a format version that is not known; else empty.
  const ZYMUnicodeString& UnknownVersion() const { return unknownVersion_; }

  /// Tells the observer when bytes, the content of the file at path, are a record of a format version that is not
  /// known.
  void TellOfUnknownFormat(const ZYMUnicodeString& path, const std::string& bytes);

 private:
  std::error_code Load(const ZYMUnicodeString& path, std::string& bytes);
  HRESULT Take(const ZYMUnicodeString& path, std::string bytes, std::error_code& error,
               QELXIVARDOSLRDObject_var& record);
  HRESULT TakeDocument(const ZYMUnicodeString& path, const ZYMIDOMDocument_var& document,
                       QELXIVARDOSLRDObject_var& record);
  void TellOfUnknownFormat(const ZYMUnicodeString& path, const ZYMIDOMElement_var& root);

  ZYMIXMLDOMDocumentBuilder_var builder_;
  std::uint64_t largest_;
  QELXIVARDOSObserver* observer_;
  ZYMUnicodeString unknownVersion_;
  bool keepsFacts_ = false;
  QELVARDOSFileFacts facts_{};
};
