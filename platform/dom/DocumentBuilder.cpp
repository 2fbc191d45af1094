#include "platform/dom/DocumentBuilder.h"

#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "platform/QELVARDOSFileLayer.h"
#include "platform/QELVARDOSFileTransaction.h"
#include "platform/QELVARDOSSystemUtils.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/dom/DomNodes.h"
#include "platform/dom/ExpatJudge.h"
#include "platform/dom/PlainXml.h"
#include "platform/dom/XmlWriter.h"

namespace ZYMDom {
namespace {

HRESULT Fail(const ZYMUnicodeString& path, const std::string& reason) {
  QELVARDOSSystemUtils::SetLastError(path.Str() + reason);
  return E_FAIL;
}

/// Appends to text. Answers why it could not be written; nothing when it is.
std::string WriteText(const ZYMIDOMNode_var& node, std::string& text, const XmlSink& sink) {
  const NodeAnchor* const anchor = AnchorOf(*node);
  return anchor != nullptr ? WriteXml(*anchor, text, sink) : "the node belongs to another implementation";
}

class DocumentBuilder final : public ZYMIXMLDOMDocumentBuilder {
  ZYM_DECLARE_COMPONENT(DocumentBuilder);

 public:
  HRESULT CreateDocument(ZYMIDOMDocument_var& document) override {
    document = MakeDocument(std::make_unique<DomStorage>());
    return S_OK;
  }

  HRESULT CreateDocumentWithRoot(const ZYMUnicodeString& rootName, ZYMIDOMDocument_var& document,
                                 ZYMIDOMElement_var& root) override {
    if (rootName.View().find('\0') != std::string_view::npos) {
      return E_FAIL;
    }
    auto storage = std::make_unique<DomStorage>();
    if (!DomStorage::AppendElement(storage->Document(), rootName.CStr())) {
      return E_OUTOFMEMORY;
    }
    document = MakeDocument(std::move(storage));
    return document->getDocumentElement(root);
  }

  HRESULT Parse(const ZYMUnicodeString& path, const ZYMUnicodeStringList& optionNames,
                const ZYMUnicodeStringList& optionValues, ZYMIDOMDocument_var& document) override {
    std::string bytes;
    if (const auto error = QELVARDOSFileLayer::Current().Read(path.Str(), bytes, QELVARDOSFileLayer::AnySize)) {
      return Fail(path, ": " + error.message());
    }
    return ParseContent(path, std::move(bytes), optionNames, optionValues, document);
  }

  HRESULT ParseContent(const ZYMUnicodeString& path, std::string&& bytes, const ZYMUnicodeStringList& /*optionNames*/,
                       const ZYMUnicodeStringList& /*optionValues*/, ZYMIDOMDocument_var& document) override {
    try {
      const std::optional<std::size_t> plainRoot = PlainRoot(bytes);
      if (!plainRoot) {
        std::string reason;
        std::optional<std::string> accepted = expat_.Accept(bytes, reason);
        if (!accepted) {
          return Fail(path, ':' + reason);
        }
        bytes = std::move(*accepted);
      }
      auto storage = std::make_unique<DomStorage>();
      storage->Load(std::move(bytes), plainRoot.value_or(0));
      document = MakeDocument(std::move(storage));
      return S_OK;
    } catch (const std::bad_alloc&) {
      Fail(path, ": out of memory");
      return E_OUTOFMEMORY;
    }
  }

  HRESULT Write(const ZYMIDOMNode_var& node, const ZYMUnicodeString& path, const ZYMUnicodeStringList& /*optionNames*/,
                const ZYMUnicodeStringList& /*optionValues*/) override {
    text_.clear();
    if (const std::string reason = WriteText(node, text_, nullptr); !reason.empty()) {
      return Fail(path, ": " + reason);
    }
    if (const std::error_code error = QELVARDOSReplaceFile(path.Str(), text_)) {
      return Fail(path, ": " + error.message());
    }
    return S_OK;
  }

  HRESULT Serialize(const ZYMIDOMNode_var& node, const std::function<bool(std::string_view)>& sink) override {
    std::string text;
    const std::string reason = WriteText(node, text, sink);
    return reason.empty() ? S_OK : Fail("", reason);
  }

 private:
  ExpatJudge expat_;
  // What is written; its room serves the next file.
  std::string text_;
};

ZYM_DEFINE_COMPONENT_AS(DocumentBuilder, "ZYMDom::DocumentBuilder", ZYMIXMLDOMDocumentBuilder)

}  // namespace

HRESULT MakeDocumentBuilder(ZYMIXMLDOMDocumentBuilder_var& builder) {
  builder = ZYMIXMLDOMDocumentBuilder_var::Adopt(new DocumentBuilder);
  return S_OK;
}

}  // namespace ZYMDom
