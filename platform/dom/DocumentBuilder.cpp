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
#include "platform/dom/XmlWriter.h"

namespace ZYMDom {
namespace {

HRESULT Fail(const ZYMUnicodeString& path, const std::string& reason) {
  QELVARDOSSystemUtils::SetLastError(path.Str() + reason);
  return E_FAIL;
}

/// Appends to text. On failure reason tells why.
bool WriteText(const ZYMIDOMNode_var& node, std::string& text, const XmlWriter::Sink& sink, std::string& reason) {
  const NodeAnchor* const anchor = AnchorOf(*node);
  if (anchor == nullptr) {
    reason = "the node belongs to another implementation";
    return false;
  }
  XmlWriter writer(text, sink);
  const bool written = writer.Write(anchor->Storage(), anchor->Node());
  reason = writer.Reason();
  return written;
}

}  // namespace

ZYM_DEFINE_COMPONENT_AS(DocumentBuilder, "ZYMDom::DocumentBuilder", ZYMIXMLDOMDocumentBuilder)

HRESULT DocumentBuilder::CreateDocument(ZYMIDOMDocument_var& document) {
  document = MakeDocument(std::make_unique<DomStorage>());
  return S_OK;
}

HRESULT DocumentBuilder::CreateDocumentWithRoot(const ZYMUnicodeString& rootName, ZYMIDOMDocument_var& document,
                                                ZYMIDOMElement_var& root) {
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

HRESULT DocumentBuilder::Parse(const ZYMUnicodeString& path, const ZYMUnicodeStringList& optionNames,
                               const ZYMUnicodeStringList& optionValues, ZYMIDOMDocument_var& document) {
  std::string bytes;
  if (const auto error = QELVARDOSFileLayer::Current().Read(path.Str(), bytes, QELVARDOSFileLayer::AnySize)) {
    return Fail(path, ": " + error.message());
  }
  return ParseContent(path, std::move(bytes), optionNames, optionValues, document);
}

HRESULT DocumentBuilder::ParseContent(const ZYMUnicodeString& path, std::string&& bytes,
                                      const ZYMUnicodeStringList& /*optionNames*/,
                                      const ZYMUnicodeStringList& /*optionValues*/, ZYMIDOMDocument_var& document) {
  try {
    const std::optional<std::size_t> plainRoot = plain_.RootOf(bytes);
    if (!plainRoot) {
      if (!expat_.Accepts(bytes)) {
        return Fail(path, ':' + expat_.Reason());
      }
      bytes = expat_.TakeText();
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

HRESULT DocumentBuilder::Write(const ZYMIDOMNode_var& node, const ZYMUnicodeString& path,
                               const ZYMUnicodeStringList& /*optionNames*/,
                               const ZYMUnicodeStringList& /*optionValues*/) {
  text_.clear();
  std::string reason;
  if (!WriteText(node, text_, nullptr, reason)) {
    return Fail(path, ": " + reason);
  }
  if (const std::error_code error = QELVARDOSReplaceFile(path.Str(), text_)) {
    return Fail(path, ": " + error.message());
  }
  return S_OK;
}

HRESULT DocumentBuilder::Serialize(const ZYMIDOMNode_var& node, const std::function<bool(std::string_view)>& sink) {
  std::string text;
  std::string reason;
  return WriteText(node, text, sink, reason) ? S_OK : Fail("", reason);
}

}  // namespace ZYMDom
