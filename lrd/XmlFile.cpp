#include "lrd/XmlFile.h"

#include <filesystem>
#include <functional>
#include <string_view>
#include <system_error>

#include "lrd/Console.h"
#include "lrd/Endings.h"
#include "lrd/HostError.h"
#include "lrd/HostSystem.h"
#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSPath.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace lrd {

namespace {

void Serialize(const ZYMIDOMNode_var& node, const std::function<bool(std::string_view)>& sink) {
  bool stopped = false;
  const HRESULT status = MakeDocumentBuilder()->Serialize(node, [&](std::string_view text) {
    stopped = !sink(text);
    return !stopped;
  });
  if (FAILED(status) && !stopped) {
    throw HostError(ModuleRefused, "writing the document: " + QELVARDOSSystemUtils::LastError());
  }
}

std::string TextOf(const ZYMIDOMNode_var& node) {
  std::string text;
  Serialize(node, [&text](std::string_view piece) {
    text += piece;
    return true;
  });
  return text;
}

/// A link to a file stays a link: the file is replaced.
std::string BehindLinks(const std::string& file) {
  std::error_code error;
  std::error_code none;
  const std::filesystem::path resolved = std::filesystem::canonical(file, error);
  if (!error) {
    return resolved.string();
  }
  if (!QELVARDOSFileLayer::MeansMissing(error, file) && std::filesystem::is_symlink(file, none)) {
    throw HostError(UnusableInput, file + ": " + error.message());
  }
  return file;
}

void RefuseWhereNoFileCanBe(const std::string& file) {
  const std::string folder = QELVARDOSPath(file).GetDirName().ToString().Str();
  const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(folder.empty() ? "." : folder);
  if (facts.error) {
    throw HostError(UnusableInput, file + ": " + facts.error.message());
  }
  if (facts.kind != QELVARDOSFileFacts::Kind::Folder) {
    throw HostError(UnusableInput, file + ": there is no folder " + folder);
  }
  if (const std::error_code refusal = WouldRefuseFileIn(folder)) {
    throw HostError(UnusableInput, file + ": " + refusal.message());
  }
}

}  // namespace

ZYMIXMLDOMDocumentBuilder_var MakeDocumentBuilder() {
  ZYMIXMLDOMDocumentBuilder_var builder;
  CreateZYMIXMLDOMDocumentBuilder(builder);
  return builder;
}

ZYMIDOMDocument_var ParseXml(const std::string& file) {
  ZYMIDOMDocument_var document;
  if (FAILED(MakeDocumentBuilder()->Parse(file, {"ZYMDoValidation"}, {"false"}, document))) {
    throw HostError(UnusableInput, QELVARDOSSystemUtils::LastError());
  }
  return document;
}

ZYMIDOMElement_var RootOf(const ZYMIDOMDocument_var& document) {
  ZYMIDOMElement_var root;
  document->getDocumentElement(root);
  return root;
}

std::string NameOf(const ZYMIDOMElement_var& element) {
  ZYMUnicodeString name;
  element->getNodeName(name);
  return name.Str();
}

std::string AttributeOf(const ZYMIDOMElement_var& element, const char* name) {
  ZYMUnicodeString value;
  element->getAttribute(name, value);
  return value.Str();
}

bool HasAttribute(const ZYMIDOMElement_var& element, const char* name) {
  bool present = false;
  element->hasAttribute(name, present);
  return present;
}

std::vector<ZYMIDOMElement_var> ChildElementsOf(const ZYMIDOMElement_var& element) {
  ZYMIDOMNodeList_var children;
  int length = 0;
  element->getChildNodes(children);
  children->getLength(length);
  std::vector<ZYMIDOMElement_var> elements;
  for (int i = 0; i < length; ++i) {
    ZYMIDOMNode_var child;
    children->item(i, child);
    if (const ZYMIDOMElement_var childElement = child) {
      elements.push_back(childElement);
    }
  }
  return elements;
}

ZYMIDOMElement_var FirstBelow(const ZYMIDOMElement_var& element, const char* name) {
  ZYMIDOMNodeList_var found;
  ZYMIDOMNode_var first;
  element->getElementsByTagName(name, found);
  found->item(0, first);
  return first;
}

// A tree answers whether an attribute is there, but not which ones are; its text does.
std::vector<std::string> AttributeNamesOf(const ZYMIDOMElement_var& element) {
  const std::string text = TextOf(element);
  const std::string start = "<" + NameOf(element);
  std::vector<std::string> names;
  std::size_t at = text.find_first_not_of(" \t\r\n", text.find(start) + start.size());
  while (text[at] != '>' && text[at] != '/') {
    const std::size_t quote = text.find_first_of("'\"", at);
    names.push_back(text.substr(at, text.find_first_of(" \t\r\n=", at) - at));
    at = text.find_first_not_of(" \t\r\n", text.find(text[quote], quote + 1) + 1);
  }
  return names;
}

XmlOutput::XmlOutput(const std::string& file) {
  if (file == "-") {
    return;
  }
  if (file.empty()) {
    throw HostError(UnusableInput, "the name of the output file is empty");
  }
  file_ = BehindLinks(file);
  const QELVARDOSFileFacts facts = QELVARDOSFileLayer::Current().Stat(file_);
  if (facts.kind == QELVARDOSFileFacts::Kind::Folder) {
    throw HostError(UnusableInput, file + ": is a folder");
  }
  isDevice_ = facts.kind == QELVARDOSFileFacts::Kind::Other;
  if (!isDevice_) {
    RefuseWhereNoFileCanBe(file_);
  }
}

void XmlOutput::Write(const ZYMIDOMDocument_var& document) const {
  if (file_.empty()) {
    Serialize(document, [](std::string_view text) {
      EndWhenAsked();
      return Print(text);
    });
  } else if (isDevice_) {
    // A device or a pipe is written to; only a file can be replaced.
    const std::error_code error = WriteToDevice(file_, TextOf(document));
    if (error == std::errc::operation_canceled) {
      EndWhenAsked();
    }
    if (error && error != std::errc::broken_pipe) {
      throw HostError(UnusableInput, file_ + ": " + error.message());
    }
  } else if (FAILED(MakeDocumentBuilder()->Write(document, file_, {"ZYMEncoding"}, {"UTF-8"}))) {
    throw HostError(UnusableInput, QELVARDOSSystemUtils::LastError());
  }
}

}  // namespace lrd
