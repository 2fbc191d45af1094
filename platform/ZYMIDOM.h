#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/ZYMHandle.h"
#include "platform/ZYMUnicodeString.h"
#include "platform/ZYMUnicodeStringList.h"

/// The XML trees of the framework, in W3C terms, as abstract interfaces: a host can hand in its own trees.
///
/// Every operation answers a status and, last, its result by reference. No match, an absent attribute, a node without
/// children and an index out of range are no errors: the status is 0 and the result an empty list, an empty string or a
/// null handle. After a negative status the result is as it was. A handle keeps the whole document of its node alive.
/// Looking at one node twice may give two handles; they denote the same node but are not equal as components.

class ZYMIDOMNode;
class ZYMIDOMElement;
class ZYMIDOMText;
class ZYMIDOMDocument;
class ZYMIDOMNodeList;
class ZYMIXMLDOMDocumentBuilder;

using ZYMIDOMNode_var = ZYMHandle<ZYMIDOMNode>;
using ZYMIDOMElement_var = ZYMHandle<ZYMIDOMElement>;
using ZYMIDOMText_var = ZYMHandle<ZYMIDOMText>;
using ZYMIDOMDocument_var = ZYMHandle<ZYMIDOMDocument>;
using ZYMIDOMNodeList_var = ZYMHandle<ZYMIDOMNodeList>;
using ZYMIXMLDOMDocumentBuilder_var = ZYMHandle<ZYMIXMLDOMDocumentBuilder>;

class ZYM_EXPORT ZYMIDOMNode : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(ZYMIDOMNode, "{C1E5B0A4-2F63-4D8A-9B17-6A0E3D5F7C21}");

 public:
  /// An element's tag; "#document", "#text", "#comment", "#cdata-section"; the target of a processing instruction; the
  /// name of a document type.
  virtual HRESULT getNodeName(ZYMUnicodeString& name) = 0;
  /// The text of a text, comment, CDATA or processing-instruction node; empty for every other kind.
  virtual HRESULT getNodeValue(ZYMUnicodeString& value) = 0;
  virtual HRESULT getFirstChild(ZYMIDOMNode_var& child) = 0;
  /// All children, elements or not, in document order. Walking them by index takes time in proportion to their number.
  virtual HRESULT getChildNodes(ZYMIDOMNodeList_var& children) = 0;
  /// Makes child the last child. A node that has a parent leaves it. A node of another document is taken over with all
  /// below it, and every handle to what was taken over denotes it in its new place. appended: the node in its place.
  /// A node that is this one or holds it, a second document element, or a node of a foreign implementation: E_FAIL.
  virtual HRESULT appendChild(const ZYMIDOMNode_var& child, ZYMIDOMNode_var& appended) = 0;
};

class ZYM_EXPORT ZYMIDOMElement : public ZYMIDOMNode {
  ZYM_DECLARE_INTERFACE(ZYMIDOMElement, "{8D4F72E9-B13C-4A06-A5D8-1F9C60E27B34}");

 public:
  /// The elements of that name below this one, this one left out, in document order. Asking for the first item looks no
  /// further than the first match.
  virtual HRESULT getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) = 0;
  /// An absent attribute reads as the empty string.
  virtual HRESULT getAttribute(const ZYMUnicodeString& name, ZYMUnicodeString& value) = 0;
  virtual HRESULT setAttribute(const ZYMUnicodeString& name, const ZYMUnicodeString& value) = 0;
  virtual HRESULT hasAttribute(const ZYMUnicodeString& name, bool& present) = 0;

  /// Short cuts for what is done most. Each has a body in terms of the operations above, which a tree may override with
  /// a faster one of the same effect.
  ///
  /// Whether getElementsByTagName has a first item and, if that has a first child, the child's value. found tells of
  /// the item also when the value could not be read.
  virtual HRESULT getTextOfFirst(const ZYMUnicodeString& name, bool& found, ZYMUnicodeString& text);
  /// Calls visit with each child that is an element of one of these names, without names with each that is an element,
  /// in document order until it answers false. The children must stay the same meanwhile.
  virtual HRESULT visitChildElements(const ZYMUnicodeStringList& names,
                                     const std::function<bool(const ZYMIDOMElement_var& child)>& visit);
  /// Makes an element with one text node, which is there even when the value is empty, the last child. document: the
  /// one that this element belongs to.
  virtual HRESULT appendTextElement(const ZYMIDOMDocument_var& document, const ZYMUnicodeString& name,
                                    const ZYMUnicodeString& value);

  /// Appends the names of the attributes, in the order in which they stand. A tree that cannot tell answers E_NOTIMPL.
  virtual HRESULT getAttributeNames(ZYMUnicodeStringList& names);
};

class ZYM_EXPORT ZYMIDOMText : public ZYMIDOMNode {
  ZYM_DECLARE_INTERFACE(ZYMIDOMText, "{47A9C3D1-60E8-4F5B-8C2E-D37B1A94F056}");
};

class ZYM_EXPORT ZYMIDOMDocument : public ZYMIDOMNode {
  ZYM_DECLARE_INTERFACE(ZYMIDOMDocument, "{E26B805F-7D1A-4C93-B04F-95C8A3612D7E}");

 public:
  /// null while the document has no root element.
  virtual HRESULT getDocumentElement(ZYMIDOMElement_var& element) = 0;
  virtual HRESULT getElementsByTagName(const ZYMUnicodeString& name, ZYMIDOMNodeList_var& elements) = 0;
  /// The new node belongs to this document but stands nowhere until it is appended.
  virtual HRESULT createElement(const ZYMUnicodeString& name, ZYMIDOMElement_var& element) = 0;
  virtual HRESULT createTextNode(const ZYMUnicodeString& value, ZYMIDOMText_var& text) = 0;
};

class ZYM_EXPORT ZYMIDOMNodeList : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(ZYMIDOMNodeList, "{0F93D6B8-A425-4E71-9D6C-B8E5172F40CA}");

 public:
  /// index from 0.
  virtual HRESULT item(int index, ZYMIDOMNode_var& node) = 0;
  virtual HRESULT getLength(int& length) = 0;
};

/// Makes, reads and writes documents.
class ZYM_EXPORT ZYMIXMLDOMDocumentBuilder : public ZYMBaseUnknown {
  ZYM_DECLARE_INTERFACE(ZYMIXMLDOMDocumentBuilder, "{B7520CE3-194D-48AF-8E3B-2C6D9F01A58B}");

 public:
  virtual HRESULT CreateDocument(ZYMIDOMDocument_var& document) = 0;
  /// Reads the file at path. optionNames and optionValues are parallel; "ZYMDoValidation" = "false" is known, others
  /// are passed over. A file that is missing, unreadable or not well-formed, or that declares entities: E_FAIL,
  /// document is as it was, and QELVARDOSSystemUtils::LastError tells file, line, column and reason. Memory that ran
  /// out says nothing of the file: E_OUTOFMEMORY.
  virtual HRESULT Parse(const ZYMUnicodeString& path, const ZYMUnicodeStringList& optionNames,
                        const ZYMUnicodeStringList& optionValues, ZYMIDOMDocument_var& document) = 0;
  /// Writes a document, or an element with all below it, as a whole file, an XML declaration first and nothing added.
  /// "ZYMEncoding" = "UTF-8" is known. The file at path is replaced at once or not at all. A tree that XML cannot hold
  /// (a character that it forbids, a name that is none) and a file that cannot be written: E_FAIL, LastError tells why.
  virtual HRESULT Write(const ZYMIDOMNode_var& node, const ZYMUnicodeString& path,
                        const ZYMUnicodeStringList& optionNames, const ZYMUnicodeStringList& optionValues) = 0;
  /// A short cut: a document with a root element of that name.
  virtual HRESULT CreateDocumentWithRoot(const ZYMUnicodeString& rootName, ZYMIDOMDocument_var& document,
                                         ZYMIDOMElement_var& root);
  /// The text that Write would write, handed to sink piece by piece until it answers false. A builder that cannot tell
  /// answers E_NOTIMPL.
  virtual HRESULT Serialize(const ZYMIDOMNode_var& node, const std::function<bool(std::string_view)>& sink);
  /// As Parse, for a caller that has read the file at path already and gives away what was in it. A builder that has no
  /// use for that reads the file itself.
  virtual HRESULT ParseContent(const ZYMUnicodeString& path, std::string&& bytes,
                               const ZYMUnicodeStringList& optionNames, const ZYMUnicodeStringList& optionValues,
                               ZYMIDOMDocument_var& document);
};

enum class ZYMDOMImplementation { XML4C };
using enum ZYMDOMImplementation;

/// A new builder. A negative status leaves builder as it was.
ZYM_EXPORT HRESULT CreateZYMIXMLDOMDocumentBuilder(ZYMIXMLDOMDocumentBuilder_var& builder,
                                                   ZYMDOMImplementation implementation = XML4C);

/// Puts another maker of builders in the place of ours, for hosts with a library of their own and for tests that let a
/// step fail; null restores ours. Answers the maker before, null for ours.
using ZYMDocumentBuilderCreation = HRESULT (*)(ZYMIXMLDOMDocumentBuilder_var& builder);
ZYM_EXPORT ZYMDocumentBuilderCreation ZYMSetDocumentBuilderCreation(ZYMDocumentBuilderCreation creation);
