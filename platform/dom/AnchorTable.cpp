#include "platform/dom/AnchorTable.h"

#include <new>
#include <utility>

#include "platform/dom/DomStorage.h"

namespace ZYMDom {

NodeAnchor::NodeAnchor(DomStorage& storage, pugi::xml_node node) : storage_(&storage), node_(node) {
  storage.Anchors().Add(*this);
}

NodeAnchor::~NodeAnchor() { Leave(); }

void NodeAnchor::MoveTo(DomStorage& storage, pugi::xml_node node) {
  Leave();
  storage_ = &storage;
  node_ = node;
  storage.Anchors().Add(*this);
}

void NodeAnchor::Leave() {
  storage_->Anchors().Remove(*this);
  if (storage_->Anchors().Size() == 0) {
    delete storage_;
  }
}

void AnchorTable::Add(NodeAnchor& anchor) noexcept {
  if (++size_ > chains_.size()) {
    Grow();
  }
  Link(anchor);
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

/// Where memory runs out, the chains just get longer.
void AnchorTable::Grow() noexcept {
  std::vector<NodeAnchor*> old;
  try {
    old.resize(chains_.size() * 2);
  } catch (const std::bad_alloc&) {
    return;
  }
  old.swap(chains_);
  for (NodeAnchor* chain : old) {
    while (chain != nullptr) {
      Link(*std::exchange(chain, chain->next_));
    }
  }
}

}  // namespace ZYMDom
