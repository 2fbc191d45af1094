#pragma once

#include <expat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ZYMDom {

struct FreeExpatParser {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ExpatParser = std::unique_ptr<XML_ParserStruct, FreeExpatParser>;

/// Judges any XML text, whatever its encoding. No entity may be declared or left undeclared, so nothing is ever
/// expanded or fetched. Both operations throw std::bad_alloc, which says nothing of the text.
class ExpatJudge {
 public:
  /// The text as UTF-8. What takes more to understand than the text of the node itself is settled in it: line ends in
  /// processing instructions, and white space in attributes of declared types. Without a value reason tells why,
  /// "line:column: reason", both counted from 1.
  std::optional<std::string> Accept(std::string_view bytes, std::string& reason);
  /// To be asked of what holds no markup.
  static bool IsName(std::string_view utf8);

 private:
  // Its room serves the next text.
  ExpatParser parser_;
};

}  // namespace ZYMDom
