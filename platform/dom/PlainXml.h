#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace ZYMDom {

/// Tells in one pass whether a text is well-formed XML of the plain kind that record files and most requests are:
/// UTF-8, elements and attributes with ASCII names, attribute values in double quotes, text, and references to the five
/// predefined entities and to tab, newline and carriage return. Answers the offset of its root element. What is plain
/// needs no other judge. Everything else (comments, CDATA sections, document types, other encodings, raw carriage
/// returns, mistakes) is just not plain, and has no answer.
std::optional<std::size_t> PlainRoot(const std::string& text);

}  // namespace ZYMDom
