#include "benchmarks/Client.h"

#include "benchmarks/Comparison.h"
#include "platform/QELVARDOSSystemUtils.h"

namespace Client {

namespace {

class CreoConfiguration : public QELIVARDOSGlobalConfigObject {
 public:
  ZYMUnicodeString GetCADName() override { return "CREO"; }
  ZYMUnicodeString GetIdentifierAttribute(const ZYMUnicodeString& /*type*/) override { return "filename"; }
  bool IsTypeInCategory(const ZYMUnicodeString& type, const ZYMUnicodeString& category) override {
    return type == "instance" && category == "TYPE_FAMILY_ITEM_LIKE";
  }
  bool IsRelTypeInCategory(const ZYMUnicodeString& /*type*/, const ZYMUnicodeString& /*category*/) override {
    return false;
  }
};

}  // namespace

QELIVARDOSGlobalConfigObject_var Configuration() { return ZYMMakeComponent<CreoConfiguration>(); }

ZYMIDOMDocument_var Parse(const std::string& file) {
  ZYMIXMLDOMDocumentBuilder_var builder;
  CreateZYMIXMLDOMDocumentBuilder(builder);
  ZYMIDOMDocument_var document;
  const HRESULT status = builder->Parse(file, {"ZYMDoValidation"}, {"false"}, document);
  Expect(SUCCEEDED(status), QELVARDOSSystemUtils::LastError());
  return document;
}

ZYMIDOMElement_var RootOf(const ZYMIDOMDocument_var& document) {
  ZYMIDOMElement_var root;
  document->getDocumentElement(root);
  return root;
}

void Copy(const ZYMIDOMDocument_var& from, pugi::xml_document& to) {
  ZYMIXMLDOMDocumentBuilder_var builder;
  CreateZYMIXMLDOMDocumentBuilder(builder);
  std::string text;
  builder->Serialize(from, [&text](std::string_view piece) {
    text += piece;
    return true;
  });
  Expect(to.load_string(text.c_str()), "a tree that can be read again");
}

}  // namespace Client
