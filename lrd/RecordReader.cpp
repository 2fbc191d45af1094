#include "lrd/RecordReader.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "lrd/XmlFile.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMNullHandleError.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

namespace lrd {

namespace {

ZYMIDOMDocument_var TryParse(const std::string& file) {
  ZYMIDOMDocument_var document;
  MakeDocumentBuilder()->Parse(file, {}, {}, document);
  return document;
}

std::string WithoutFile(const std::string& message, const std::string& file) {
  std::string reason = message.starts_with(file + ":") ? message.substr(file.size() + 1) : message;
  return reason.substr(std::min(reason.find_first_not_of(' '), reason.size()));
}

RecordReading ExplainFailure(const std::string& file) {
  std::string bytes;
  if (const std::error_code error = QELVARDOSFileLayer::Current().Read(file, bytes, QELVARDOSFileLayer::AnySize)) {
    return {nullptr, RecordFault::Unreadable, error.message()};
  }
  if (TryParse(file).IsNull()) {
    return {nullptr, RecordFault::NotWellFormed, WithoutFile(QELVARDOSSystemUtils::LastError(), file)};
  }
  return {nullptr, RecordFault::Unreadable, "its entries are nested too deep"};
}

/// The name of the first element that an entry of this kind must have and none of them may lack.
std::string MissingIn(const ZYMIDOMNodeList_var& entries, std::span<const char* const> required) {
  int length = 0;
  entries->getLength(length);
  for (int i = 0; i < length; ++i) {
    ZYMIDOMNode_var entry;
    entries->item(i, entry);
    for (const char* name : required) {
      if (FirstBelow(entry, name).IsNull()) {
        return name;
      }
    }
  }
  return "";
}

RecordReading ExplainIncompleteness(const std::string& file, const char* raised) {
  static constexpr std::array Required = {"phid", "objectChangeStamp", "ceStamp", "hashcode"};
  if (const ZYMIDOMDocument_var document = TryParse(file)) {
    for (const char* kind : {"object", "structure", "composition", "rel"}) {
      ZYMIDOMNodeList_var entries;
      document->getElementsByTagName(kind, entries);
      const std::size_t count = std::string_view(kind) == "rel" ? 1 : Required.size();
      if (const std::string name = MissingIn(entries, std::span(Required).first(count)); !name.empty()) {
        return {nullptr, RecordFault::Incomplete, "<" + std::string(kind) + "> lacks the element <" + name + ">"};
      }
    }
  }
  return {nullptr, RecordFault::Incomplete, raised};
}

RecordReading ExplainAbsence(const std::string& file) {
  const ZYMIDOMDocument_var document = TryParse(file);
  const ZYMIDOMElement_var root = document.IsNull() ? nullptr : RootOf(document);
  const std::string version = root.IsNull() ? "" : AttributeOf(root, "version");
  if (!version.empty() && NameOf(root) == "object") {
    return {nullptr, RecordFault::UnknownVersion, "unknown format version \"" + version + "\""};
  }
  return {nullptr, RecordFault::NoRecord, "holds no record"};
}

}  // namespace

RecordReader::RecordReader() { QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(nullptr, handler_); }

RecordReading RecordReader::Read(const std::string& file) const {
  try {
    QELXIVARDOSLRDObject_var record;
    if (FAILED(handler_->ReadLRDFile(file, record))) {
      return ExplainFailure(file);
    }
    return record.IsNull() ? ExplainAbsence(file) : RecordReading{record, RecordFault::None, ""};
  } catch (const ZYMNullHandleError& error) {
    return ExplainIncompleteness(file, error.what());
  }
}

}  // namespace lrd
