#pragma once

#include "platform/ZYMIDOM.h"
#include "platform/dom/NodeAnchor.h"
#include "platform/dom/NodeOperations.h"

namespace ZYMDom {

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

  HRESULT getNodeName(ZYMUnicodeString& name) override { return NodeName(anchor_, name); }
  HRESULT getNodeValue(ZYMUnicodeString& value) override { return NodeValue(anchor_, value); }
  HRESULT getFirstChild(ZYMIDOMNode_var& child) override { return FirstChild(anchor_, child); }
  HRESULT getChildNodes(ZYMIDOMNodeList_var& children) override { return ChildNodes(anchor_, children); }
  HRESULT appendChild(const ZYMIDOMNode_var& child, ZYMIDOMNode_var& appended) override {
    return AppendChild(anchor_, child, appended);
  }

 protected:
  NodeAnchor anchor_;
};

}  // namespace ZYMDom
