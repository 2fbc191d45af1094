#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/ZYMIDOM.h"
#include "platform/dom/NodeAnchor.h"

namespace ZYMDom {

/// A live list: the children of a node, or the elements of one name below it. It remembers where it was asked last, so
/// that walking it by index visits every node once; a change of the tree's structure makes it forget.
class DomNodeList final : public ZYMIDOMNodeList {
  ZYM_DECLARE_COMPONENT(DomNodeList);

 public:
  explicit DomNodeList(const NodeAnchor& root);
  /// name "*" stands for every name.
  DomNodeList(const NodeAnchor& root, std::string name);

  HRESULT item(int index, ZYMIDOMNode_var& node) override;
  HRESULT getLength(int& length) override;

 private:
  pugi::xml_node First() const;
  pugi::xml_node After(pugi::xml_node node) const;
  pugi::xml_node Before(pugi::xml_node node) const;
  bool Matches(pugi::xml_node node) const;
  void ForgetWhenChanged();
  void GoTo(int index);
  bool StepForward();

  NodeAnchor root_;
  // Without a name it lists the children.
  std::optional<std::string> name_;
  std::uint64_t revision_;
  pugi::xml_node last_;
  int lastIndex_ = 0;
  std::optional<int> length_;
};

}  // namespace ZYMDom
