#pragma once

#include <string>
#include <vector>

#include "platform/ZYMIDOM.h"

namespace lrd {

/// The document in a file. A file that is missing, unreadable or not well-formed ends the command.
ZYMIDOMDocument_var ParseXml(const std::string& file);
ZYMIXMLDOMDocumentBuilder_var MakeDocumentBuilder();

ZYMIDOMElement_var RootOf(const ZYMIDOMDocument_var& document);
std::string NameOf(const ZYMIDOMElement_var& element);
std::string AttributeOf(const ZYMIDOMElement_var& element, const char* name);
bool HasAttribute(const ZYMIDOMElement_var& element, const char* name);
std::vector<ZYMIDOMElement_var> ChildElementsOf(const ZYMIDOMElement_var& element);
/// The first element of that name below the element, or null.
ZYMIDOMElement_var FirstBelow(const ZYMIDOMElement_var& element, const char* name);
/// The names of the element's attributes as they stand in its start tag.
std::vector<std::string> AttributeNamesOf(const ZYMIDOMElement_var& element);

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
