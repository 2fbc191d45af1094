#pragma once

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMIDOM.h"

/// A table of cases, all texts.
template <std::size_t Columns>
using Rows = std::vector<std::array<std::string, Columns>>;

/// A disk with one file, whatever its path, in front of the layer in use.
class OneFile : public QELVARDOSFileLayerFilter {
 public:
  explicit OneFile(std::string text) : QELVARDOSFileLayerFilter(Current()), text_(std::move(text)) {}
  std::error_code Read(const std::string& /*path*/, std::string& bytes, std::uint64_t /*atMost*/) override {
    bytes = text_;
    return {};
  }

 private:
  std::string text_;
  const QELVARDOSUseFileLayer use_{*this};
};

/// A builder of ours, whoever makes the others.
inline ZYMIXMLDOMDocumentBuilder_var OwnBuilder() {
  const ZYMDocumentBuilderCreation before = ZYMSetDocumentBuilderCreation(nullptr);
  ZYMIXMLDOMDocumentBuilder_var builder;
  CreateZYMIXMLDOMDocumentBuilder(builder);
  ZYMSetDocumentBuilderCreation(before);
  return builder;
}

inline std::string Element(const std::string& name, const std::string& attributes, const std::string& content = "") {
  return "<" + name + (attributes.empty() ? "" : " ") + attributes + ">" + content + "</" + name + ">";
}

/// The root of a text.
inline ZYMIDOMElement_var Tree(const std::string& text) {
  const OneFile disk(text);
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var root;
  EXPECT_EQ(OwnBuilder()->Parse("it", {}, {}, document), S_OK) << QELVARDOSSystemUtils::LastError() << "\n" << text;
  document->getDocumentElement(root);
  return root;
}

/// The text of a tree without declaration; "null" for none.
inline std::string Text(const ZYMIDOMNode_var& node) {
  std::string text;
  const auto append = [&text](std::string_view piece) { return !(text += piece).empty(); };
  if (node.IsNull() || FAILED(OwnBuilder()->Serialize(node, append))) {
    return "null";
  }
  return text.substr(text.find('\n') + 1);
}

/// A node that is no element.
inline ZYMIDOMNode_var TextNode() {
  ZYMIDOMNode_var text;
  Tree("<a>text</a>")->getFirstChild(text);
  return text;
}

inline ZYMIDOMNode_var Tagged(const ZYMIDOMElement_var& root, const char* tag, int index = 0) {
  ZYMIDOMNodeList_var found;
  ZYMIDOMNode_var node;
  root->getElementsByTagName(tag, found);
  found->item(index, node);
  return node;
}

/// "name=value" for those of the attributes that are present.
inline std::string Show(const ZYMIDOMElement_var& element, std::initializer_list<const char*> names) {
  std::string shown;
  for (const char* name : names) {
    bool present = false;
    ZYMUnicodeString value;
    if (element->hasAttribute(name, present); present) {
      element->getAttribute(name, value);
      shown += (shown.empty() ? "" : " ") + std::string(name) + "=" + value.Str();
    }
  }
  return shown;
}

/// The same of the object with that CAD id.
inline std::string Show(const ZYMIDOMElement_var& root, const std::string& cadId,
                        std::initializer_list<const char*> names) {
  for (int index = 0;; ++index) {
    const ZYMIDOMElement_var element = Tagged(root, "*", index);
    if (element.IsNull() || Show(element, {"cadid"}) == "cadid=" + cadId) {
      return element.IsNull() ? "none" : Show(element, names);
    }
  }
}
