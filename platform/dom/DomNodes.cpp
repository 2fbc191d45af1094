#include "platform/dom/DomNodes.h"

#include <algorithm>
#include <string_view>

#include "platform/ZYMFillDictionary.h"

namespace ZYMDom {
namespace {

/// The tree holds strings that end at the first NUL byte; XML allows none anyway.
bool HoldsNul(const ZYMUnicodeString& string) { return string.View().find('\0') != std::string_view::npos; }

/// The first character tells most names apart.
bool IsOneOf(const ZYMUnicodeStringList& names, const char* name) {
  return names.Size() == 0 || std::any_of(names.begin(), names.end(), [name](const ZYMUnicodeString& wanted) {
           return *wanted.CStr() == *name && wanted == name;
         });
}

/// Among node and the siblings behind it.
pugi::xml_node FirstElementFrom(const DomStorage& storage, pugi::xml_node node, const ZYMUnicodeStringList& names) {
  while (node && (!IsOneOf(names, node.name()) || node.type() != pugi::node_element)) {
    node = storage.NextSibling(node);
  }
  return node;
}

}  // namespace

ZYM_DEFINE_COMPONENT_AS(DomElement, "ZYMDom::DomElement", ZYMIDOMElement)
ZYM_DEFINE_COMPONENT_AS(DomText, "ZYMDom::DomText", ZYMIDOMText)
ZYM_DEFINE_COMPONENT_AS(DomOtherNode, "ZYMDom::DomOtherNode", ZYMIDOMNode)
ZYM_DEFINE_COMPONENT_AS(DomDocument, "ZYMDom::DomDocument", ZYMIDOMDocument)

HRESULT DomElement::getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) {
  return ElementsByTagName(anchor_, name, elements);
}

HRESULT DomElement::getAttribute(const ZYMUnicodeString& name, ZYMUnicodeString& value) {
  value.Assign(Attributes().Find(anchor_.Node(), name.CStr()).value());
  return S_OK;
}

HRESULT DomElement::setAttribute(const ZYMUnicodeString& name, const ZYMUnicodeString& value) {
  if (HoldsNul(name) || HoldsNul(value)) {
    return E_FAIL;
  }
  pugi::xml_attribute attribute = Attributes().Find(anchor_.Node(), name.CStr());
  if (!attribute) {
    attribute = Attributes().Add(anchor_.Node(), name.CStr());
  }
  return attribute.set_value(value.CStr(), value.Length()) ? S_OK : E_FAIL;
}

HRESULT DomElement::hasAttribute(const ZYMUnicodeString& name, bool& present) {
  present = !Attributes().Find(anchor_.Node(), name.CStr()).empty();
  return S_OK;
}

HRESULT DomElement::getTextOfFirst(const ZYMUnicodeString& name, bool& found, ZYMUnicodeString& text) {
  const pugi::xml_node first = anchor_.Storage().FirstElementBelow(anchor_.Node(), name.CStr());
  found = static_cast<bool>(first);
  if (const pugi::xml_node child = first.first_child()) {
    text.Assign(child.value());
  }
  return S_OK;
}

HRESULT DomElement::visitChildElements(const ZYMUnicodeStringList& names,
                                       const std::function<bool(const ZYMIDOMElement_var& child)>& visit) {
  DomStorage& storage = anchor_.Storage();
  pugi::xml_node child = FirstElementFrom(storage, anchor_.Node().first_child(), names);
  while (child && visit(ZYMIDOMElement_var::Adopt(new DomElement(storage, child)))) {
    child = FirstElementFrom(storage, storage.NextSibling(child), names);
  }
  return S_OK;
}

HRESULT DomElement::appendTextElement(const ZYMIDOMDocument_var& /*document*/, const ZYMUnicodeString& name,
                                      const ZYMUnicodeString& value) {
  if (HoldsNul(name) || HoldsNul(value)) {
    return E_FAIL;
  }
  anchor_.Storage().AppendTextElement(anchor_.Node(), name.CStr(), value.CStr());
  return S_OK;
}

HRESULT DomElement::getAttributeNames(ZYMUnicodeStringList& names) {
  for (const pugi::xml_attribute& attribute : anchor_.Node().attributes()) {
    names.Append(attribute.name());
  }
  return S_OK;
}

ZYMIDOMDocument_var DomDocument::Of(std::unique_ptr<DomStorage> storage) {
  ZYMIDOMDocument_var document = ZYMIDOMDocument_var::Adopt(new DomDocument(*storage, storage->Document()));
  static_cast<void>(storage.release());
  return document;
}

HRESULT DomDocument::getDocumentElement(ZYMIDOMElement_var& element) {
  const pugi::xml_node root = anchor_.Storage().RootElement();
  element = root ? ZYMIDOMElement_var::Adopt(new DomElement(anchor_.Storage(), root)) : nullptr;
  return S_OK;
}

HRESULT DomDocument::getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) {
  return ElementsByTagName(anchor_, name, elements);
}

HRESULT DomDocument::createElement(const ZYMUnicodeString& name, ZYMIDOMElement_var& element) {
  if (HoldsNul(name)) {
    return E_FAIL;
  }
  DomStorage& storage = anchor_.Storage();
  element = ZYMIDOMElement_var::Adopt(new DomElement(storage, storage.NewElement(name.CStr())));
  return S_OK;
}

HRESULT DomDocument::createTextNode(const ZYMUnicodeString& value, ZYMIDOMText_var& text) {
  if (HoldsNul(value)) {
    return E_FAIL;
  }
  DomStorage& storage = anchor_.Storage();
  text = ZYMIDOMText_var::Adopt(new DomText(storage, storage.NewText(value.CStr())));
  return S_OK;
}

}  // namespace ZYMDom
