#pragma once

#include <memory>

#include "platform/ZYMIDOM.h"
#include "platform/dom/AnchoredNode.h"
#include "platform/dom/DomStorage.h"

namespace ZYMDom {

class DomElement final : public AnchoredNode<ZYMIDOMElement> {
  ZYM_DECLARE_COMPONENT(DomElement);

 public:
  using AnchoredNode::AnchoredNode;

  HRESULT getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) override;
  HRESULT getAttribute(const ZYMUnicodeString& name, ZYMUnicodeString& value) override;
  HRESULT setAttribute(const ZYMUnicodeString& name, const ZYMUnicodeString& value) override;
  HRESULT hasAttribute(const ZYMUnicodeString& name, bool& present) override;
  HRESULT getTextOfFirst(const ZYMUnicodeString& name, bool& found, ZYMUnicodeString& text) override;
  HRESULT visitChildElements(const ZYMUnicodeStringList& names,
                             const std::function<bool(const ZYMIDOMElement_var& child)>& visit) override;
  HRESULT appendTextElement(const ZYMIDOMDocument_var& document, const ZYMUnicodeString& name,
                            const ZYMUnicodeString& value) override;
  HRESULT getAttributeNames(ZYMUnicodeStringList& names) override;

 private:
  KnownAttributes& Attributes() const noexcept { return anchor_.Storage().Attributes(); }
};

class DomText final : public AnchoredNode<ZYMIDOMText> {
  ZYM_DECLARE_COMPONENT(DomText);

 public:
  using AnchoredNode::AnchoredNode;
};

/// A comment, a CDATA section, a processing instruction or a document type.
class DomOtherNode final : public AnchoredNode<ZYMIDOMNode> {
  ZYM_DECLARE_COMPONENT(DomOtherNode);

 public:
  using AnchoredNode::AnchoredNode;
};

class DomDocument final : public AnchoredNode<ZYMIDOMDocument> {
  ZYM_DECLARE_COMPONENT(DomDocument);

 public:
  using AnchoredNode::AnchoredNode;
  /// The first handle of a new tree.
  static ZYMIDOMDocument_var Of(std::unique_ptr<DomStorage> storage);

  HRESULT getDocumentElement(ZYMIDOMElement_var& element) override;
  HRESULT getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) override;
  HRESULT createElement(const ZYMUnicodeString& name, ZYMIDOMElement_var& element) override;
  HRESULT createTextNode(const ZYMUnicodeString& value, ZYMIDOMText_var& text) override;
};

}  // namespace ZYMDom
