#include "platform/ZYMIDOM.h"

#include <utility>

#include "platform/Steps.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMIDOMLook.h"
#include "platform/dom/DocumentBuilder.h"

ZYM_DEFINE_INTERFACE(ZYMIDOMNode, ZYMBaseUnknown)
ZYM_DEFINE_INTERFACE(ZYMIDOMElement, ZYMIDOMNode)
ZYM_DEFINE_INTERFACE(ZYMIDOMText, ZYMIDOMNode)
ZYM_DEFINE_INTERFACE(ZYMIDOMDocument, ZYMIDOMNode)
ZYM_DEFINE_INTERFACE(ZYMIDOMNodeList, ZYMBaseUnknown)
ZYM_DEFINE_INTERFACE(ZYMIXMLDOMDocumentBuilder, ZYMBaseUnknown)

HRESULT ZYMIDOMElement::getTextOfFirst(const ZYMUnicodeString& name, bool& found, ZYMUnicodeString& text) {
  ZYMIDOMNodeList_var elements;
  ZYMIDOMNode_var first;
  ZYMIDOMNode_var child;
  const HRESULT status = UntilFailure([&] { return getElementsByTagName(name, elements); },
                                      [&] { return elements ? elements->item(0, first) : S_OK; },
                                      [&] { return first ? first->getFirstChild(child) : S_OK; },
                                      [&] { return child ? child->getNodeValue(text) : S_OK; });
  found = static_cast<bool>(first);
  return status;
}

HRESULT ZYMIDOMElement::visitChildElements(const ZYMUnicodeStringList& names,
                                           const std::function<bool(const ZYMIDOMElement_var& child)>& visit) {
  ZYMIDOMNodeList_var children;
  int count = 0;
  const HRESULT status = UntilFailure([&] { return getChildNodes(children); },
                                      [&] { return children ? children->getLength(count) : S_OK; });
  bool more = true;
  for (int i = 0; i < count && more; ++i) {
    ZYMIDOMNode_var child;
    children->item(i, child);
    const ZYMIDOMElement_var element(child);
    more = element.IsNull() || (names.Size() != 0 && names.Locate(NodeName(element)) == 0) || visit(element);
  }
  return status;
}

HRESULT ZYMIDOMElement::getAttributeNames(ZYMUnicodeStringList& /*names*/) { return E_NOTIMPL; }

HRESULT ZYMIDOMElement::appendTextElement(const ZYMIDOMDocument_var& document, const ZYMUnicodeString& name,
                                          const ZYMUnicodeString& value) {
  ZYMIDOMElement_var element;
  ZYMIDOMText_var text;
  ZYMIDOMNode_var appended;
  return UntilFailure(
      [&] { return document->createElement(name, element); }, [&] { return document->createTextNode(value, text); },
      [&] { return element->appendChild(text, appended); }, [&] { return appendChild(element, appended); });
}

HRESULT ZYMIXMLDOMDocumentBuilder::CreateDocumentWithRoot(const ZYMUnicodeString& rootName,
                                                          ZYMIDOMDocument_var& document, ZYMIDOMElement_var& root) {
  ZYMIDOMNode_var appended;
  return UntilFailure([&] { return CreateDocument(document); }, [&] { return document->createElement(rootName, root); },
                      [&] { return document->appendChild(root, appended); });
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

ZYMDocumentBuilderCreation hostCreation = nullptr;

}  // namespace

HRESULT CreateZYMIXMLDOMDocumentBuilder(ZYMIXMLDOMDocumentBuilder_var& builder,
                                        ZYMDOMImplementation /*implementation*/) {
  ZYMIXMLDOMDocumentBuilder_var made;
  const HRESULT status = hostCreation != nullptr ? hostCreation(made) : ZYMDom::MakeDocumentBuilder(made);
  if (SUCCEEDED(status)) {
    builder = std::move(made);
  }
  return status;
}

ZYMDocumentBuilderCreation ZYMSetDocumentBuilderCreation(ZYMDocumentBuilderCreation creation) {
  return std::exchange(hostCreation, creation);
}
