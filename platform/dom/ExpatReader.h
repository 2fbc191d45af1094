#pragma once

#include <expat.h>

#include <cstddef>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace ZYMDom {

/// Judges any XML text and builds its tree. White space outside the root element is dropped, a document type keeps its
/// own text, everything else is in the tree as it was written. No entity may be declared or left undeclared, so nothing
/// is ever expanded or fetched.
class ExpatReader {
 public:
  /// document must be empty. After false it is unspecified, and Reason tells why.
  bool Read(std::string_view bytes, pugi::xml_document& document);
  /// "line:column: reason", both counted from 1.
  const std::string& Reason() const noexcept { return reason_; }
  /// Whether memory that ran out is the reason, which says nothing of the text.
  bool RanOutOfMemory() const noexcept { return ranOutOfMemory_; }

 private:
  struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  void Begin(std::string_view bytes, pugi::xml_document& document);
  static void SetHandlers(XML_Parser parser);
  bool Feed(std::string_view bytes);
  std::size_t Consumed() const;
  void Refuse(const char* reason);
  void RefuseUnwritable(std::string_view name);
  void ExplainHere(const char* reason);
  void Explain(std::size_t line, std::size_t column, const char* reason);

  void StartElement(const char* name, const char** attributes);
  void EndElement();
  void ProcessingInstruction(const char* target, const char* value);
  void Comment(const char* text);
  void Undispatched(std::string_view markup);
  void CountDeclaredAttributes(std::string_view token);
  void SpendSteps(std::size_t steps);
  void EndDoctype();
  void EndText(pugi::xml_node_type type);
  pugi::xml_node Append(pugi::xml_node_type type);
  std::string CurrentMarkup();
  static ExpatReader& Self(void* reader) { return *static_cast<ExpatReader*>(reader); }

  std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
  pugi::xml_node parent_;
  std::string text_;
  std::string doctype_;
  std::string* markup_ = nullptr;
  bool inDoctype_ = false;
  bool inAttributeList_ = false;
  // In the document type, for whatever elements.
  std::size_t declaredAttributes_ = 0;
  std::size_t stepsLeft_ = 0;
  std::size_t defaultedBytes_ = 0;
  std::string reason_;
  bool ranOutOfMemory_ = false;
};

}  // namespace ZYMDom
