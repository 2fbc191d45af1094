#include "platform/dom/NodeOperations.h"

#include <string>
#include <string_view>

#include "platform/dom/DomNodeList.h"
#include "platform/dom/DomNodes.h"
#include "platform/dom/DomStorage.h"

namespace ZYMDom {
namespace {

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

bool Append(const NodeAnchor& parent, NodeAnchor& child) {
  DomStorage& storage = parent.Storage();
  if (parent.Node() == storage.Document() && !MayStandInDocument(storage, child.Node())) {
    return false;
  }
  return &storage == &child.Storage() ? storage.Move(parent.Node(), child) : storage.TakeOver(parent.Node(), child);
}

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

HRESULT NodeName(const NodeAnchor& anchor, ZYMUnicodeString& name) {
  name.Assign(NameOf(anchor.Node()));
  return S_OK;
}

HRESULT NodeValue(const NodeAnchor& anchor, ZYMUnicodeString& value) {
  const bool hasValue = anchor.Node().type() != pugi::node_doctype;
  value.Assign(hasValue ? anchor.Node().value() : "");
  return S_OK;
}

HRESULT FirstChild(const NodeAnchor& anchor, ZYMIDOMNode_var& child) {
  child = MakeNode(anchor.Storage(), anchor.Storage().FirstChild(anchor.Node()));
  return S_OK;
}

HRESULT ChildNodes(const NodeAnchor& anchor, ZYMIDOMNodeList_var& children) {
  children = ZYMIDOMNodeList_var::Adopt(new DomNodeList(anchor));
  return S_OK;
}

HRESULT ElementsByTagName(const NodeAnchor& anchor, const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) {
  elements = ZYMIDOMNodeList_var::Adopt(new DomNodeList(anchor, name.Str()));
  return S_OK;
}

HRESULT AppendChild(const NodeAnchor& parent, const ZYMIDOMNode_var& child, ZYMIDOMNode_var& appended) {
  NodeAnchor* const anchor = AnchorOf(*child);
  if (anchor == nullptr || !Append(parent, *anchor)) {
    return E_FAIL;
  }
  appended = child;
  return S_OK;
}

}  // namespace ZYMDom
