#pragma once

#include <utility>

#include "platform/ZYMIDOM.h"

/// Short ways to look at trees. A lookup that finds nothing, or that fails, answers null or empty.

/// An absent attribute, and a null element, read as empty.
ZYMUnicodeString Attribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name);
/// The first element of that name below element.
ZYMIDOMElement_var FirstElement(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name);
/// Whether there is such an element; text then takes the value of its first child, and without one stays as it was.
bool TakeTextOfFirst(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name, ZYMUnicodeString& text);
ZYMUnicodeString NodeName(const ZYMIDOMNode_var& node);

/// Elements or not.
int ChildCount(const ZYMIDOMNode_var& node);

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

/// The same with those children that are elements, or elements of one of these names.
template <typename Visit>
void ForEachChildElement(const ZYMIDOMNode_var& node, const ZYMUnicodeStringList& names, const Visit& visit) {
  const ZYMIDOMElement_var parent(node);
  ZYMIDOMElement_var element;
  if (parent.IsNull() || FAILED(parent->getFirstElement(names, element))) {
    ForEachChild(node, [&](const ZYMIDOMNode_var& child) {
      const ZYMIDOMElement_var found(child);
      return found.IsNull() || (names.Size() != 0 && names.Locate(NodeName(found)) == 0) || visit(found);
    });
    return;
  }
  while (element && visit(element)) {
    ZYMIDOMElement_var next;
    element->getNextElement(names, next);
    element = std::move(next);
  }
}
template <typename Visit>
void ForEachChildElement(const ZYMIDOMNode_var& node, const Visit& visit) {
  ForEachChildElement(node, {}, visit);
}
