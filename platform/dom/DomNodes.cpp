#include "platform/dom/DomNodes.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ZYMFillDictionary.h"

namespace ZYMDom {
namespace {

/// The question by which a node of this implementation is told from a foreign one, asked as for an interface. The
/// answer is the node's NodeAnchor; no reference is added.
constexpr ZYMGuid AnchorQuestion("{3B0A7C56-91D4-4E2F-8A67-C25E0D9F4B13}");

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
    case pugi::node_doctype: {
      const std::string_view doctype = node.value();
      return doctype.substr(0, doctype.find_first_of(" \t\r\n["));
    }
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
      return !root && !storage.Document().find_child(
                          [child](pugi::xml_node node) { return node.type() == pugi::node_doctype && node != child; });
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

/// A component for a node; a null node gives a null handle.
ZYMIDOMNode_var MakeNode(DomStorage& storage, pugi::xml_node node);

/// A live list: the children of a node or, with a name, elements below it. It keeps what it has met, no further than it
/// was asked, so that every node is visited once however the list is walked; a change of the tree's structure makes it
/// forget.
class DomNodeList final : public ZYMIDOMNodeList {
  ZYM_DECLARE_COMPONENT(DomNodeList);

 public:
  DomNodeList(const NodeAnchor& root, std::unique_ptr<const std::string> name)
      : root_(root.Storage(), root.Node()), name_(std::move(name)), revision_(root.Storage().Revision()) {}

  HRESULT item(int index, ZYMIDOMNode_var& node) override {
    node = index >= 0 && MeetUntil(index) ? MakeNode(root_.Storage(), met_[index]) : nullptr;
    return S_OK;
  }

  HRESULT getLength(int& length) override {
    MeetUntil(std::numeric_limits<int>::max());
    length = static_cast<int>(met_.size());
    return S_OK;
  }

 private:
  /// Whether the list goes so far.
  bool MeetUntil(int index) {
    if (revision_ != root_.Storage().Revision()) {
      revision_ = root_.Storage().Revision();
      met_.clear();
      metAll_ = false;
    }
    while (std::ssize(met_) <= index && !metAll_) {
      if (const pugi::xml_node next = Next()) {
        met_.push_back(next);
      } else {
        metAll_ = true;
      }
    }
    return index < std::ssize(met_);
  }

  pugi::xml_node Next() const {
    const DomStorage& storage = root_.Storage();
    if (!name_) {
      return met_.empty() ? storage.FirstChild(root_.Node()) : met_.back().next_sibling();
    }
    pugi::xml_node element = met_.empty() ? root_.Node() : met_.back();
    do {
      element = storage.NextElementBelow(root_.Node(), element);
    } while (element && *name_ != element.name() && *name_ != "*");
    return element;
  }

  NodeAnchor root_;
  // On the heap, as lists of children are many and have none.
  std::unique_ptr<const std::string> name_;
  std::uint64_t revision_;
  std::vector<pugi::xml_node> met_;
  bool metAll_ = false;
};

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
    children = ZYMIDOMNodeList_var::Adopt(new DomNodeList(anchor_, nullptr));
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
    elements = ZYMIDOMNodeList_var::Adopt(new DomNodeList(anchor_, std::make_unique<std::string>(name.Str())));
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
    bool more = true;
    for (pugi::xml_node child = Node().first_child(); child && more; child = child.next_sibling()) {
      if (IsOneOf(names, child.name()) && child.type() == pugi::node_element) {
        more = visit(ZYMIDOMElement_var::Adopt(new DomElement(Storage(), child)));
      }
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

ZYM_DEFINE_COMPONENT_AS(DomNodeList, "ZYMDom::DomNodeList", ZYMIDOMNodeList)
ZYM_DEFINE_COMPONENT_AS(DomElement, "ZYMDom::DomElement", ZYMIDOMElement)
ZYM_DEFINE_COMPONENT_AS(DomText, "ZYMDom::DomText", ZYMIDOMText)
ZYM_DEFINE_COMPONENT_AS(DomOtherNode, "ZYMDom::DomOtherNode", ZYMIDOMNode)
ZYM_DEFINE_COMPONENT_AS(DomDocument, "ZYMDom::DomDocument", ZYMIDOMDocument)

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

}  // namespace

NodeAnchor* AnchorOf(ZYMIDOMNode& node) {
  void* anchor = nullptr;
  return SUCCEEDED(node.QueryInterface(AnchorQuestion, &anchor)) ? static_cast<NodeAnchor*>(anchor) : nullptr;
}

ZYMIDOMDocument_var MakeDocument(std::unique_ptr<DomStorage> storage) {
  ZYMIDOMDocument_var document = ZYMIDOMDocument_var::Adopt(new DomDocument(*storage, storage->Document()));
  static_cast<void>(storage.release());
  return document;
}

}  // namespace ZYMDom
