#include "recognition/ObjectsOfTree.h"

#include "xmlhandlers/InfoSearch.h"

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
  const InfoSearch found = InfoSearch::Below(root_);
  status_ = found.search;
  info_ = found.info;
  list_ = FirstElement(info_ ? info_ : root_, Word::CadObjectList);
}
