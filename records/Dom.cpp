#include "records/Dom.h"

ZYMUnicodeString Attribute(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name) {
  ZYMUnicodeString value;
  if (element) {
    element->getAttribute(name, value);
  }
  return value;
}

ZYMIDOMElement_var FirstElement(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name) {
  ZYMIDOMNodeList_var found;
  element->getElementsByTagName(name, found);
  ZYMIDOMNode_var first;
  if (found) {
    found->item(0, first);
  }
  return first;
}

bool TakeTextOfFirst(const ZYMIDOMElement_var& element, const ZYMUnicodeString& name, ZYMUnicodeString& text) {
  bool found = false;
  if (SUCCEEDED(element->getTextOfFirst(name, found, text))) {
    return found;
  }
  const ZYMIDOMElement_var first = FirstElement(element, name);
  ZYMIDOMNode_var child;
  if (first) {
    first->getFirstChild(child);
  }
  if (child) {
    child->getNodeValue(text);
  }
  return static_cast<bool>(first);
}

int ChildCount(const ZYMIDOMNode_var& node) {
  ZYMIDOMNodeList_var children;
  int count = 0;
  node->getChildNodes(children);
  if (children) {
    children->getLength(count);
  }
  return count;
}

ZYMUnicodeString NodeName(const ZYMIDOMNode_var& node) {
  ZYMUnicodeString name;
  node->getNodeName(name);
  return name;
}
