#pragma once

#include <expat.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace ZYMDom {

/// Judges any XML text, whatever its encoding. No entity may be declared or left undeclared, so nothing is ever
/// expanded or fetched.
class ExpatJudge {
 public:
  /// After false, Reason tells why. Throws std::bad_alloc, which says nothing of the text.
  bool Accepts(std::string_view bytes);
  /// "line:column: reason", both counted from 1.
  const std::string& Reason() const noexcept { return reason_; }
  /// The text that was accepted last, as UTF-8. What takes more to understand than the text of the node itself is
  /// settled in it: line ends in processing instructions, and white space in attributes of declared types.
  std::string TakeText() noexcept { return std::move(text_); }

 private:
  struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  template <auto Handler, typename... Arguments>
  static void Call(void* judge, Arguments... arguments);
  void Begin(std::string_view bytes);
  bool Feed(std::string_view bytes);
  std::size_t Consumed() const;
  void Refuse(const char* reason);
  void RefuseUnwritable(std::string_view name);
  void ExplainHere(const char* reason);
  void Explain(std::size_t line, std::size_t column, const char* reason);

  void StartElement(const char* name, const char** attributes);
  void WriteTag(const char* name, const char** attributes, std::string_view end);
  void ProcessingInstruction(const char* target, const char* value);
  void Markup(const char* text, int length);
  void SkippedEntity(const char* name, int isParameter);
  void CountDeclaredAttributes(std::string_view token);
  void SpendSteps(std::size_t steps);
  void EndDoctype();

  std::unique_ptr<XML_ParserStruct, FreeParser> parser_;
  std::string text_;
  // Where the document type begins in the text.
  std::size_t doctype_ = std::string::npos;
  bool inDoctype_ = false;
  bool inAttributeList_ = false;
  bool inRoot_ = false;
  // In the document type, for whatever elements.
  std::size_t declaredAttributes_ = 0;
  std::size_t stepsLeft_ = 0;
  std::string reason_;
  bool ranOutOfMemory_ = false;
};

}  // namespace ZYMDom
