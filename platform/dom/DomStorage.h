#pragma once

#include <cstddef>
#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "platform/HRESULT.h"
#include "platform/dom/AnchorTable.h"
#include "platform/dom/KnownItems.h"

namespace ZYMDom {

/// One tree. It destroys itself with its last anchor; until the first is made it belongs to its creator.
///
/// Nodes that stand nowhere (created but not appended yet, or left behind when another tree took them over) hang below
/// a holder, the hidden first child of the document. No node is destroyed before the whole tree is: cursors stay valid,
/// and the destruction of a deep subtree need not recurse.
class DomStorage {
 public:
  AnchorTable& Anchors() noexcept { return anchors_; }
  pugi::xml_document& Document() noexcept { return document_; }
  /// Grows with every change of the structure. Across a node's move to another tree it grows too.
  std::uint64_t Revision() const noexcept { return revision_; }

  /// Becomes the tree of the part of a well-formed text that begins there. Throws std::bad_alloc.
  void Load(std::string text, std::size_t begin);

  /// Null where there is none; the holder is never answered.
  pugi::xml_node FirstChild(pugi::xml_node node) const {
    const pugi::xml_node first = node.first_child();
    return first == holder_ ? first.next_sibling() : first;
  }
  pugi::xml_node RootElement() const;
  /// The element behind a node in document order, among those below root.
  pugi::xml_node NextElementBelow(pugi::xml_node root, pugi::xml_node node) const;

  /// The first element of that name below root, which is an element itself; null when there is none.
  pugi::xml_node FirstElementBelow(pugi::xml_node root, const char* name);
  pugi::xml_attribute Attribute(pugi::xml_node element, const char* name) {
    return attributes_.Find(element, name, [element](pugi::xml_attribute attribute) {
      return attribute ? attribute.next_attribute() : element.first_attribute();
    });
  }

  // Where memory runs out, these leave the tree as it was: they answer a null node, false or E_OUTOFMEMORY.

  bool SetAttribute(pugi::xml_node element, const char* name, std::string_view value) {
    if (pugi::xml_attribute present = Attribute(element, name)) {
      return present.set_value(value.data(), value.size());
    }
    pugi::xml_attribute added = element.append_attribute(name);
    const char* const ownName = added.name();
    // pugixml says nothing of the memory that a name lacked.
    if (*ownName == *name && added.set_value(value.data(), value.size())) {
      attributes_.Know(ownName, added);
      return true;
    }
    element.remove_attribute(added);
    return false;
  }
  /// A node that stands nowhere yet.
  pugi::xml_node NewElement(const char* name) { return AppendElement(Holder(), name); }
  pugi::xml_node NewText(const char* value);
  /// Makes a new element with one text the last child of parent.
  bool AppendTextElement(pugi::xml_node parent, const char* name, const char* value);
  static pugi::xml_node AppendElement(pugi::xml_node parent, const char* name);
  /// Makes the child the last child of parent, where such a node may stand. Its anchors stay on it. E_FAIL: it is
  /// parent or holds it.
  HRESULT Move(pugi::xml_node parent, NodeAnchor& child);
  /// The same for a node of another tree, with all below it and with the anchors of all of it.
  HRESULT TakeOver(pugi::xml_node parent, NodeAnchor& child);

 private:
  pugi::xml_node Holder();
  pugi::xml_node AppendCopy(pugi::xml_node parent, pugi::xml_node node);
  void StructureChanged(std::uint64_t revision) noexcept {
    revision_ = revision;
    attributes_.Forget();
    elements_.Forget();
  }
  void MoveAnchors(pugi::xml_node root, DomStorage& target, pugi::xml_node place);

  // The parsed tree points into the text.
  std::string text_;
  pugi::xml_document document_;
  pugi::xml_node holder_;
  AnchorTable anchors_;
  std::uint64_t revision_ = 0;
  KnownItems<pugi::xml_attribute, 16> attributes_;
  KnownItems<pugi::xml_node, 8> elements_;
};

}  // namespace ZYMDom
