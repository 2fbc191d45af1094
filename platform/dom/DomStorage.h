#pragma once

#include <cstddef>
#include <cstdint>
#include <pugixml.hpp>
#include <string>

#include "platform/dom/AnchorTable.h"
#include "platform/dom/KnownAttributes.h"
#include "platform/dom/KnownElements.h"

namespace ZYMDom {

/// One tree. It destroys itself with its last anchor; until the first is made it belongs to its creator.
///
/// Nodes that stand nowhere (created but not appended yet, or left behind when another tree took them over) hang below
/// a holder, the hidden last child of the document. No node is destroyed before the whole tree is: cursors stay valid,
/// and the destruction of a deep subtree need not recurse.
class DomStorage {
 public:
  KnownAttributes& Attributes() noexcept { return knownAttributes_; }
  AnchorTable& Anchors() noexcept { return anchors_; }
  pugi::xml_document& Document() noexcept { return document_; }
  /// Grows with every change of the structure. Across a node's move to another tree it grows too.
  std::uint64_t Revision() const noexcept { return revision_; }

  /// Becomes the tree of a plain text whose root element begins at root. false: out of memory.
  bool LoadPlain(std::string text, std::size_t root);

  /// Null where there is none; the holder is never answered.
  pugi::xml_node FirstChild(pugi::xml_node node) const { return Visible(node.first_child()); }
  pugi::xml_node NextSibling(pugi::xml_node node) const { return Visible(node.next_sibling()); }
  pugi::xml_node RootElement() const;
  /// The neighbours of a node in document order, among the nodes below root.
  pugi::xml_node NextBelow(pugi::xml_node root, pugi::xml_node node) const;
  /// The first element of that name below root, which is an element itself; null when there is none.
  pugi::xml_node FirstElementBelow(pugi::xml_node root, const char* name) {
    return knownElements_.FindFirst(root, revision_, name);
  }
  pugi::xml_node PreviousBelow(pugi::xml_node root, pugi::xml_node node) const;

  /// A node that stands nowhere yet.
  pugi::xml_node NewElement(const char* name);
  pugi::xml_node NewText(const char* value);
  /// Makes a new element with one text the last child of parent.
  void AppendTextElement(pugi::xml_node parent, const char* name, const char* value);
  /// Makes a node of this tree the last child of parent; false when it cannot stand there. Its anchors stay on it.
  bool Move(pugi::xml_node parent, NodeAnchor& child);
  /// Makes a node of another tree the last child of parent, with all below it and with the anchors of all of it.
  bool TakeOver(pugi::xml_node parent, NodeAnchor& child);

 private:
  pugi::xml_node Visible(pugi::xml_node node) const { return node == holder_ ? pugi::xml_node() : node; }
  pugi::xml_node Holder();
  void MoveAnchors(pugi::xml_node from, DomStorage& target, pugi::xml_node to);

  // The parsed tree points into the text.
  std::string text_;
  pugi::xml_document document_;
  pugi::xml_node holder_;
  AnchorTable anchors_;
  std::uint64_t revision_ = 0;
  KnownAttributes knownAttributes_;
  KnownElements knownElements_;
};

}  // namespace ZYMDom
