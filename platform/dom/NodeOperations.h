#pragma once

#include "platform/ZYMIDOM.h"
#include "platform/dom/NodeAnchor.h"

namespace ZYMDom {

/// The question by which a node of this implementation is told from a foreign one, asked as for an interface. The
/// answer is the node's NodeAnchor; no reference is added.
inline constexpr ZYMGuid AnchorQuestion("{3B0A7C56-91D4-4E2F-8A67-C25E0D9F4B13}");

/// null for a node of a foreign implementation.
NodeAnchor* AnchorOf(ZYMIDOMNode& node);
/// A component for a node; a null node gives a null handle.
ZYMIDOMNode_var MakeNode(DomStorage& storage, pugi::xml_node node);

HRESULT NodeName(const NodeAnchor& anchor, ZYMUnicodeString& name);
HRESULT NodeValue(const NodeAnchor& anchor, ZYMUnicodeString& value);
HRESULT FirstChild(const NodeAnchor& anchor, ZYMIDOMNode_var& child);
HRESULT ChildNodes(const NodeAnchor& anchor, ZYMIDOMNodeList_var& children);
HRESULT ElementsByTagName(const NodeAnchor& anchor, const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements);
HRESULT AppendChild(const NodeAnchor& parent, const ZYMIDOMNode_var& child, ZYMIDOMNode_var& appended);

}  // namespace ZYMDom
