#pragma once

#include "platform/ZYMIDOM.h"

/// Short ways to look at trees. A lookup that finds nothing, or that fails, answers null or empty.

/// An absent attribute, and a null element, read as empty.
inline ZYMUnicodeString Attribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name) {
  ZYMUnicodeString value;
  if (element) {
    element->getAttribute(name, value);
  }
  return value;
}

inline bool HasAttribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name) {
  bool present = false;
  return SUCCEEDED(element->hasAttribute(name, present)) && present;
}

/// The first element of that name below element.
inline ZYMIDOMElement_var FirstElement(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name) {
  ZYMIDOMNodeList_var found;
  element->getElementsByTagName(name, found);
  ZYMIDOMNode_var first;
  if (found) {
    found->item(0, first);
  }
  return first;
}

/// Whether there is such an element; text then takes the value of its first child, and without one stays as it was.
inline bool TakeTextOfFirst(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name, ZYMUnicodeString& text) {
  bool found = false;
  element->getTextOfFirst(name, found, text);
  return found;
}

inline ZYMUnicodeString NodeName(const ZYMIDOMNode_var& node) {
  ZYMUnicodeString name;
  node->getNodeName(name);
  return name;
}

inline ZYMIDOMElement_var RootElement(const ZYMIDOMDocument_var& document) {
  ZYMIDOMElement_var root;
  document->getDocumentElement(root);
  return root;
}

/// Elements or not.
inline int ChildCount(const ZYMIDOMNode_var& node) {
  ZYMIDOMNodeList_var children;
  int count = 0;
  node->getChildNodes(children);
  if (children) {
    children->getLength(count);
  }
  return count;
}

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

/// The same with those children of an element that are elements, or elements of one of these names. A node that is no
/// element has none.
template <typename Visit>
void ForEachChildElement(const ZYMIDOMNode_var& node, const ZYMUnicodeStringList& names, const Visit& visit) {
  if (const ZYMIDOMElement_var parent(node); parent) {
    parent->visitChildElements(names, [&visit](const ZYMIDOMElement_var& child) { return visit(child); });
  }
}
template <typename Visit>
void ForEachChildElement(const ZYMIDOMNode_var& node, const Visit& visit) {
  ForEachChildElement(node, {}, visit);
}
