#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZYMDom {

/// Tells in one pass whether a text is well-formed XML of the plain kind that record files and most requests are:
/// UTF-8, elements and attributes with ASCII names, attribute values in double quotes, text, and references to the five
/// predefined entities and to tab, newline and carriage return. What is plain needs no other judge. Everything else
/// (comments, CDATA sections, document types, other encodings, raw carriage returns, mistakes) is just not plain.
class PlainXml {
 public:
  /// The offset of the root element when the text is plain.
  std::optional<std::size_t> RootOf(const std::string& text);

 private:
  bool Skip(std::string_view word);
  bool Skip(char c);
  void SkipSpace();
  void SkipAll(unsigned char kind);
  bool Declaration();
  bool Tree();
  bool StartTag();
  bool Attribute(std::size_t number);
  bool EndTag();
  std::string_view Name();
  bool Characters(unsigned char kind, char end);
  bool Reference();

  // An element with more attributes is not plain: they are compared each with each.
  static constexpr std::size_t MostAttributes = 32;

  const char* at_ = nullptr;
  const char* end_ = nullptr;
  std::vector<std::string_view> open_;
  std::array<std::string_view, MostAttributes> attributes_;
};

}  // namespace ZYMDom
