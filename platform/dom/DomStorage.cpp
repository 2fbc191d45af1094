#include "platform/dom/DomStorage.h"

#include <algorithm>
#include <utility>

namespace ZYMDom {
namespace {

bool IsDeep(pugi::xml_node node) {
  constexpr int Levels = 256;
  int level = 0;
  for (; node && level < Levels; ++level) {
    node = node.parent();
  }
  return level == Levels;
}

}  // namespace

bool DomStorage::LoadPlain(std::string text, std::size_t root) {
  text_ = std::move(text);
  constexpr unsigned int TextAsItStands = pugi::parse_escapes | pugi::parse_ws_pcdata;
  return document_.load_buffer_inplace(text_.data() + root, text_.size() - root, TextAsItStands, pugi::encoding_utf8)
             .status == pugi::status_ok;
}

pugi::xml_node DomStorage::RootElement() const {
  pugi::xml_node node = FirstChild(document_);
  while (node && node.type() != pugi::node_element) {
    node = NextSibling(node);
  }
  return node;
}

pugi::xml_node DomStorage::NextBelow(pugi::xml_node root, pugi::xml_node node) const {
  if (const pugi::xml_node child = FirstChild(node)) {
    return child;
  }
  for (; node != root; node = node.parent()) {
    if (const pugi::xml_node sibling = NextSibling(node)) {
      return sibling;
    }
  }
  return {};
}

pugi::xml_node DomStorage::PreviousBelow(pugi::xml_node root, pugi::xml_node node) const {
  pugi::xml_node previous = node.previous_sibling();
  if (!previous) {
    return node.parent() == root ? pugi::xml_node() : node.parent();
  }
  while (const pugi::xml_node child = previous.last_child()) {
    previous = child;
  }
  return previous;
}

pugi::xml_node DomStorage::NewElement(const char* name) {
  pugi::xml_node element = Holder().append_child(pugi::node_element);
  element.set_name(name);
  return element;
}

pugi::xml_node DomStorage::NewText(const char* value) {
  pugi::xml_node text = Holder().append_child(pugi::node_pcdata);
  text.set_value(value);
  return text;
}

void DomStorage::AppendTextElement(pugi::xml_node parent, const char* name, const char* value) {
  parent.append_child(name).append_child(pugi::node_pcdata).set_value(value);
  ++revision_;
}

bool DomStorage::Move(pugi::xml_node parent, NodeAnchor& child) {
  const pugi::xml_node old = child.Node();
  const bool beforeHolder = parent == document_ && holder_;
  ++revision_;
  if (old.first_child() || old == parent || !IsDeep(parent)) {
    return static_cast<bool>(beforeHolder ? parent.insert_move_before(old, holder_) : parent.append_move(old));
  }
  // pugixml looks at all nodes above parent before it moves a node. One without children is above none, and is copied
  // as soon.
  const pugi::xml_node copy = parent.append_copy(old);
  if (!copy) {
    return false;
  }
  Holder().append_move(old);
  anchors_.MoveAll(old, *this, copy);
  return true;
}

bool DomStorage::TakeOver(pugi::xml_node parent, NodeAnchor& child) {
  DomStorage& source = child.Storage();
  const NodeAnchor sourceStays(source, source.document_);
  const pugi::xml_node old = child.Node();
  const bool beforeHolder = parent == document_ && holder_;
  const pugi::xml_node copy = beforeHolder ? parent.insert_copy_before(old, holder_) : parent.append_copy(old);
  if (!copy) {
    return false;
  }
  source.Holder().append_move(old);
  revision_ = std::max(revision_, ++source.revision_) + 1;
  child.MoveTo(*this, copy);
  source.MoveAnchors(old, *this, copy);
  return true;
}

pugi::xml_node DomStorage::Holder() {
  if (!holder_) {
    holder_ = document_.append_child(pugi::node_element);
  }
  return holder_;
}

/// from and to are the roots of two subtrees of one shape.
void DomStorage::MoveAnchors(pugi::xml_node from, DomStorage& target, pugi::xml_node to) {
  const pugi::xml_node root = from;
  const pugi::xml_node targetRoot = to;
  constexpr std::size_t OwnAnchorOfTakeOver = 1;
  while (from && anchors_.Size() > OwnAnchorOfTakeOver) {
    anchors_.MoveAll(from, target, to);
    from = NextBelow(root, from);
    to = target.NextBelow(targetRoot, to);
  }
}

}  // namespace ZYMDom
