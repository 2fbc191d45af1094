#include "platform/dom/DomStorage.h"

#include <algorithm>
#include <cerrno>
#include <new>
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

/// The next node below root, an element, without a visit to the text that an element begins with: most elements of a
/// record hold nothing else. The holder of a tree stands below the document alone and is never met.
pugi::xml_node NextFrom(pugi::xml_node root, pugi::xml_node node) {
  pugi::xml_node next = node.first_child();
  if (next && next.type() == pugi::node_pcdata) {
    next = next.next_sibling();
  }
  for (; !next && node != root; node = node.parent()) {
    next = node.next_sibling();
  }
  return next;
}

}  // namespace

void DomStorage::Load(std::string text, std::size_t begin) {
  text_ = std::move(text);
  constexpr unsigned int AsItStands = pugi::parse_cdata | pugi::parse_comments | pugi::parse_doctype | pugi::parse_eol |
                                      pugi::parse_escapes | pugi::parse_pi | pugi::parse_wconv_attribute |
                                      pugi::parse_ws_pcdata;
  if (!document_.load_buffer_inplace(text_.data() + begin, text_.size() - begin, AsItStands, pugi::encoding_utf8)) {
    throw std::bad_alloc();
  }
}

pugi::xml_node DomStorage::NextBelow(pugi::xml_node root, pugi::xml_node node) const {
  pugi::xml_node next = node.first_child();
  for (; !next && node != root; node = node.parent()) {
    next = node.next_sibling();
  }
  return Visible(next);
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

pugi::xml_node DomStorage::FirstElementBelow(pugi::xml_node root, const char* name) {
  return elements_.Find(root, name, [root](pugi::xml_node node) { return NextFrom(root, node ? node : root); });
}

pugi::xml_node DomStorage::AppendElement(pugi::xml_node parent, const char* name) {
  pugi::xml_node element = parent.append_child(pugi::node_element);
  if (element.set_name(name)) {
    return element;
  }
  parent.remove_child(element);
  return {};
}

pugi::xml_node DomStorage::AppendText(pugi::xml_node parent, const char* value) {
  pugi::xml_node text = parent.append_child(pugi::node_pcdata);
  if (text.set_value(value)) {
    return text;
  }
  parent.remove_child(text);
  return {};
}

bool DomStorage::AppendTextElement(pugi::xml_node parent, const char* name, const char* value) {
  pugi::xml_node element = parent.append_child(pugi::node_element);
  const bool isWhole = element.set_name(name) && element.append_child(pugi::node_pcdata).set_value(value);
  if (isWhole) {
    StructureChanged(revision_ + 1);
  } else {
    parent.remove_child(element);
  }
  return isWhole;
}

HRESULT DomStorage::Move(pugi::xml_node parent, NodeAnchor& child) {
  const pugi::xml_node old = child.Node();
  if (old.first_child() || old == parent || !IsDeep(parent)) {
    const bool beforeHolder = parent == document_ && holder_;
    const pugi::xml_node moved = beforeHolder ? parent.insert_move_before(old, holder_) : parent.append_move(old);
    StructureChanged(revision_ + 1);
    return moved ? S_OK : E_FAIL;
  }
  // pugixml looks at all nodes above parent before it moves a node. One without children is above none, and is copied
  // as soon.
  const pugi::xml_node copy = AppendCopy(parent, old);
  if (!copy) {
    return E_OUTOFMEMORY;
  }
  holder_.append_move(old);
  StructureChanged(revision_ + 1);
  anchors_.MoveAll(old, *this, copy);
  return S_OK;
}

HRESULT DomStorage::TakeOver(pugi::xml_node parent, NodeAnchor& child) {
  DomStorage& source = child.Storage();
  const NodeAnchor sourceStays(source, source.document_);
  const pugi::xml_node old = child.Node();
  const pugi::xml_node copy = source.Holder() ? AppendCopy(parent, old) : pugi::xml_node();
  if (!copy) {
    return E_OUTOFMEMORY;
  }
  source.holder_.append_move(old);
  source.StructureChanged(source.revision_ + 1);
  StructureChanged(std::max(revision_, source.revision_) + 1);
  child.MoveTo(*this, copy);
  source.MoveAnchors(old, *this, copy);
  return S_OK;
}

/// Null when it could not be copied whole, which pugixml does not say, but malloc.
pugi::xml_node DomStorage::AppendCopy(pugi::xml_node parent, pugi::xml_node node) {
  if (!Holder()) {
    return {};
  }
  errno = 0;
  pugi::xml_node copy = parent == document_ ? parent.insert_copy_before(node, holder_) : parent.append_copy(node);
  if (errno == ENOMEM) {
    holder_.append_move(copy);
    return {};
  }
  return copy;
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
