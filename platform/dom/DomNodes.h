#pragma once

#include <memory>

#include "platform/ZYMIDOM.h"
#include "platform/dom/DomStorage.h"
#include "platform/dom/NodeAnchor.h"

namespace ZYMDom {

/// null for a node of a foreign implementation.
NodeAnchor* AnchorOf(ZYMIDOMNode& node);
/// A component for a node; a null node gives a null handle.
ZYMIDOMNode_var MakeNode(DomStorage& storage, pugi::xml_node node);
/// The first handle of a new tree.
ZYMIDOMDocument_var MakeDocument(std::unique_ptr<DomStorage> storage);

}  // namespace ZYMDom
