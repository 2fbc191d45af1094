#include "platform/dom/DomNodeList.h"

#include <tuple>
#include <utility>

#include "platform/ZYMFillDictionary.h"
#include "platform/dom/DomNodes.h"

namespace ZYMDom {

ZYM_DEFINE_COMPONENT_AS(DomNodeList, "ZYMDom::DomNodeList", ZYMIDOMNodeList)

DomNodeList::DomNodeList(const NodeAnchor& root)
    : root_(root.Storage(), root.Node()), revision_(root.Storage().Revision()) {}

DomNodeList::DomNodeList(const NodeAnchor& root, std::string name)
    : root_(root.Storage(), root.Node()), name_(std::move(name)), revision_(root.Storage().Revision()) {}

HRESULT DomNodeList::item(int index, ZYMIDOMNode_var& node) {
  ForgetWhenChanged();
  if (index < 0 || (length_ && index >= *length_)) {
    node = nullptr;
    return S_OK;
  }
  GoTo(index);
  node = last_ && lastIndex_ == index ? MakeNode(root_.Storage(), last_) : nullptr;
  return S_OK;
}

HRESULT DomNodeList::getLength(int& length) {
  ForgetWhenChanged();
  if (!length_) {
    const std::pair<pugi::xml_node, int> place(last_, lastIndex_);
    while (StepForward()) {
    }
    std::tie(last_, lastIndex_) = place;
  }
  length = *length_;
  return S_OK;
}

pugi::xml_node DomNodeList::First() const {
  return name_ ? After(root_.Node()) : root_.Storage().FirstChild(root_.Node());
}

pugi::xml_node DomNodeList::After(pugi::xml_node node) const {
  if (!name_) {
    return root_.Storage().NextSibling(node);
  }
  do {
    node = root_.Storage().NextBelow(root_.Node(), node);
  } while (node && !Matches(node));
  return node;
}

pugi::xml_node DomNodeList::Before(pugi::xml_node node) const {
  if (!name_) {
    return node.previous_sibling();
  }
  do {
    node = root_.Storage().PreviousBelow(root_.Node(), node);
  } while (node && !Matches(node));
  return node;
}

bool DomNodeList::Matches(pugi::xml_node node) const {
  return node.type() == pugi::node_element && (*name_ == node.name() || *name_ == "*");
}

void DomNodeList::ForgetWhenChanged() {
  if (revision_ != root_.Storage().Revision()) {
    revision_ = root_.Storage().Revision();
    last_ = {};
    lastIndex_ = 0;
    length_.reset();
  }
}

/// Steps from the last place or, when that is nearer, from the beginning; stops at the last node when index is behind
/// it.
void DomNodeList::GoTo(int index) {
  if (index < lastIndex_ - index) {
    last_ = {};
  }
  while ((!last_ || lastIndex_ < index) && StepForward()) {
  }
  for (; last_ && lastIndex_ > index; --lastIndex_) {
    last_ = Before(last_);
  }
}

/// Without a last place, to the first node. At the end it stays, and the length is known.
bool DomNodeList::StepForward() {
  const pugi::xml_node next = last_ ? After(last_) : First();
  if (!next) {
    length_ = last_ ? lastIndex_ + 1 : 0;
    return false;
  }
  lastIndex_ = last_ ? lastIndex_ + 1 : 0;
  last_ = next;
  return true;
}

}  // namespace ZYMDom
