#pragma once

#include <memory>

#include "platform/ZYMIDOM.h"
#include "platform/dom/DomStorage.h"

namespace ZYMDom {

/// null for a node of a foreign implementation.
NodeAnchor* AnchorOf(ZYMIDOMNode& node);
/// The first handle of a new tree.
ZYMIDOMDocument_var MakeDocument(std::unique_ptr<DomStorage> storage);

}  // namespace ZYMDom
