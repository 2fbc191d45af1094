// Reads any bytes as an XML file. A text that is taken for plain must read as the same tree by the way of all other
// texts, and what was read must write and read back unchanged.

#include <string>

#include "fuzz/FuzzInput.h"

namespace {

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
  const LivingCheck living;
  MemoryFiles files;
  const std::string text(reinterpret_cast<const char*>(data), size);
  const ZYMIDOMDocument_var document = DocumentOf(text, files);
  if (document.IsNull()) {
    return 0;
  }
  const std::string written = TextOf(document);
  const ZYMIDOMDocument_var again = DocumentOf(written, files);
  Require(!again.IsNull(), "what was written does not read");
  Require(TextOf(again) == written && Shape(again) == Shape(document), "what was written reads as another tree");

  // A comment behind the root makes any text one that is not plain. In UTF-16 these bytes are no comment.
  if (text.find('\0') == std::string::npos) {
    const ZYMIDOMElement_var root = RootOf(document);
    const ZYMIDOMElement_var other = TreeOf(text + "<!---->", files);
    Require(!other.IsNull(), "the text is not well-formed");
    Require(TextOf(other) == TextOf(root) && Shape(other) == Shape(root), "the two ways differ");
  }
  return 0;
}
