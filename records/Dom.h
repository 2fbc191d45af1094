#pragma once

#include "platform/ZYMIDOM.h"

/// Short ways to look at trees. A lookup that finds nothing, or that fails, answers null or empty.

/// An absent attribute, and a null element, read as empty.
ZYMUnicodeString Attribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name);
/// The first element of that name below element.
ZYMIDOMElement_var FirstElement(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name);
/// Whether there is such an element; text then takes the value of its first child, and without one stays as it was.
bool TakeTextOfFirst(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name, ZYMUnicodeString& text);
ZYMUnicodeString NodeName(const ZYMIDOMNode_var& node);

/// Calls visit with each child of node, in document order, until it answers false.
template <typename Visit>
void ForEachChild(const ZYMIDOMNode_var& node, const Visit& visit) {
  ZYMIDOMNodeList_var children;
  node->getChildNodes(children);
  int count = 0;
  if (children) {
    children->getLength(count);
  }
  for (int i = 0; i < count; ++i) {
    ZYMIDOMNode_var child;
    children->item(i, child);
    if (!visit(child)) {
      return;
    }
  }
}

/// The same with those children that are elements.
template <typename Visit>
void ForEachChildElement(const ZYMIDOMNode_var& node, const Visit& visit) {
  ForEachChild(node, [&visit](const ZYMIDOMNode_var& child) {
    const ZYMIDOMElement_var element(child);
    return element.IsNull() || visit(element);
  });
}
