#pragma once

#include <cstddef>
#include <vector>

#include "platform/dom/NodeAnchor.h"

namespace ZYMDom {

/// The anchors of one tree, found by their node. The anchors themselves are the links, so adding and removing one costs
/// a few stores.
class AnchorTable {
 public:
  AnchorTable() : chains_(16) {}

  void Add(NodeAnchor& anchor) noexcept;
  void Remove(NodeAnchor& anchor) noexcept;
  /// Moves every anchor on node to another tree. At least one anchor must be left here, or this table is gone.
  void MoveAll(pugi::xml_node node, DomStorage& target, pugi::xml_node place);
  std::size_t Size() const noexcept { return size_; }

 private:
  NodeAnchor*& ChainOf(pugi::xml_node node) noexcept;
  void Link(NodeAnchor& anchor) noexcept;
  void Grow() noexcept;

  // A power of two.
  std::vector<NodeAnchor*> chains_;
  std::size_t size_ = 0;
};

}  // namespace ZYMDom
