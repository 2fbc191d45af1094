#include "platform/dom/ExpatJudge.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>
#include <optional>
#include <random>
#include <utility>

namespace ZYMDom {
namespace {

// Drawn once: expat would ask the system for fresh random bytes at every document.
unsigned long HashSalt() {
  static const unsigned long salt = std::random_device()() | 1UL;
  return salt;
}

bool IsPredefined(std::string_view reference) {
  constexpr std::array<std::string_view, 6> Known = {"#", "amp;", "lt;", "gt;", "quot;", "apos;"};
  return std::any_of(Known.begin(), Known.end(), [reference](auto known) { return reference.starts_with(known); });
}

bool HoldsUndeclaredReference(std::string_view markup) {
  for (std::size_t at = markup.find('&'); at != std::string_view::npos; at = markup.find('&', at + 1)) {
    if (!IsPredefined(markup.substr(at + 1))) {
      return true;
    }
  }
  return false;
}

std::size_t Behind(std::string_view text, std::string_view end, std::size_t from) {
  const std::size_t found = text.find(end, from);
  return found == std::string_view::npos ? text.size() : found + end.size();
}

/// In a document type that declares no entities a general reference can stand in the default value of an attribute
/// only.
bool DefaultsHoldUndeclaredReference(std::string_view doctype) {
  bool inAttributeList = false;
  for (std::size_t at = 0; at < doctype.size();) {
    const std::string_view rest = doctype.substr(at);
    if (rest.starts_with("<!--")) {
      at = Behind(doctype, "-->", at + 4);
    } else if (rest.starts_with("<?")) {
      at = Behind(doctype, "?>", at + 2);
    } else if (rest.starts_with('"') || rest.starts_with('\'')) {
      const std::size_t end = Behind(doctype, rest.substr(0, 1), at + 1);
      if (inAttributeList && HoldsUndeclaredReference(doctype.substr(at, end - at))) {
        return true;
      }
      at = end;
    } else {
      inAttributeList = rest.starts_with("<!ATTLIST") || (inAttributeList && !rest.starts_with('>'));
      ++at;
    }
  }
  return false;
}

/// The letters that expat takes for letters of names in UTF-16 and ISO-8859-1 but, as XML does, not in UTF-8.
bool HoldsLetterOutsideNames(std::string_view text) {
  constexpr std::array<std::string_view, 3> Letters = {"\xC2\xAA", "\xC2\xB5", "\xC2\xBA"};
  return text.find('\xC2') != std::string_view::npos &&
         std::any_of(Letters.begin(), Letters.end(),
                     [text](auto letter) { return text.find(letter) != std::string_view::npos; });
}

XML_Parser NewParser(const char* encoding) {
  XML_ParserStruct* const parser = XML_ParserCreate(encoding);
  return parser != nullptr ? parser : throw std::bad_alloc();
}

bool IsWellFormed(const std::string& utf8) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(NewParser("UTF-8"), &XML_ParserFree);
  return XML_Parse(parser.get(), utf8.data(), static_cast<int>(utf8.size()), 1) == XML_STATUS_OK;
}

struct Position {
  std::size_t line = 1;
  std::size_t column = 1;
};

/// expat takes whatever follows the first half of a surrogate pair for its second half.
std::optional<Position> UnpairedSurrogate(std::string_view bytes) {
  const bool littleEndian = bytes.starts_with("\xFF\xFE") || bytes.starts_with(std::string_view("<\0", 2));
  const bool bigEndian = bytes.starts_with("\xFE\xFF") || bytes.starts_with(std::string_view("\0<", 2));
  if (!littleEndian && !bigEndian) {
    return std::nullopt;
  }
  const auto unitAt = [&](std::size_t at) {
    const unsigned int first = static_cast<unsigned char>(bytes[at]);
    const unsigned int second = static_cast<unsigned char>(bytes[at + 1]);
    return littleEndian ? first | second << 8U : first << 8U | second;
  };
  const bool hasMark = bytes.front() != '<' && bytes.front() != '\0';
  Position position;
  for (std::size_t at = hasMark ? 2 : 0; at + 1 < bytes.size(); at += 2) {
    const unsigned int unit = unitAt(at);
    if ((unit & 0xFC00U) == 0xD800U) {
      at += 2;
      if (at + 1 >= bytes.size() || (unitAt(at) & 0xFC00U) != 0xDC00U) {
        return position;
      }
    }
    position = unit == '\n' ? Position{position.line + 1, 1} : Position{position.line, position.column + 1};
  }
  return std::nullopt;
}

}  // namespace

bool ExpatJudge::Accepts(std::string_view bytes) {
  reason_.clear();
  if (const std::optional<Position> unpaired = UnpairedSurrogate(bytes)) {
    Explain(unpaired->line, unpaired->column, XML_ErrorString(XML_ERROR_INVALID_TOKEN));
    return false;
  }
  Begin(bytes);
  if (Feed(bytes)) {
    return true;
  }
  const XML_Error error = XML_GetErrorCode(parser_.get());
  if (ranOutOfMemory_ || error == XML_ERROR_NO_MEMORY) {
    throw std::bad_alloc();
  }
  ExplainHere(XML_ErrorString(error));
  return false;
}

/// expat is written in C: nothing may be thrown through it.
template <auto Handler, typename... Arguments>
void ExpatJudge::Call(void* judge, Arguments... arguments) {
  ExpatJudge& self = *static_cast<ExpatJudge*>(judge);
  try {
    (self.*Handler)(arguments...);
  } catch (const std::exception&) {
    self.ranOutOfMemory_ = true;
    XML_StopParser(self.parser_.get(), XML_FALSE);
  }
}

void ExpatJudge::Begin(std::string_view bytes) {
  if (parser_ == nullptr) {
    parser_.reset(NewParser(nullptr));
  } else {
    XML_ParserReset(parser_.get(), nullptr);
  }
  text_.clear();
  text_.reserve(bytes.size());
  doctype_ = std::string::npos;
  inDoctype_ = inAttributeList_ = inRoot_ = ranOutOfMemory_ = false;
  declaredAttributes_ = 0;
  stepsLeft_ = (std::size_t{16} << 20U) + 16 * bytes.size();
  XML_ParserStruct* const parser = parser_.get();
  XML_SetHashSalt(parser, HashSalt());
  XML_SetUserData(parser, this);
  XML_SetStartElementHandler(parser, &Call<&ExpatJudge::StartElement>);
  XML_SetProcessingInstructionHandler(parser, &Call<&ExpatJudge::ProcessingInstruction>);
  XML_SetDefaultHandler(parser, &Call<&ExpatJudge::Markup>);
  XML_SetEndDoctypeDeclHandler(parser, &Call<&ExpatJudge::EndDoctype>);
  // Without a handler that fetches, this only makes expat tell of parameter entities that it passes over.
  XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_ALWAYS);
  XML_SetSkippedEntityHandler(parser, &Call<&ExpatJudge::SkippedEntity>);
}

/// expat copies what it is fed, so a large text goes in by pieces. As it looks at an unfinished token from its
/// beginning again with each of them, a piece is never shorter than what is there of such a token.
bool ExpatJudge::Feed(std::string_view bytes) {
  constexpr std::size_t LeastPiece = std::size_t{1} << 20U;
  for (std::size_t fed = 0;;) {
    const std::string_view piece = bytes.substr(fed, std::max(LeastPiece, fed - Consumed()));
    fed += piece.size();
    const bool last = fed == bytes.size();
    if (XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), last ? 1 : 0) != XML_STATUS_OK) {
      return false;
    }
    if (last) {
      return true;
    }
  }
}

/// How much of what was fed lies before the token that expat has not seen the end of.
std::size_t ExpatJudge::Consumed() const {
  return static_cast<std::size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0));
}

void ExpatJudge::Refuse(const char* reason) {
  ExplainHere(reason);
  XML_StopParser(parser_.get(), XML_FALSE);
}

/// The writer could not write such a name so that it reads again.
void ExpatJudge::RefuseUnwritable(std::string_view name) {
  if (HoldsLetterOutsideNames(name)) {
    Refuse("a name with a letter that names may not hold");
  }
}

void ExpatJudge::ExplainHere(const char* reason) {
  Explain(XML_GetCurrentLineNumber(parser_.get()), XML_GetCurrentColumnNumber(parser_.get()) + 1, reason);
}

/// The first reason counts: once it is refused, a text gives other reasons too.
void ExpatJudge::Explain(std::size_t line, std::size_t column, const char* reason) {
  if (reason_.empty()) {
    reason_ = std::to_string(line) + ':' + std::to_string(column) + ": " + reason;
  }
}

void ExpatJudge::StartElement(const char* name, const char** attributes) {
  inRoot_ = true;
  RefuseUnwritable(name);
  for (const char** attribute = attributes; *attribute != nullptr; attribute += 2) {
    RefuseUnwritable(*attribute);
  }
  SpendSteps(declaredAttributes_);
  const std::size_t start = text_.size();
  XML_DefaultCurrent(parser_.get());
  // Where a document type names an external subset, expat drops undeclared references in attributes without a word.
  if (doctype_ != std::string::npos && HoldsUndeclaredReference(std::string_view(text_).substr(start))) {
    Refuse(XML_ErrorString(XML_ERROR_UNDEFINED_ENTITY));
  }
  if (declaredAttributes_ != 0) {
    const bool isEmpty = text_.ends_with("/>");
    text_.resize(start);
    WriteTag(name, attributes, isEmpty ? "/>" : ">");
  }
}

/// The white space in a value depends on the type that is declared for the attribute. Attributes that only have a
/// declared default are left out.
void ExpatJudge::WriteTag(const char* name, const char** attributes, std::string_view end) {
  text_.append("<").append(name);
  const int specified = XML_GetSpecifiedAttributeCount(parser_.get());
  for (int at = 0; at < specified; at += 2) {
    text_.append(" ").append(attributes[at]).append("=\"");
    for (const char c : std::string_view(attributes[at + 1])) {
      if (std::string_view("&<\"\t\n\r").find(c) == std::string_view::npos) {
        text_ += c;
      } else {
        text_.append("&#").append(std::to_string(c)).append(";");
      }
    }
    text_ += '"';
  }
  text_ += end;
}

void ExpatJudge::ProcessingInstruction(const char* target, const char* value) {
  if (inDoctype_) {
    XML_DefaultCurrent(parser_.get());
    return;
  }
  RefuseUnwritable(target);
  text_.append("<?").append(target).append(*value == '\0' ? "" : " ").append(value).append("?>");
}

/// Receives, as UTF-8, all markup and all text that no other handler is there for: of the document type a piece for
/// each of its tokens.
void ExpatJudge::Markup(const char* text, int length) {
  const std::string_view token(text, static_cast<std::size_t>(length));
  if (!inRoot_ && token == "<!DOCTYPE") {
    inDoctype_ = true;
    doctype_ = text_.size();
  }
  text_ += token;
  if (inDoctype_) {
    CountDeclaredAttributes(token);
    if (token == "<!ENTITY") {
      Refuse("entity declarations are not allowed");
    }
  }
}

void ExpatJudge::SkippedEntity(const char* /*name*/, int /*isParameter*/) {
  Refuse(XML_ErrorString(XML_ERROR_UNDEFINED_ENTITY));
}

/// Each declaration of an attribute ends with its default in quotes or with a word such as #IMPLIED; to count one twice
/// does no harm.
void ExpatJudge::CountDeclaredAttributes(std::string_view token) {
  inAttributeList_ = token == "<!ATTLIST" || (inAttributeList_ && token != ">");
  if (inAttributeList_ && (token.starts_with('#') || token.starts_with('"') || token.starts_with('\''))) {
    SpendSteps(++declaredAttributes_);
  }
}

/// expat walks all attributes that are declared for an element with each that is declared next, and with each element
/// of that name. A text may make it do so often only in proportion to its length.
void ExpatJudge::SpendSteps(std::size_t steps) {
  if (steps > stepsLeft_) {
    Refuse("too many attributes are declared");
  }
  stepsLeft_ -= std::min(steps, stepsLeft_);
}

void ExpatJudge::EndDoctype() {
  inDoctype_ = false;
  const std::string doctype = text_.substr(doctype_);
  if (HoldsLetterOutsideNames(doctype) && !IsWellFormed(doctype + "><a/>")) {
    RefuseUnwritable(doctype);
  }
  if (DefaultsHoldUndeclaredReference(doctype)) {
    Refuse(XML_ErrorString(XML_ERROR_UNDEFINED_ENTITY));
  }
  text_ += '>';
}

}  // namespace ZYMDom
