#pragma once

#include <pugixml.hpp>

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

}  // namespace ZYMDom
