#include "platform/dom/DomNodes.h"

#include <algorithm>
#include <string_view>

#include "platform/ZYMFillDictionary.h"
#include "platform/dom/DomNodeList.h"

namespace ZYMDom {
namespace {

/// The question by which a node of this implementation is told from a foreign one, asked as for an interface. The
/// answer is the node's NodeAnchor; no reference is added.
constexpr ZYMGuid AnchorQuestion("{3B0A7C56-91D4-4E2F-8A67-C25E0D9F4B13}");

std::string_view DoctypeName(const char* doctype) {
  const std::string_view text = doctype;
  return text.substr(0, text.find_first_of(" \t\r\n["));
}

std::string_view NameOf(pugi::xml_node node) {
  switch (node.type()) {
    case pugi::node_document:
      return "#document";
    case pugi::node_pcdata:
      return "#text";
    case pugi::node_cdata:
      return "#cdata-section";
    case pugi::node_comment:
      return "#comment";
    case pugi::node_doctype:
      return DoctypeName(node.value());
    default:
      return node.name();
  }
}

/// A document has one root element at most, its type before that, and no text.
bool MayStandInDocument(DomStorage& storage, pugi::xml_node child) {
  const pugi::xml_node root = storage.RootElement();
  switch (child.type()) {
    case pugi::node_element:
      return !root || root == child;
    case pugi::node_doctype:
      for (pugi::xml_node node = storage.FirstChild(storage.Document()); node; node = storage.NextSibling(node)) {
        if (node.type() == pugi::node_doctype && node != child) {
          return false;
        }
      }
      return !root;
    default:
      return child.type() == pugi::node_comment || child.type() == pugi::node_pi;
  }
}

bool MayStandIn(DomStorage& storage, pugi::xml_node parent, pugi::xml_node child) {
  if (parent == storage.Document()) {
    return MayStandInDocument(storage, child);
  }
  return parent.type() == pugi::node_element && child.type() != pugi::node_document &&
         child.type() != pugi::node_doctype;
}

/// The tree holds strings that end at the first NUL byte; XML allows none anyway.
bool HoldsNul(const ZYMUnicodeString& string) { return string.View().find('\0') != std::string_view::npos; }

/// The first character tells most names apart.
bool IsOneOf(const ZYMUnicodeStringList& names, const char* name) {
  return names.Size() == 0 || std::any_of(names.begin(), names.end(), [name](const ZYMUnicodeString& wanted) {
           return *wanted.CStr() == *name && wanted == name;
         });
}

/// Among node and the siblings behind it.
pugi::xml_node FirstElementFrom(const DomStorage& storage, pugi::xml_node node, const ZYMUnicodeStringList& names) {
  while (node && (!IsOneOf(names, node.name()) || node.type() != pugi::node_element)) {
    node = storage.NextSibling(node);
  }
  return node;
}

/// What all kinds of nodes have in common: a component of an interface that derives from ZYMIDOMNode, anchored to a
/// node.
template <typename Interface>
class AnchoredNode : public Interface {
 public:
  AnchoredNode(DomStorage& storage, pugi::xml_node node) : anchor_(storage, node) {}

  using Interface::QueryInterface;
  HRESULT QueryInterface(const ZYMGuid& interfaceId, void** object) override {
    // The question that is asked most is for the node's own kind.
    if (interfaceId == Interface::ClassId()) {
      *object = static_cast<ZYMBaseUnknown*>(this);
      this->AddRef();
      return S_OK;
    }
    if (interfaceId == AnchorQuestion) {
      *object = &anchor_;
      return S_OK;
    }
    return Interface::QueryInterface(interfaceId, object);
  }

  HRESULT getNodeName(ZYMUnicodeString& name) override {
    name.Assign(NameOf(Node()));
    return S_OK;
  }
  HRESULT getNodeValue(ZYMUnicodeString& value) override {
    value.Assign(Node().type() != pugi::node_doctype ? Node().value() : "");
    return S_OK;
  }
  HRESULT getFirstChild(ZYMIDOMNode_var& child) override {
    child = MakeNode(Storage(), Storage().FirstChild(Node()));
    return S_OK;
  }
  HRESULT getChildNodes(ZYMIDOMNodeList_var& children) override {
    children = ZYMIDOMNodeList_var::Adopt(new DomNodeList(anchor_));
    return S_OK;
  }
  HRESULT appendChild(const ZYMIDOMNode_var& child, ZYMIDOMNode_var& appended) override {
    NodeAnchor* const anchor = AnchorOf(*child);
    if (anchor == nullptr || !MayStandIn(Storage(), Node(), anchor->Node())) {
      return E_FAIL;
    }
    const bool isOwn = &Storage() == &anchor->Storage();
    const HRESULT status = isOwn ? Storage().Move(Node(), *anchor) : Storage().TakeOver(Node(), *anchor);
    if (SUCCEEDED(status)) {
      appended = child;
    }
    return status;
  }

 protected:
  DomStorage& Storage() const noexcept { return anchor_.Storage(); }
  pugi::xml_node Node() const noexcept { return anchor_.Node(); }
  HRESULT FindElements(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) const {
    elements = ZYMIDOMNodeList_var::Adopt(new DomNodeList(anchor_, name.Str()));
    return S_OK;
  }

 private:
  NodeAnchor anchor_;
};

class DomElement final : public AnchoredNode<ZYMIDOMElement> {
  ZYM_DECLARE_COMPONENT(DomElement);

 public:
  using AnchoredNode::AnchoredNode;

  HRESULT getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) override {
    return FindElements(name, elements);
  }
  HRESULT getAttribute(const ZYMUnicodeString& name, ZYMUnicodeString& value) override {
    value.Assign(Storage().Attribute(Node(), name.CStr()).value());
    return S_OK;
  }
  HRESULT setAttribute(const ZYMUnicodeString& name, const ZYMUnicodeString& value) override {
    if (HoldsNul(name) || HoldsNul(value)) {
      return E_FAIL;
    }
    return Storage().SetAttribute(Node(), name.CStr(), value.View()) ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT hasAttribute(const ZYMUnicodeString& name, bool& present) override {
    present = !Storage().Attribute(Node(), name.CStr()).empty();
    return S_OK;
  }
  HRESULT getTextOfFirst(const ZYMUnicodeString& name, bool& found, ZYMUnicodeString& text) override {
    const pugi::xml_node first = Storage().FirstElementBelow(Node(), name.CStr());
    found = static_cast<bool>(first);
    if (const pugi::xml_node child = first.first_child()) {
      text.Assign(child.value());
    }
    return S_OK;
  }
  HRESULT visitChildElements(const ZYMUnicodeStringList& names,
                             const std::function<bool(const ZYMIDOMElement_var& child)>& visit) override {
    DomStorage& storage = Storage();
    pugi::xml_node child = FirstElementFrom(storage, Node().first_child(), names);
    while (child && visit(ZYMIDOMElement_var::Adopt(new DomElement(storage, child)))) {
      child = FirstElementFrom(storage, storage.NextSibling(child), names);
    }
    return S_OK;
  }
  HRESULT appendTextElement(const ZYMIDOMDocument_var& /*document*/, const ZYMUnicodeString& name,
                            const ZYMUnicodeString& value) override {
    if (HoldsNul(name) || HoldsNul(value)) {
      return E_FAIL;
    }
    return Storage().AppendTextElement(Node(), name.CStr(), value.CStr()) ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT getAttributeNames(ZYMUnicodeStringList& names) override {
    for (const pugi::xml_attribute& attribute : Node().attributes()) {
      names.Append(attribute.name());
    }
    return S_OK;
  }
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

  HRESULT getDocumentElement(ZYMIDOMElement_var& element) override {
    const pugi::xml_node root = Storage().RootElement();
    element = root ? ZYMIDOMElement_var::Adopt(new DomElement(Storage(), root)) : nullptr;
    return S_OK;
  }
  HRESULT getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) override {
    return FindElements(name, elements);
  }
  HRESULT createElement(const ZYMUnicodeString& name, ZYMIDOMElement_var& element) override {
    return HoldsNul(name) ? E_FAIL : Hand<DomElement>(Storage().NewElement(name.CStr()), element);
  }
  HRESULT createTextNode(const ZYMUnicodeString& value, ZYMIDOMText_var& text) override {
    return HoldsNul(value) ? E_FAIL : Hand<DomText>(Storage().NewText(value.CStr()), text);
  }

 private:
  template <typename Component, typename Handle>
  HRESULT Hand(pugi::xml_node node, Handle& handle) const {
    if (!node) {
      return E_OUTOFMEMORY;
    }
    handle = Handle::Adopt(new Component(Storage(), node));
    return S_OK;
  }
};

ZYM_DEFINE_COMPONENT_AS(DomElement, "ZYMDom::DomElement", ZYMIDOMElement)
ZYM_DEFINE_COMPONENT_AS(DomText, "ZYMDom::DomText", ZYMIDOMText)
ZYM_DEFINE_COMPONENT_AS(DomOtherNode, "ZYMDom::DomOtherNode", ZYMIDOMNode)
ZYM_DEFINE_COMPONENT_AS(DomDocument, "ZYMDom::DomDocument", ZYMIDOMDocument)

}  // namespace

NodeAnchor* AnchorOf(ZYMIDOMNode& node) {
  void* anchor = nullptr;
  return SUCCEEDED(node.QueryInterface(AnchorQuestion, &anchor)) ? static_cast<NodeAnchor*>(anchor) : nullptr;
}

ZYMIDOMNode_var MakeNode(DomStorage& storage, pugi::xml_node node) {
  switch (node.type()) {
    case pugi::node_null:
      return nullptr;
    case pugi::node_element:
      return ZYMIDOMNode_var::Adopt(new DomElement(storage, node));
    case pugi::node_pcdata:
      return ZYMIDOMNode_var::Adopt(new DomText(storage, node));
    default:
      return ZYMIDOMNode_var::Adopt(new DomOtherNode(storage, node));
  }
}

ZYMIDOMDocument_var MakeDocument(std::unique_ptr<DomStorage> storage) {
  ZYMIDOMDocument_var document = ZYMIDOMDocument_var::Adopt(new DomDocument(*storage, storage->Document()));
  static_cast<void>(storage.release());
  return document;
}

}  // namespace ZYMDom
