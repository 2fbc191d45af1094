#include "platform/ZYMIDOM.h"

#include <utility>

#include "platform/ZYMFillDictionary.h"
#include "platform/dom/DocumentBuilder.h"

ZYM_DEFINE_INTERFACE(ZYMIDOMNode, ZYMBaseUnknown)
ZYM_DEFINE_INTERFACE(ZYMIDOMElement, ZYMIDOMNode)
ZYM_DEFINE_INTERFACE(ZYMIDOMText, ZYMIDOMNode)
ZYM_DEFINE_INTERFACE(ZYMIDOMDocument, ZYMIDOMNode)
ZYM_DEFINE_INTERFACE(ZYMIDOMNodeList, ZYMBaseUnknown)
ZYM_DEFINE_INTERFACE(ZYMIXMLDOMDocumentBuilder, ZYMBaseUnknown)

HRESULT ZYMIDOMElement::getTextOfFirst(const ZYMUnicodeString& /*name*/, bool& /*found*/, ZYMUnicodeString& /*text*/) {
  return E_NOTIMPL;
}

HRESULT ZYMIDOMElement::getFirstElement(const ZYMUnicodeStringList& /*names*/, ZYMIDOMElement_var& /*child*/) {
  return E_NOTIMPL;
}

HRESULT ZYMIDOMElement::getNextElement(const ZYMUnicodeStringList& /*names*/, ZYMIDOMElement_var& /*sibling*/) {
  return E_NOTIMPL;
}

HRESULT ZYMIDOMElement::appendTextElement(const ZYMUnicodeString& /*name*/, const ZYMUnicodeString& /*value*/) {
  return E_NOTIMPL;
}

HRESULT ZYMIXMLDOMDocumentBuilder::CreateDocumentWithRoot(const ZYMUnicodeString& /*rootName*/,
                                                          ZYMIDOMDocument_var& /*document*/,
                                                          ZYMIDOMElement_var& /*root*/) {
  return E_NOTIMPL;
}

HRESULT ZYMIXMLDOMDocumentBuilder::ParseContent(const ZYMUnicodeString& path, std::string&& /*bytes*/,
                                                const ZYMUnicodeStringList& optionNames,
                                                const ZYMUnicodeStringList& optionValues,
                                                ZYMIDOMDocument_var& document) {
  return Parse(path, optionNames, optionValues, document);
}

HRESULT ZYMIXMLDOMDocumentBuilder::Serialize(const ZYMIDOMNode_var& /*node*/,
                                             const std::function<bool(std::string_view)>& /*sink*/) {
  return E_NOTIMPL;
}

namespace {

HRESULT MakeOwnBuilder(ZYMIXMLDOMDocumentBuilder_var& builder) {
  builder = ZYMIXMLDOMDocumentBuilder_var::Adopt(new ZYMDom::DocumentBuilder);
  return S_OK;
}

ZYMDocumentBuilderCreation hostCreation = nullptr;

}  // namespace

HRESULT CreateZYMIXMLDOMDocumentBuilder(ZYMIXMLDOMDocumentBuilder_var& builder,
                                        ZYMDOMImplementation /*implementation*/) {
  ZYMIXMLDOMDocumentBuilder_var made;
  const HRESULT status = hostCreation != nullptr ? hostCreation(made) : MakeOwnBuilder(made);
  if (SUCCEEDED(status)) {
    builder = std::move(made);
  }
  return status;
}

ZYMDocumentBuilderCreation ZYMSetDocumentBuilderCreation(ZYMDocumentBuilderCreation creation) {
  return std::exchange(hostCreation, creation);
}
