#include "recognition/ObjectsOfTree.h"

int CountObjects(const ZYMIDOMElement_var& list) {
  int count = 0;
  ForEachChildElement(list, [&count](const ZYMIDOMElement_var&) {
    ++count;
    return true;
  });
  return count;
}

ObjectsOfTree::ObjectsOfTree(const ZYMIDOMNode_var& root) : root_(root) {
  if (root_.IsNull()) {
    return;
  }
  ZYMIDOMNodeList_var found;
  status_ = root_->getElementsByTagName(Word::Info, found);
  if (SUCCEEDED(status_) && found) {
    ZYMIDOMNode_var first;
    found->item(0, first);
    info_ = first;
  }
  list_ = FirstElement(info_ ? info_ : root_, Word::CadObjectList);
}

int ObjectsOfTree::ChildCount() const {
  int count = 0;
  if (list_) {
    ZYMIDOMNodeList_var children;
    list_->getChildNodes(children);
    if (children) {
      children->getLength(count);
    }
  }
  return count;
}
