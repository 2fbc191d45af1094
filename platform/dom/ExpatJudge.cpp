#include "platform/dom/ExpatJudge.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <new>
#include <random>
#include <utility>

namespace ZYMDom {
namespace {

constexpr std::size_t None = std::string::npos;

// Drawn once: expat would ask the system for fresh random bytes at every document.
unsigned long HashSalt() {
  static const unsigned long salt = std::random_device()() | 1UL;
  return salt;
}

bool HoldsUndeclaredReference(std::string_view markup) {
  constexpr std::array<std::string_view, 6> Known = {"#", "amp;", "lt;", "gt;", "quot;", "apos;"};
  for (std::size_t at = markup.find('&'); at != None; at = markup.find('&', at + 1)) {
    const std::string_view reference = markup.substr(at + 1);
    if (std::none_of(Known.begin(), Known.end(), [reference](auto known) { return reference.starts_with(known); })) {
      return true;
    }
  }
  return false;
}

/// The letters that expat takes for letters of names in UTF-16 and ISO-8859-1 but, as XML does, not in UTF-8.
bool HoldsLetterOutsideNames(std::string_view text) {
  constexpr std::array<std::string_view, 3> Letters = {"\xC2\xAA", "\xC2\xB5", "\xC2\xBA"};
  return text.find('\xC2') != None &&
         std::any_of(Letters.begin(), Letters.end(), [text](auto letter) { return text.find(letter) != None; });
}

ExpatParser NewParser(const char* encoding) {
  ExpatParser parser(XML_ParserCreate(encoding));
  return parser != nullptr ? std::move(parser) : throw std::bad_alloc();
}

XML_Error ErrorOf(XML_Parser parser) {
  const XML_Error error = XML_GetErrorCode(parser);
  return error != XML_ERROR_NO_MEMORY ? error : throw std::bad_alloc();
}

bool IsWellFormed(const std::string& utf8) {
  const ExpatParser parser = NewParser("UTF-8");
  XML_Parse(parser.get(), utf8.data(), static_cast<int>(utf8.size()), 1);
  return ErrorOf(parser.get()) == XML_ERROR_NONE;
}

std::string Explanation(std::size_t line, std::size_t column, const char* reason) {
  return std::to_string(line) + ':' + std::to_string(column) + ": " + reason;
}

/// expat takes whatever follows the first half of a surrogate pair for its second half. Explains where one stands
/// alone; empty for none.
std::string UnpairedSurrogate(std::string_view bytes) {
  const bool littleEndian = bytes.starts_with("\xFF\xFE") || bytes.starts_with(std::string_view("<\0", 2));
  const bool bigEndian = bytes.starts_with("\xFE\xFF") || bytes.starts_with(std::string_view("\0<", 2));
  if (!littleEndian && !bigEndian) {
    return {};
  }
  const auto unitAt = [&](std::size_t at) {
    const unsigned int first = static_cast<unsigned char>(bytes[at]);
    const unsigned int second = static_cast<unsigned char>(bytes[at + 1]);
    return littleEndian ? first | second << 8U : first << 8U | second;
  };
  const bool hasMark = bytes.front() != '<' && bytes.front() != '\0';
  std::size_t line = 1;
  std::size_t column = 1;
  for (std::size_t at = hasMark ? 2 : 0; at + 1 < bytes.size(); at += 2, ++column) {
    const unsigned int unit = unitAt(at);
    if (unit == '\n') {
      ++line;
      column = 0;
    } else if ((unit & 0xFC00U) == 0xD800U) {
      at += 2;
      if (at + 1 >= bytes.size() || (unitAt(at) & 0xFC00U) != 0xDC00U) {
        return Explanation(line, column, XML_ErrorString(XML_ERROR_INVALID_TOKEN));
      }
    }
  }
  return {};
}

/// The judgement of one text, which it writes down as UTF-8 while expat reads it.
class Judgement {
 public:
  Judgement(XML_Parser parser, std::string& reason) : parser_(parser), reason_(reason) {
    XML_SetHashSalt(parser_, HashSalt());
    XML_SetUserData(parser_, this);
    XML_SetStartElementHandler(parser_, &Call<&Judgement::StartElement>);
    XML_SetProcessingInstructionHandler(parser_, &Call<&Judgement::ProcessingInstruction>);
    XML_SetDefaultHandler(parser_, &Call<&Judgement::Markup>);
    XML_SetEndDoctypeDeclHandler(parser_, &Call<&Judgement::EndDoctype>);
    // Without a handler that fetches, this only makes expat tell of parameter entities that it passes over.
    XML_SetParamEntityParsing(parser_, XML_PARAM_ENTITY_PARSING_ALWAYS);
    XML_SetSkippedEntityHandler(parser_, &Call<&Judgement::SkippedEntity>);
  }

  std::optional<std::string> Of(std::string_view bytes) {
    stepsLeft_ = (std::size_t{16} << 20U) + 16 * bytes.size();
    text_.reserve(bytes.size());
    if (Feed(bytes)) {
      return std::move(text_);
    }
    const XML_Error error = ErrorOf(parser_);
    if (ranOutOfMemory_) {
      throw std::bad_alloc();
    }
    Explain(XML_ErrorString(error));
    return std::nullopt;
  }

 private:
  /// expat is written in C: nothing may be thrown through it.
  template <auto Handler, typename... Arguments>
  static void Call(void* judgement, Arguments... arguments) {
    Judgement& self = *static_cast<Judgement*>(judgement);
    try {
      (self.*Handler)(arguments...);
    } catch (const std::exception&) {
      self.ranOutOfMemory_ = true;
      XML_StopParser(self.parser_, XML_FALSE);
    }
  }

  /// expat copies what it is fed, so a large text goes in by pieces. As it looks at an unfinished token from its
  /// beginning again with each of them, a piece is never shorter than what is there of such a token.
  bool Feed(std::string_view bytes) {
    constexpr std::size_t LeastPiece = std::size_t{1} << 20U;
    XML_Status status = XML_STATUS_OK;
    std::size_t fed = 0;
    do {
      const auto finished = static_cast<std::size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser_), 0));
      const std::string_view piece = bytes.substr(fed, std::max(LeastPiece, fed - finished));
      fed += piece.size();
      status = XML_Parse(parser_, piece.data(), static_cast<int>(piece.size()), fed == bytes.size() ? 1 : 0);
    } while (status == XML_STATUS_OK && fed < bytes.size());
    return status == XML_STATUS_OK;
  }

  /// The first reason counts: once it is refused, a text gives other reasons too.
  void Explain(const char* reason) {
    if (reason_.empty()) {
      reason_ = Explanation(XML_GetCurrentLineNumber(parser_), XML_GetCurrentColumnNumber(parser_) + 1, reason);
    }
  }

  void Refuse(const char* reason) {
    Explain(reason);
    XML_StopParser(parser_, XML_FALSE);
  }

  void RefuseReference() { Refuse(XML_ErrorString(XML_ERROR_UNDEFINED_ENTITY)); }

  /// The writer could not write such a name so that it reads again.
  void RefuseUnwritable(std::string_view name) {
    if (HoldsLetterOutsideNames(name)) {
      Refuse("a name with a letter that names may not hold");
    }
  }

  void StartElement(const char* name, const char** attributes) {
    inRoot_ = true;
    RefuseUnwritable(name);
    for (const char** attribute = attributes; *attribute != nullptr; attribute += 2) {
      RefuseUnwritable(*attribute);
    }
    SpendSteps(declaredAttributes_);
    const std::size_t start = text_.size();
    XML_DefaultCurrent(parser_);
    // Where a document type names an external subset, expat drops undeclared references in attributes without a word.
    if (doctype_ != None && HoldsUndeclaredReference(std::string_view(text_).substr(start))) {
      RefuseReference();
    }
    if (declaredAttributes_ != 0) {
      const std::string_view end = text_.ends_with("/>") ? "/>" : ">";
      text_.resize(start);
      WriteTag(name, attributes);
      text_ += end;
    }
  }

  /// The white space in a value depends on the type that is declared for the attribute. Attributes that only have a
  /// declared default are left out.
  void WriteTag(const char* name, const char** attributes) {
    text_.append("<").append(name);
    const int specified = XML_GetSpecifiedAttributeCount(parser_);
    for (int at = 0; at < specified; at += 2) {
      text_.append(" ").append(attributes[at]).append("=\"");
      for (const char c : std::string_view(attributes[at + 1])) {
        if (std::string_view("&<\"\t\n\r").find(c) == None) {
          text_ += c;
        } else {
          text_.append("&#").append(std::to_string(c)).append(";");
        }
      }
      text_ += '"';
    }
  }

  void ProcessingInstruction(const char* target, const char* value) {
    if (inDoctype_) {
      XML_DefaultCurrent(parser_);
      return;
    }
    RefuseUnwritable(target);
    text_.append("<?").append(target).append(*value == '\0' ? "" : " ").append(value).append("?>");
  }

  /// Receives, as UTF-8, all markup and all text that no other handler is there for: of the document type a piece for
  /// each of its tokens.
  void Markup(const char* text, int length) {
    const std::string_view token(text, static_cast<std::size_t>(length));
    if (!inRoot_ && token == "<!DOCTYPE") {
      inDoctype_ = true;
      doctype_ = text_.size();
    }
    text_ += token;
    if (token == "<!ENTITY" && inDoctype_) {
      Refuse("entity declarations are not allowed");
    } else if (token == "<!ATTLIST" && inDoctype_) {
      attributeList_ = text_.size();
    } else if (attributeList_ != None) {
      AttributeListToken(token);
    }
  }

  /// Each declaration of an attribute ends with its default in quotes or with a word such as #IMPLIED; to count one
  /// twice does no harm. Only a default can hold a reference.
  void AttributeListToken(std::string_view token) {
    if (token == ">") {
      const std::string_view list = std::string_view(text_).substr(attributeList_);
      defaultsHoldReference_ = defaultsHoldReference_ || HoldsUndeclaredReference(list);
      attributeList_ = None;
    } else if (token.starts_with('#') || token.starts_with('"') || token.starts_with('\'')) {
      SpendSteps(++declaredAttributes_);
    }
  }

  /// expat walks all attributes that are declared for an element with each that is declared next, and with each element
  /// of that name. A text may make it do so often only in proportion to its length.
  void SpendSteps(std::size_t steps) {
    if (steps > stepsLeft_) {
      Refuse("too many attributes are declared");
    }
    stepsLeft_ -= std::min(steps, stepsLeft_);
  }

  void SkippedEntity(const char* /*name*/, int /*isParameter*/) { RefuseReference(); }

  void EndDoctype() {
    inDoctype_ = false;
    const std::string doctype = text_.substr(doctype_);
    if (HoldsLetterOutsideNames(doctype) && !IsWellFormed(doctype + "><a/>")) {
      RefuseUnwritable(doctype);
    }
    if (defaultsHoldReference_) {
      RefuseReference();
    }
    text_ += '>';
  }

  XML_Parser parser_;
  std::string& reason_;
  std::string text_;
  // Where the document type, and the list of declared attributes that is being read, begin in the text.
  std::size_t doctype_ = None;
  std::size_t attributeList_ = None;
  bool inDoctype_ = false;
  bool inRoot_ = false;
  bool defaultsHoldReference_ = false;
  // In the document type, for whatever elements.
  std::size_t declaredAttributes_ = 0;
  std::size_t stepsLeft_ = 0;
  bool ranOutOfMemory_ = false;
};

}  // namespace

std::optional<std::string> ExpatJudge::Accept(std::string_view bytes, std::string& reason) {
  reason = UnpairedSurrogate(bytes);
  if (!reason.empty()) {
    return std::nullopt;
  }
  if (parser_ == nullptr) {
    parser_ = NewParser(nullptr);
  }
  XML_ParserReset(parser_.get(), nullptr);
  return Judgement(parser_.get(), reason).Of(bytes);
}

bool ExpatJudge::IsName(std::string_view utf8) { return IsWellFormed('<' + std::string(utf8) + "/>"); }

}  // namespace ZYMDom
