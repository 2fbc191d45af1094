#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <pugixml.hpp>
#include <string_view>

namespace ZYMDom {

/// What was walked of the attributes of the element that was asked last, or of the elements below it: an object is
/// asked for a dozen of its attributes in a row, a record for each of its texts. To be forgotten with every change of
/// the tree's structure.
template <typename Item, std::size_t Most>
class KnownItems {
 public:
  void Forget() noexcept { element_ = {}; }

  /// The first attribute or element of that name; null when there is none. next: the item behind one, the first behind
  /// a null one.
  template <typename Next>
  Item Find(pugi::xml_node element, const char* name, const Next& next) {
    if (element_ != element) {
      element_ = element;
      count_ = 0;
    }
    const std::string_view initials(initials_.data(), count_);
    for (std::size_t i = 0; (i = initials.find(*name, i)) != std::string_view::npos; ++i) {
      if (std::strcmp(names_[i], name) == 0) {
        return items_[i];
      }
    }
    for (Item item = next(count_ == 0 ? Item() : items_[count_ - 1]); item; item = next(item)) {
      const char* const found = item.name();
      Know(found, item);
      if (*found == *name && std::strcmp(found, name) == 0) {
        return item;
      }
    }
    return {};
  }

  /// To be told of an item that is new behind all others and that Find has just not found.
  void Know(const char* name, Item item) {
    if (count_ < Most) {
      initials_[count_] = *name;
      names_[count_] = name;
      items_[count_] = item;
      ++count_;
    }
  }

 private:
  pugi::xml_node element_;
  std::size_t count_ = 0;
  // The first character tells most names apart.
  std::array<char, Most> initials_{};
  std::array<const char*, Most> names_{};
  std::array<Item, Most> items_;
};

}  // namespace ZYMDom
