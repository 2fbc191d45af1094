#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "tests/support/Trees.h"

/// Trees whose calls fail: every node, list and builder is wrapped in a double that counts its calls and fails at one
/// of them. While the object lives, all builders of the process are such doubles.
class FailingDom {
 public:
  static constexpr HRESULT Status = static_cast<HRESULT>(0x80040007U);

  /// callsBefore: how many calls succeed before the one that fails; those behind it succeed again. operation: counts
  /// calls of that name alone.
  explicit FailingDom(int callsBefore, std::string operation = "")
      : left_(callsBefore), operation_(std::move(operation)), before_(ZYMSetDocumentBuilderCreation(&CreateBuilder)) {
    current_ = this;
  }
  ~FailingDom() {
    ZYMSetDocumentBuilderCreation(before_);
    current_ = nullptr;
  }
  FailingDom(const FailingDom&) = delete;
  FailingDom& operator=(const FailingDom&) = delete;

  bool HasFailed() const { return left_ < 0; }

  /// Runs again and again with trees of which one call fails, each time a later one, until none does. No component may
  /// stay of a run.
  template <typename Run>
  static void FailEach(const Run& run) {
    bool failed = true;
    for (int calls = 0; failed; ++calls) {
      SCOPED_TRACE(std::to_string(calls) + " calls succeed");
      ASSERT_LT(calls, 2000);
      const std::int64_t living = ZYMBaseUnknown::LivingComponents();
      {
        const FailingDom dom(calls);
        run(dom);
        failed = dom.HasFailed();
      }
      ASSERT_EQ(ZYMBaseUnknown::LivingComponents(), living);
    }
  }

  static ZYMIDOMElement_var Wrap(const ZYMIDOMElement_var& element) { return Double(element); }
  /// The node behind a double.
  static ZYMIDOMNode_var Inner(const ZYMIDOMNode_var& node) {
    const auto* wrapper = dynamic_cast<const Wrapper*>(node.Get());
    return wrapper == nullptr ? node : wrapper->inner;
  }

 private:
  struct Wrapper {
    explicit Wrapper(const ZYMIDOMNode_var& node) : inner(node) {}
    virtual ~Wrapper() = default;
    ZYMIDOMNode_var inner;
  };

  static bool Fails(const std::string& operation) {
    const bool counts = current_ != nullptr && (current_->operation_.empty() || current_->operation_ == operation);
    return counts && current_->left_-- == 0;
  }

  /// Calls the double's own component; a handle that it hands out becomes a double too.
  template <typename Own, typename Member, typename Interface, typename... In>
  static HRESULT Call(const char* name, const Own& own, Member member, ZYMHandle<Interface>& out, const In&... in) {
    if (Fails(name)) {
      return Status;
    }
    ZYMHandle<Interface> found;
    const HRESULT status = (own.Get()->*member)(in..., found);
    if (SUCCEEDED(status)) {
      out = Double(found);
    }
    return status;
  }
  template <typename Own, typename Member, typename Last, typename... In>
  static HRESULT Call(const char* name, const Own& own, Member member, Last& last, const In&... in) {
    return Fails(name) ? Status : (own.Get()->*member)(in..., last);
  }

  using S = ZYMUnicodeString;
  using NODE = ZYMIDOMNode_var;
  using LIST = ZYMIDOMNodeList_var;
  using SL = ZYMUnicodeStringList;

  template <typename I>
  class Node : public I, public Wrapper {
   public:
    explicit Node(const NODE& node) : Wrapper(node), own(node) {}
    HRESULT getNodeName(S& name) override { return Call(__func__, own, &I::getNodeName, name); }
    HRESULT getNodeValue(S& value) override { return Call(__func__, own, &I::getNodeValue, value); }
    HRESULT getFirstChild(NODE& child) override { return Call(__func__, own, &I::getFirstChild, child); }
    HRESULT getChildNodes(LIST& children) override { return Call(__func__, own, &I::getChildNodes, children); }
    HRESULT appendChild(const NODE& child, NODE& done) override {
      return Call(__func__, own, &I::appendChild, done, FailingDom::Inner(child));
    }

   protected:
    ZYMHandle<I> own;
  };

  class Element : public Node<ZYMIDOMElement> {
    using I = ZYMIDOMElement;

   public:
    using Node::Node;
    HRESULT getElementsByTagName(const S& name, LIST& all) override {
      return Call(__func__, own, &I::getElementsByTagName, all, name);
    }
    HRESULT getAttribute(const S& name, S& value) override {
      return Call(__func__, own, &I::getAttribute, value, name);
    }
    HRESULT setAttribute(const S& name, const S& value) override {
      return Call(__func__, own, &I::setAttribute, value, name);
    }
    HRESULT hasAttribute(const S& name, bool& has) override { return Call(__func__, own, &I::hasAttribute, has, name); }
  };

  class Document : public Node<ZYMIDOMDocument> {
    using I = ZYMIDOMDocument;

   public:
    using Node::Node;
    HRESULT getDocumentElement(ZYMIDOMElement_var& root) override {
      return Call(__func__, own, &I::getDocumentElement, root);
    }
    HRESULT getElementsByTagName(const S& name, LIST& all) override {
      return Call(__func__, own, &I::getElementsByTagName, all, name);
    }
    HRESULT createElement(const S& name, ZYMIDOMElement_var& made) override {
      return Call(__func__, own, &I::createElement, made, name);
    }
    HRESULT createTextNode(const S& value, ZYMIDOMText_var& made) override {
      return Call(__func__, own, &I::createTextNode, made, value);
    }
  };

  class List : public ZYMIDOMNodeList {
   public:
    explicit List(LIST list) : own_(std::move(list)) {}
    HRESULT item(int index, NODE& node) override { return Call(__func__, own_, &ZYMIDOMNodeList::item, node, index); }
    HRESULT getLength(int& length) override { return Call(__func__, own_, &ZYMIDOMNodeList::getLength, length); }

   private:
    LIST own_;
  };

  class Builder : public ZYMIXMLDOMDocumentBuilder {
    using I = ZYMIXMLDOMDocumentBuilder;

   public:
    HRESULT CreateDocument(ZYMIDOMDocument_var& made) override {
      return Call(__func__, own_, &I::CreateDocument, made);
    }
    HRESULT Parse(const S& path, const SL& names, const SL& values, ZYMIDOMDocument_var& read) override {
      return Call(__func__, own_, &I::Parse, read, path, names, values);
    }
    HRESULT Write(const NODE& node, const S& path, const SL& names, const SL& values) override {
      return Call(__func__, own_, &I::Write, values, FailingDom::Inner(node), path, names);
    }

   private:
    ZYMIXMLDOMDocumentBuilder_var own_ = OwnBuilder();
  };

  static HRESULT CreateBuilder(ZYMIXMLDOMDocumentBuilder_var& builder) {
    if (Fails("CreateBuilder")) {
      return Status;
    }
    builder = ZYMMakeComponent<Builder>();
    return S_OK;
  }

  static LIST Double(const LIST& list) { return list.IsNull() ? list : LIST(ZYMMakeComponent<List>(list)); }
  /// The same kind of node.
  static NODE Double(const NODE& node) {
    if (ZYMIDOMElement_var(node)) {
      return ZYMMakeComponent<Element>(node);
    }
    if (ZYMIDOMDocument_var(node)) {
      return ZYMMakeComponent<Document>(node);
    }
    if (ZYMIDOMText_var(node)) {
      return ZYMMakeComponent<Node<ZYMIDOMText>>(node);
    }
    return node.IsNull() ? node : NODE(ZYMMakeComponent<Node<ZYMIDOMNode>>(node));
  }
  template <typename Interface>
  static ZYMHandle<Interface> Double(const ZYMHandle<Interface>& node) {
    return Double(NODE(node));
  }

  static inline const FailingDom* current_ = nullptr;
  mutable int left_;
  std::string operation_;
  ZYMDocumentBuilderCreation before_;
};
