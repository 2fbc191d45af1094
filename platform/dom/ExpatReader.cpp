#include "platform/dom/ExpatReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <optional>
#include <random>
#include <utility>

namespace ZYMDom {
namespace {

constexpr const char* OutOfMemory = "out of memory";

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

bool IsWellFormed(const std::string& utf8) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"), &XML_ParserFree);
  return parser != nullptr && XML_Parse(parser.get(), utf8.data(), static_cast<int>(utf8.size()), 1) == XML_STATUS_OK;
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

bool ExpatReader::Read(std::string_view bytes, pugi::xml_document& document) {
  reason_.clear();
  ranOutOfMemory_ = false;
  if (const std::optional<Position> unpaired = UnpairedSurrogate(bytes)) {
    Explain(unpaired->line, unpaired->column, XML_ErrorString(XML_ERROR_INVALID_TOKEN));
    return false;
  }
  Begin(bytes, document);
  if (Feed(bytes)) {
    return true;
  }
  const XML_Error error = XML_GetErrorCode(parser_.get());
  ranOutOfMemory_ = ranOutOfMemory_ || error == XML_ERROR_NO_MEMORY;
  ExplainHere(XML_ErrorString(error));
  return false;
}

void ExpatReader::Begin(std::string_view bytes, pugi::xml_document& document) {
  if (parser_ == nullptr) {
    parser_.reset(XML_ParserCreate(nullptr));
    if (parser_ == nullptr) {
      throw std::bad_alloc();
    }
  } else {
    XML_ParserReset(parser_.get(), nullptr);
  }
  parent_ = document;
  text_.clear();
  doctype_.clear();
  markup_ = nullptr;
  inDoctype_ = false;
  inAttributeList_ = false;
  declaredAttributes_ = 0;
  stepsLeft_ = (std::size_t{16} << 20U) + 16 * bytes.size();
  defaultedBytes_ = 0;
  XML_SetHashSalt(parser_.get(), HashSalt());
  XML_SetUserData(parser_.get(), this);
  SetHandlers(parser_.get());
}

void ExpatReader::SetHandlers(XML_Parser parser) {
  XML_SetElementHandler(
      parser, [](void* self, const char* name, const char** attributes) { Self(self).StartElement(name, attributes); },
      [](void* self, const char*) { Self(self).EndElement(); });
  XML_SetCharacterDataHandler(parser, [](void* self, const char* text, int length) {
    Self(self).text_.append(text, static_cast<std::size_t>(length));
  });
  XML_SetCdataSectionHandler(
      parser, [](void* self) { Self(self).EndText(pugi::node_pcdata); },
      [](void* self) { Self(self).EndText(pugi::node_cdata); });
  XML_SetCommentHandler(parser, [](void* self, const char* text) { Self(self).Comment(text); });
  XML_SetProcessingInstructionHandler(parser, [](void* self, const char* target, const char* value) {
    Self(self).ProcessingInstruction(target, value);
  });
  XML_SetDefaultHandler(parser, [](void* self, const char* markup, int length) {
    Self(self).Undispatched({markup, static_cast<std::size_t>(length)});
  });
  XML_SetEndDoctypeDeclHandler(parser, [](void* self) { Self(self).EndDoctype(); });
  // Without a handler that fetches, this only makes expat tell of parameter entities that it passes over.
  XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_ALWAYS);
  XML_SetSkippedEntityHandler(
      parser, [](void* self, const char*, int) { Self(self).Refuse(XML_ErrorString(XML_ERROR_UNDEFINED_ENTITY)); });
}

/// expat copies what it is fed, so a large text goes in by pieces. As it looks at an unfinished token from its
/// beginning again with each of them, a piece is never shorter than what is there of such a token.
bool ExpatReader::Feed(std::string_view bytes) {
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
std::size_t ExpatReader::Consumed() const {
  return static_cast<std::size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser_.get()), 0));
}

void ExpatReader::Refuse(const char* reason) {
  ranOutOfMemory_ = ranOutOfMemory_ || reason == OutOfMemory;
  ExplainHere(reason);
  XML_StopParser(parser_.get(), XML_FALSE);
}

/// The writer could not write such a name so that it reads again.
void ExpatReader::RefuseUnwritable(std::string_view name) {
  if (HoldsLetterOutsideNames(name)) {
    Refuse("a name with a letter that names may not hold");
  }
}

void ExpatReader::ExplainHere(const char* reason) {
  Explain(XML_GetCurrentLineNumber(parser_.get()), XML_GetCurrentColumnNumber(parser_.get()) + 1, reason);
}

/// The first reason counts: once it is refused, a text gives other reasons too.
void ExpatReader::Explain(std::size_t line, std::size_t column, const char* reason) {
  if (reason_.empty()) {
    reason_ = std::to_string(line) + ':' + std::to_string(column) + ": " + reason;
  }
}

void ExpatReader::StartElement(const char* name, const char** attributes) {
  EndText(pugi::node_pcdata);
  parent_ = Append(pugi::node_element);
  parent_.set_name(name);
  RefuseUnwritable(name);
  const auto specified = static_cast<std::size_t>(XML_GetSpecifiedAttributeCount(parser_.get()));
  for (std::size_t at = 0; attributes[at] != nullptr; at += 2) {
    pugi::xml_attribute attribute = parent_.append_attribute(attributes[at]);
    if (!attribute || !attribute.set_value(attributes[at + 1])) {
      Refuse(OutOfMemory);
    }
    RefuseUnwritable(attributes[at]);
    // An attribute takes about as much room in the tree beside its name and value.
    constexpr std::size_t Bare = 64;
    defaultedBytes_ += at < specified ? 0 : Bare + std::strlen(attributes[at]) + std::strlen(attributes[at + 1]);
  }
  // A small text could otherwise fill the memory: a long default for an attribute of very many elements.
  constexpr std::size_t MostDefaultedBytes = std::size_t{16} << 20U;
  if (defaultedBytes_ > MostDefaultedBytes) {
    Refuse("attribute defaults take too much room");
  }
  SpendSteps(declaredAttributes_);
  // Where a document type names an external subset, expat drops undeclared references in attributes without a word.
  if (!doctype_.empty() && HoldsUndeclaredReference(CurrentMarkup())) {
    Refuse(XML_ErrorString(XML_ERROR_UNDEFINED_ENTITY));
  }
}

void ExpatReader::EndElement() {
  EndText(pugi::node_pcdata);
  parent_ = parent_.parent();
}

void ExpatReader::ProcessingInstruction(const char* target, const char* value) {
  if (inDoctype_) {
    doctype_ += CurrentMarkup();
    return;
  }
  EndText(pugi::node_pcdata);
  RefuseUnwritable(target);
  pugi::xml_node instruction = Append(pugi::node_pi);
  if (!instruction.set_name(target) || !instruction.set_value(value)) {
    Refuse(OutOfMemory);
  }
}

void ExpatReader::Comment(const char* text) {
  if (inDoctype_) {
    doctype_ += CurrentMarkup();
    return;
  }
  EndText(pugi::node_pcdata);
  if (!Append(pugi::node_comment).set_value(text)) {
    Refuse(OutOfMemory);
  }
}

/// Receives, as UTF-8, all markup that no other handler is there for: that of the document type among it, one piece for
/// each of its tokens.
void ExpatReader::Undispatched(std::string_view markup) {
  if (markup_ != nullptr) {
    *markup_ += markup;
    return;
  }
  inDoctype_ = inDoctype_ || markup == "<!DOCTYPE";
  if (inDoctype_) {
    doctype_ += markup;
    CountDeclaredAttributes(markup);
    if (markup == "<!ENTITY") {
      Refuse("entity declarations are not allowed");
    }
  }
}

/// Each declaration of an attribute ends with its default in quotes or with a word such as #IMPLIED; to count one twice
/// does no harm.
void ExpatReader::CountDeclaredAttributes(std::string_view token) {
  inAttributeList_ = token == "<!ATTLIST" || (inAttributeList_ && token != ">");
  if (inAttributeList_ && (token.starts_with('#') || token.starts_with('"') || token.starts_with('\''))) {
    SpendSteps(++declaredAttributes_);
  }
}

/// expat walks all attributes that are declared for an element with each that is declared next, and with each element
/// of that name. A text may make it do so often only in proportion to its length.
void ExpatReader::SpendSteps(std::size_t steps) {
  if (steps > stepsLeft_) {
    Refuse("too many attributes are declared");
  }
  stepsLeft_ -= std::min(steps, stepsLeft_);
}

void ExpatReader::EndDoctype() {
  inDoctype_ = false;
  if (HoldsLetterOutsideNames(doctype_) && !IsWellFormed(doctype_ + "><a/>")) {
    RefuseUnwritable(doctype_);
  }
  if (DefaultsHoldUndeclaredReference(doctype_)) {
    Refuse(XML_ErrorString(XML_ERROR_UNDEFINED_ENTITY));
  }
  const std::size_t content = doctype_.find_first_not_of(" \t\r\n", std::strlen("<!DOCTYPE"));
  if (!Append(pugi::node_doctype).set_value(doctype_.c_str() + std::min(content, doctype_.size()))) {
    Refuse(OutOfMemory);
  }
}

/// expat hands out one run of characters by pieces; the run is one node. A CDATA section may be empty.
void ExpatReader::EndText(pugi::xml_node_type type) {
  if (text_.empty() && type == pugi::node_pcdata) {
    return;
  }
  if (!Append(type).set_value(text_.c_str(), text_.size())) {
    Refuse(OutOfMemory);
  }
  text_.clear();
}

pugi::xml_node ExpatReader::Append(pugi::xml_node_type type) {
  const pugi::xml_node node = parent_.append_child(type);
  if (!node) {
    Refuse(OutOfMemory);
  }
  return node;
}

/// The markup of the event that is being told, as it stands in the text but as UTF-8.
std::string ExpatReader::CurrentMarkup() {
  std::string markup;
  markup_ = &markup;
  XML_DefaultCurrent(parser_.get());
  markup_ = nullptr;
  return markup;
}

}  // namespace ZYMDom
