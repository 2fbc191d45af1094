// A client of the module: records what the server answered to a check-out, then asks what it knows of a request's
// objects.

#include <iostream>

#include "platform/ZYMNullHandleError.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"

using Text = ZYMUnicodeString;

/// What the client tells of its CAD system and of its object types, here next to nothing.
class Configuration : public QELIVARDOSGlobalConfigObject {
 public:
  Text GetCADName() override { return "CREO"; }
  Text GetIdentifierAttribute(const Text& /*type*/) override { return "filename"; }
  bool IsTypeInCategory(const Text& /*type*/, const Text& /*category*/) override { return false; }
  bool IsRelTypeInCategory(const Text& /*type*/, const Text& /*category*/) override { return false; }
};

static ZYMIDOMElement_var RootOf(const char* file) {
  ZYMIXMLDOMDocumentBuilder_var builder;
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var root;
  CreateZYMIXMLDOMDocumentBuilder(builder);
  builder->Parse(file, {}, {}, document);
  document->getDocumentElement(root);
  return root;
}

static void PrintVerdicts(const ZYMIDOMElement_var& request) {
  ZYMIDOMNodeList_var objects;
  ZYMIDOMNode_var node;
  request->getElementsByTagName("cadobject", objects);
  for (int i = 0; SUCCEEDED(objects->item(i, node)) && node; ++i) {
    const ZYMIDOMElement_var object(node);
    Text name;
    Text verdict;
    object->getAttribute("filename", name);
    object->getAttribute("status", verdict);
    std::cout << name << ' ' << verdict << '\n';
  }
}

int main(int argc, char** argv) try {
  if (argc != 3) {
    std::cerr << "usage: example_host RESPONSE REQUEST\n";
    return 2;
  }
  const QELIVARDOSGlobalConfigObject_var config = ZYMMakeComponent<Configuration>();
  QELXVARDOSRecognitionFactory factory;
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico records;

  const ZYMIDOMElement_var response = RootOf(argv[1]);
  QELXIVARDOSRecognitionHandler_var recorder;
  factory.GetRecognitionHandler("checkoutEx", config, response, recorder);
  const HRESULT recorded = recorder->CreateOrUpdateLRD(response, records);

  const ZYMIDOMElement_var request = RootOf(argv[2]);
  QELXIVARDOSRecognitionHandler_var recogniser;
  factory.GetRecognitionHandler("synclocalrecognition", config, request, recogniser);
  const HRESULT recognised = recogniser->Recognize(request, records);

  PrintVerdicts(request);
  return SUCCEEDED(recorded) && SUCCEEDED(recognised) ? 0 : 1;
} catch (const ZYMNullHandleError& error) {
  // An input that cannot be read leaves a null handle behind; using that raises this.
  std::cerr << error.what() << '\n';
  return 1;
}
