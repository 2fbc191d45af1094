#pragma once

#include <array>
#include <cstddef>
#include <pugixml.hpp>

namespace ZYMDom {

/// The attributes of the element that was asked about last, as far as they were walked: an object is asked for a dozen
/// of its attributes in a row. Only Add may give that element another attribute.
class KnownAttributes {
 public:
  /// Null when there is none.
  pugi::xml_attribute Find(pugi::xml_node element, const char* name);
  /// For a name that Find has just not found.
  pugi::xml_attribute Add(pugi::xml_node element, const char* name);

 private:
  struct Attribute {
    const char* name = nullptr;
    pugi::xml_attribute attribute;
  };
  void Know(const Attribute& attribute);

  // What lies behind the last of them is walked each time.
  static constexpr std::size_t Most = 16;

  pugi::xml_node element_;
  std::size_t count_ = 0;
  // The first character tells most names apart.
  std::array<char, Most> initials_{};
  std::array<Attribute, Most> attributes_;
};

}  // namespace ZYMDom
