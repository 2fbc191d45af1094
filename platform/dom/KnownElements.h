#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <pugixml.hpp>

namespace ZYMDom {

/// The first elements below the element that was asked about last: a record is read name by name from one element.
class KnownElements {
 public:
  /// The first element of that name below root in document order; null when there is none. revision: of the tree; a
  /// change of it makes everything forgotten.
  pugi::xml_node FindFirst(pugi::xml_node root, std::uint64_t revision, const char* name);

 private:
  void Walk(pugi::xml_node root, std::uint64_t revision);

  // As many as a record has texts, and some.
  static constexpr std::size_t Most = 8;

  pugi::xml_node root_;
  std::uint64_t revision_ = 0;
  std::size_t count_ = 0;
  // The first character tells most names apart.
  std::array<char, Most> initials_{};
  std::array<pugi::xml_node, Most> elements_;
  // Where to look on behind them.
  pugi::xml_node rest_;
};

}  // namespace ZYMDom
