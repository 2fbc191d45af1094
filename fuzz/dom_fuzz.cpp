// Reads any bytes as an XML file. A text that is taken for plain must read as the same tree by the way of all other
// texts, and what was read must write and read back unchanged.

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/ZYMIDOM.h"

namespace {

class MemoryFile : public QELVARDOSFileLayerFilter {
 public:
  MemoryFile() : QELVARDOSFileLayerFilter(System()) { Use(this); }
  ~MemoryFile() override { Use(nullptr); }
  std::error_code Read(const std::string& /*path*/, std::string& bytes, std::uint64_t /*atMost*/) override {
    bytes = text;
    return {};
  }

  std::string text;
};

void Require(bool holds, const char* what) {
  if (!holds) {
    std::cerr << what << '\n';
    std::abort();
  }
}

class Reader {
 public:
  Reader() { Require(SUCCEEDED(CreateZYMIXMLDOMDocumentBuilder(builder_)), "no builder"); }

  ZYMIDOMDocument_var Read(std::string text) {
    file_.text = std::move(text);
    ZYMIDOMDocument_var document;
    const bool read = SUCCEEDED(builder_->Parse("it", {}, {}, document));
    Require(read != document.IsNull(), "a status that contradicts the document");
    return document;
  }
  std::string Write(const ZYMIDOMNode_var& node) {
    std::string text;
    const HRESULT status = builder_->Serialize(node, [&text](std::string_view piece) {
      text += piece;
      return true;
    });
    Require(SUCCEEDED(status), "what was read cannot be written");
    return text;
  }

 private:
  MemoryFile file_;
  ZYMIXMLDOMDocumentBuilder_var builder_;
};

ZYMIDOMElement_var Root(const ZYMIDOMDocument_var& document) {
  ZYMIDOMElement_var root;
  document->getDocumentElement(root);
  return root;
}

/// The kinds and values of all nodes; attributes have no list, the written text tells them.
std::string Shape(const ZYMIDOMNode_var& node) {
  ZYMUnicodeString name;
  ZYMUnicodeString value;
  node->getNodeName(name);
  node->getNodeValue(value);
  std::string shape = name.Str() + '=' + value.Str() + '(';
  ZYMIDOMNodeList_var children;
  node->getChildNodes(children);
  ZYMIDOMNode_var child;
  for (int index = 0; children->item(index, child) == S_OK && child; ++index) {
    shape += Shape(child);
  }
  return shape + ')';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Reader reader;
  const std::string text(reinterpret_cast<const char*>(data), size);
  const ZYMIDOMDocument_var document = reader.Read(text);
  if (document.IsNull()) {
    return 0;
  }
  const std::string written = reader.Write(document);
  const ZYMIDOMDocument_var again = reader.Read(written);
  Require(!again.IsNull(), "what was written does not read");
  Require(reader.Write(again) == written && Shape(again) == Shape(document), "what was written reads as another tree");

  // A comment behind the root makes any text one that is not plain. In UTF-16 these bytes are no comment.
  if (text.find('\0') == std::string::npos) {
    const ZYMIDOMDocument_var other = reader.Read(text + "<!---->");
    Require(!other.IsNull(), "the text is not well-formed");
    Require(reader.Write(Root(other)) == reader.Write(Root(document)) && Shape(Root(other)) == Shape(Root(document)),
            "the two ways differ");
  }
  return 0;
}
