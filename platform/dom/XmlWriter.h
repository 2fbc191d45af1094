#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/dom/AnchorTable.h"

namespace ZYMDom {

using XmlSink = std::function<bool(std::string_view)>;

/// Appends a document with all beside its root element, or an element as the root of a document, to text, as UTF-8 that
/// reads back as the same tree. With a sink the text is handed over, and text emptied, whenever a piece is complete;
/// when the sink answers false, writing ends, which is no failure. An empty sink is none. Answers why XML cannot hold
/// the tree; nothing when it is written.
std::string WriteXml(const NodeAnchor& anchor, std::string& text, const XmlSink& sink);

}  // namespace ZYMDom
