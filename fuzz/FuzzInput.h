#pragma once

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "fuzz/MemoryFiles.h"
#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/ZYMIDOM.h"

/// What the fuzz targets share: an input of several pieces, made into a configuration, trees and a disk in memory.

/// Ends the run with a crash, which is how a fuzzer sees a finding.
inline void Require(bool holds, std::string_view what) {
  if (!holds) {
    std::cerr << what << '\n';
    std::abort();
  }
}

/// Requires that as many components live at its end as at its beginning.
class LivingCheck {
 public:
  LivingCheck() = default;
  ~LivingCheck() { Require(ZYMBaseUnknown::LivingComponents() == before_, "a component outlives its last handle"); }
  LivingCheck(const LivingCheck&) = delete;
  LivingCheck& operator=(const LivingCheck&) = delete;

 private:
  std::int64_t before_ = ZYMBaseUnknown::LivingComponents();
};

/// The pieces of an input: what stands between lines of two dashes.
class Pieces {
 public:
  Pieces(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool IsEmpty() const { return rest_.empty(); }
  /// Empty when there is none left.
  std::string_view Next() {
    const std::size_t end = rest_.find(Border);
    const std::string_view piece = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + Border.size());
    return piece;
  }

 private:
  static constexpr std::string_view Border = "\n--\n";

  std::string_view rest_;
};

/// A client's configuration in words: the CAD system's name, the identifying attribute, then TYPE:CLASS for every class
/// that a type or a relationship type belongs to.
class WordsConfiguration : public QELIVARDOSGlobalConfigObject {
 public:
  explicit WordsConfiguration(std::string_view words) {
    std::istringstream in{std::string(words)};
    in >> cad_ >> identifier_;
    for (std::string word; in >> word;) {
      classes_.insert(word);
    }
  }

  ZYMUnicodeString GetCADName() override { return cad_; }
  ZYMUnicodeString GetIdentifierAttribute(const ZYMUnicodeString& /*type*/) override { return identifier_; }
  bool IsTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) override {
    return classes_.contains(type.Str() + ":" + category.Str());
  }
  bool IsRelTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) override {
    return IsTypeInCategory(type, category);
  }

 private:
  std::string cad_;
  std::string identifier_;
  std::set<std::string> classes_;
};

/// Null for an empty piece, as a careless client has it.
inline QELIVARDOSGlobalConfigObject_var ConfigurationOf(std::string_view piece) {
  if (piece.empty()) {
    return nullptr;
  }
  return ZYMMakeComponent<WordsConfiguration>(piece);
}

inline ZYMIXMLDOMDocumentBuilder_var Builder() {
  ZYMIXMLDOMDocumentBuilder_var builder;
  Require(SUCCEEDED(CreateZYMIXMLDOMDocumentBuilder(builder)), "no builder");
  return builder;
}

/// Puts the pieces that are left on the disk: the first line of each is "PATH SECONDS", the rest is the file.
inline void PutFiles(Pieces& pieces, MemoryFiles& files) {
  while (!pieces.IsEmpty()) {
    std::string_view piece = pieces.Next();
    const std::string_view head = piece.substr(0, piece.find('\n'));
    piece.remove_prefix(head.size() < piece.size() ? head.size() + 1 : head.size());
    const std::size_t blank = head.rfind(' ');
    std::int64_t modified = MemoryFiles::Now;
    if (blank != std::string_view::npos) {
      std::from_chars(head.data() + blank + 1, head.data() + head.size(), modified);
    }
    files.Put(head.substr(0, blank), piece, modified);
  }
}

/// A text as a tree that a client hands in; null when it is no XML.
inline ZYMIDOMDocument_var DocumentOf(std::string_view text, MemoryFiles& files) {
  // A name that no object of a tree can have, since none has a line end in it.
  constexpr std::string_view Name = "tree\n";
  files.Put(Name, text);
  ZYMIDOMDocument_var document;
  const bool isRead = SUCCEEDED(Builder()->Parse(Name, {}, {}, document));
  Require(isRead != document.IsNull(), "a status that contradicts the document");
  files.TakeAway(Name);
  return document;
}
inline ZYMIDOMElement_var RootOf(const ZYMIDOMDocument_var& document) {
  ZYMIDOMElement_var root;
  if (document) {
    document->getDocumentElement(root);
  }
  return root;
}
inline ZYMIDOMElement_var TreeOf(std::string_view text, MemoryFiles& files) { return RootOf(DocumentOf(text, files)); }

/// The text of a tree as it would be written.
inline std::string TextOf(const ZYMIDOMNode_var& node) {
  std::string text;
  const auto append = [&text](std::string_view piece) { return !(text += piece).empty(); };
  const HRESULT status = Builder()->Serialize(node, append);
  Require(SUCCEEDED(status), "the tree cannot be written");
  return text;
}
