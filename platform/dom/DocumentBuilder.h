#pragma once

#include <string>

#include "platform/ZYMIDOM.h"
#include "platform/dom/DomStorage.h"
#include "platform/dom/ExpatJudge.h"
#include "platform/dom/PlainXml.h"

namespace ZYMDom {

/// The builder of trees that pugixml makes and holds. As pugixml is too lenient a judge, it sees only what is plain or
/// what expat accepts.
class DocumentBuilder final : public ZYMIXMLDOMDocumentBuilder {
  ZYM_DECLARE_COMPONENT(DocumentBuilder);

 public:
  HRESULT CreateDocument(ZYMIDOMDocument_var& document) override;
  HRESULT CreateDocumentWithRoot(const ZYMUnicodeString& rootName, ZYMIDOMDocument_var& document,
                                 ZYMIDOMElement_var& root) override;
  HRESULT Parse(const ZYMUnicodeString& path, const ZYMUnicodeStringList& optionNames,
                const ZYMUnicodeStringList& optionValues, ZYMIDOMDocument_var& document) override;
  HRESULT Write(const ZYMIDOMNode_var& node, const ZYMUnicodeString& path, const ZYMUnicodeStringList& optionNames,
                const ZYMUnicodeStringList& optionValues) override;
  HRESULT ParseContent(const ZYMUnicodeString& path, std::string&& bytes, const ZYMUnicodeStringList& optionNames,
                       const ZYMUnicodeStringList& optionValues, ZYMIDOMDocument_var& document) override;
  HRESULT Serialize(const ZYMIDOMNode_var& node, const std::function<bool(std::string_view)>& sink) override;

 private:
  PlainXml plain_;
  ExpatJudge expat_;
  // What is written; its room serves the next file.
  std::string text_;
};

}  // namespace ZYMDom
