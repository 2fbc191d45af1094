#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <vector>

namespace ZYMDom {

class DomStorage;

/// A hold on one node of a tree, the part that every handle of a node has. A tree lives as long as a hold on any of its
/// nodes. When a node is taken over by another tree, all holds on it move along.
class NodeAnchor {
 public:
  NodeAnchor(DomStorage& storage, pugi::xml_node node);
  ~NodeAnchor();
  NodeAnchor(const NodeAnchor&) = delete;
  NodeAnchor& operator=(const NodeAnchor&) = delete;

  DomStorage& Storage() const noexcept { return *storage_; }
  pugi::xml_node Node() const noexcept { return node_; }
  /// The tree that it leaves is destroyed when this was the last hold on it.
  void MoveTo(DomStorage& storage, pugi::xml_node node);

 private:
  friend class AnchorTable;
  void Leave();

  DomStorage* storage_;
  pugi::xml_node node_;
  // The links of the storage's table of anchors.
  NodeAnchor* next_ = nullptr;
  NodeAnchor** link_ = nullptr;
};

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
