#pragma once

#include <string>

#include "platform/ZYMIDOMLook.h"

namespace lrd {

/// The document in a file. A file that is missing, unreadable or not well-formed ends the command.
ZYMIDOMDocument_var ParseXml(const std::string& file);
ZYMIXMLDOMDocumentBuilder_var MakeDocumentBuilder();

/// Where a command leaves its document.
class XmlOutput {
 public:
  /// file: replaced in one step; "-" is standard output. A file that could not be put there ends
  /// the command now, before it does any work.
  explicit XmlOutput(const std::string& file);
  void Write(const ZYMIDOMDocument_var& document) const;

 private:
  std::string file_;
  bool isDevice_ = false;
};

}  // namespace lrd
