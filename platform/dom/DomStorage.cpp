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

/// first, a node in this one, or without it what follows this one; null at the end of what is below root.
pugi::xml_node OrNext(pugi::xml_node first, pugi::xml_node node, pugi::xml_node root) {
  for (; !first && node != root; node = node.parent()) {
    first = node.next_sibling();
  }
  return first;
}

/// Answers the node, or takes it out again where memory ran out in it.
pugi::xml_node KeptIf(bool isWhole, pugi::xml_node node) {
  if (isWhole) {
    return node;
  }
  node.parent().remove_child(node);
  return {};
}

}  // namespace

void DomStorage::Load(std::string text, std::size_t begin) {
  text_ = std::move(text);
  constexpr unsigned int AsItStands = (pugi::parse_full | pugi::parse_ws_pcdata) & ~pugi::parse_declaration;
  if (!document_.load_buffer_inplace(text_.data() + begin, text_.size() - begin, AsItStands, pugi::encoding_utf8)) {
    throw std::bad_alloc();
  }
}

pugi::xml_node DomStorage::RootElement() const {
  return document_.find_child(
      [this](pugi::xml_node node) { return node.type() == pugi::node_element && node != holder_; });
}

/// Most elements of a record hold a text and nothing else, so the text that an element begins with is not visited.
pugi::xml_node DomStorage::NextElementBelow(pugi::xml_node root, pugi::xml_node node) const {
  do {
    pugi::xml_node inside = node.first_child();
    if (inside.type() == pugi::node_pcdata || inside == holder_) {
      inside = inside.next_sibling();
    }
    node = OrNext(inside, node, root);
  } while (node && node.type() != pugi::node_element);
  return node;
}

pugi::xml_node DomStorage::FirstElementBelow(pugi::xml_node root, const char* name) {
  return elements_.Find(
      root, name, [this, root](pugi::xml_node element) { return NextElementBelow(root, element ? element : root); });
}

pugi::xml_node DomStorage::AppendElement(pugi::xml_node parent, const char* name) {
  pugi::xml_node element = parent.append_child(pugi::node_element);
  return KeptIf(element.set_name(name), element);
}

pugi::xml_node DomStorage::NewText(const char* value) {
  pugi::xml_node text = Holder().append_child(pugi::node_pcdata);
  return KeptIf(text.set_value(value), text);
}

bool DomStorage::AppendTextElement(pugi::xml_node parent, const char* name, const char* value) {
  pugi::xml_node element = parent.append_child(pugi::node_element);
  StructureChanged(revision_ + 1);
  return KeptIf(element.set_name(name) && element.append_child(pugi::node_pcdata).set_value(value), element);
}

HRESULT DomStorage::Move(pugi::xml_node parent, NodeAnchor& child) {
  const pugi::xml_node old = child.Node();
  if (old.first_child() || old == parent || !IsDeep(parent)) {
    StructureChanged(revision_ + 1);
    return parent.append_move(old) ? S_OK : E_FAIL;
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
  source.MoveAnchors(old, *this, copy);
  return S_OK;
}

/// Null when it could not be copied whole, which pugixml does not say, but malloc.
pugi::xml_node DomStorage::AppendCopy(pugi::xml_node parent, pugi::xml_node node) {
  if (!Holder()) {
    return {};
  }
  errno = 0;
  pugi::xml_node copy = parent.append_copy(node);
  if (errno == ENOMEM) {
    holder_.append_move(copy);
    return {};
  }
  return copy;
}

pugi::xml_node DomStorage::Holder() {
  if (!holder_) {
    holder_ = document_.prepend_child(pugi::node_element);
  }
  return holder_;
}

/// root and place are the roots of two subtrees of one shape.
void DomStorage::MoveAnchors(pugi::xml_node root, DomStorage& target, pugi::xml_node place) {
  constexpr std::size_t OwnAnchorOfTakeOver = 1;
  for (pugi::xml_node from = root, to = place; from && anchors_.Size() > OwnAnchorOfTakeOver;) {
    anchors_.MoveAll(from, target, to);
    from = OrNext(from.first_child(), from, root);
    to = OrNext(to.first_child(), to, place);
  }
}

}  // namespace ZYMDom
