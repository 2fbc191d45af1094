#include "platform/dom/AnchorTable.h"

#include <utility>

namespace ZYMDom {

void AnchorTable::Add(NodeAnchor& anchor) {
  if (size_ == chains_.size()) {
    Grow();
  }
  Link(anchor);
  ++size_;
}

void AnchorTable::Remove(NodeAnchor& anchor) noexcept {
  *anchor.link_ = anchor.next_;
  if (anchor.next_ != nullptr) {
    anchor.next_->link_ = anchor.link_;
  }
  --size_;
}

void AnchorTable::MoveAll(pugi::xml_node node, DomStorage& target, pugi::xml_node place) {
  for (NodeAnchor* anchor = ChainOf(node); anchor != nullptr;) {
    NodeAnchor* const next = anchor->next_;
    if (anchor->node_ == node) {
      anchor->MoveTo(target, place);
    }
    anchor = next;
  }
}

NodeAnchor*& AnchorTable::ChainOf(pugi::xml_node node) noexcept {
  const std::size_t hash = node.hash_value();
  return chains_[(hash ^ hash >> 7U) & (chains_.size() - 1)];
}

void AnchorTable::Link(NodeAnchor& anchor) noexcept {
  NodeAnchor*& chain = ChainOf(anchor.node_);
  anchor.next_ = chain;
  anchor.link_ = &chain;
  if (chain != nullptr) {
    chain->link_ = &anchor.next_;
  }
  chain = &anchor;
}

void AnchorTable::Grow() {
  const std::vector<NodeAnchor*> old = std::exchange(chains_, std::vector<NodeAnchor*>(chains_.size() * 2));
  for (NodeAnchor* chain : old) {
    while (chain != nullptr) {
      Link(*std::exchange(chain, chain->next_));
    }
  }
}

}  // namespace ZYMDom
