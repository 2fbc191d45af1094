#include "platform/ZYMIDOM.h"

#include <utility>

#include "platform/ZYMFillDictionary.h"
#include "platform/dom/DocumentBuilder.h"

ZYM_DEFINE_INTERFACE(ZYMIDOMNode, ZYMBaseUnknown, "{C1E5B0A4-2F63-4D8A-9B17-6A0E3D5F7C21}")
ZYM_DEFINE_INTERFACE(ZYMIDOMElement, ZYMIDOMNode, "{8D4F72E9-B13C-4A06-A5D8-1F9C60E27B34}")
ZYM_DEFINE_INTERFACE(ZYMIDOMText, ZYMIDOMNode, "{47A9C3D1-60E8-4F5B-8C2E-D37B1A94F056}")
ZYM_DEFINE_INTERFACE(ZYMIDOMDocument, ZYMIDOMNode, "{E26B805F-7D1A-4C93-B04F-95C8A3612D7E}")
ZYM_DEFINE_INTERFACE(ZYMIDOMNodeList, ZYMBaseUnknown, "{0F93D6B8-A425-4E71-9D6C-B8E5172F40CA}")
ZYM_DEFINE_INTERFACE(ZYMIXMLDOMDocumentBuilder, ZYMBaseUnknown, "{B7520CE3-194D-48AF-8E3B-2C6D9F01A58B}")

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

HRESULT ZYMIXMLDOMDocumentBuilder::ParseContent(const ZYMUnicodeString& path, std::string /*bytes*/,
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
