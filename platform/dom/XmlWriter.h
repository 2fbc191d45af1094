#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <string_view>

#include "platform/dom/DomStorage.h"

namespace ZYMDom {

/// What becomes of each byte of a value.
using XmlEscapes = std::array<unsigned char, 256>;

/// Writes a tree as UTF-8 text that reads back as the same tree. What XML cannot hold is refused.
class XmlWriter {
 public:
  using Sink = std::function<bool(std::string_view)>;

  /// The text is collected in text. With a sink it is handed over, and text emptied, whenever a piece is complete; when
  /// the sink answers false, writing ends, which is no failure. An empty sink is none.
  XmlWriter(std::string& text, const Sink& sink) : text_(text), sink_(sink) {}

  /// A document with all beside its root element, or an element as the root of a document. After false, Reason tells
  /// why.
  bool Write(const DomStorage& storage, pugi::xml_node node);
  const std::string& Reason() const noexcept { return reason_; }

 private:
  void WriteDocument(const DomStorage& storage, pugi::xml_node document);
  void WriteTree(pugi::xml_node root);
  /// Both answer the first of the nodes in it that are still to be written; null when it is written whole.
  pugi::xml_node Open(pugi::xml_node node);
  pugi::xml_node OpenElement(pugi::xml_node element);
  void Close(pugi::xml_node element);
  void Section(std::string_view begin, const char* value, std::string_view forbidden, std::string_view end);
  void Name(const char* name);
  bool IsName(std::string_view name);
  void Characters(const char* text, const XmlEscapes& escapes);
  std::string CurrentPlace() const;
  void Refuse(std::string reason);
  void HandOver(std::size_t atLeast);
  bool Done() const noexcept { return stopped_ || !reason_.empty(); }

  std::string& text_;
  const Sink& sink_;
  pugi::xml_node current_;
  bool stopped_ = false;
  std::string reason_;
  std::set<std::string, std::less<>> names_;
};

}  // namespace ZYMDom
