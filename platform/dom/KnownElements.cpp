#include "platform/dom/KnownElements.h"

#include <cstring>

namespace ZYMDom {
namespace {

/// The next node below root, an element, without a visit to the text that an element begins with: most elements of a
/// record hold nothing else. The holder of a tree stands below the document alone and is never met.
pugi::xml_node Next(pugi::xml_node root, pugi::xml_node node) {
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

pugi::xml_node KnownElements::FindFirst(pugi::xml_node root, std::uint64_t revision, const char* name) {
  if (root_ != root || revision_ != revision) {
    Walk(root, revision);
  }
  for (std::size_t i = 0; i < count_; ++i) {
    if (initials_[i] == *name && std::strcmp(elements_[i].name(), name) == 0) {
      return elements_[i];
    }
  }
  pugi::xml_node node = rest_;
  while (node && (*node.name() != *name || std::strcmp(node.name(), name) != 0 || node.type() != pugi::node_element)) {
    node = Next(root, node);
  }
  return node;
}

void KnownElements::Walk(pugi::xml_node root, std::uint64_t revision) {
  root_ = root;
  revision_ = revision;
  count_ = 0;
  rest_ = root.first_child();
  for (; rest_ && count_ < Most; rest_ = Next(root, rest_)) {
    if (rest_.type() == pugi::node_element) {
      initials_[count_] = *rest_.name();
      elements_[count_] = rest_;
      ++count_;
    }
  }
}

}  // namespace ZYMDom
