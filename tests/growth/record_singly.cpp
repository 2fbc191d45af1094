#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/QELIVARDOSGlobalConfigObject.h"
#include "platform/ZYMIDOM.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

namespace {

using Text = ZYMUnicodeString;

class Configuration : public QELIVARDOSGlobalConfigObject {
 public:
  Text GetCADName() override { return "CREO"; }
  Text GetIdentifierAttribute(const Text& /*type*/) override { return "filename"; }
  bool IsTypeInCategory(const Text& /*type*/, const Text& /*category*/) override { return false; }
  bool IsRelTypeInCategory(const Text& /*type*/, const Text& /*category*/) override { return false; }
};

}  // namespace

/// Writes the record of the one object of a response into a folder again and again, as "0.xml", "1.xml" and so on, with
/// a call of its own each time.
int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: record_singly RESPONSE FOLDER NUMBER\n";
    return 2;
  }
  const QELIVARDOSGlobalConfigObject_var config = ZYMMakeComponent<Configuration>();
  ZYMIXMLDOMDocumentBuilder_var builder;
  ZYMIDOMDocument_var document;
  ZYMIDOMElement_var response;
  CreateZYMIXMLDOMDocumentBuilder(builder);
  builder->Parse(argv[1], {}, {}, document);
  document->getDocumentElement(response);

  QELXIVARDOSLRDXMLHandler_var reader;
  QELXIVARDOSLRDObject_varZYMUnicodeStringDico records;
  QELXVARDOSLRDXMLFactory().GetLRDXMLHandler(config, response, reader);
  reader->GetLRDObjects(response, records);
  const QELXIVARDOSLRDObject_var record = records.begin()->second;

  QELXIVARDOSRecognitionHandler_var recorder;
  QELXVARDOSRecognitionFactory().GetRecognitionHandler("checkoutEx", config, response, recorder);
  HRESULT status = S_OK;
  for (int number = 0; number < std::atoi(argv[3]) && SUCCEEDED(status); ++number) {
    record->SetLRDFilePath(Text(std::string(argv[2]) + "/" + std::to_string(number) + ".xml"));
    status = recorder->CreateOrUpdateLRD(QELXIVARDOSLRDObject_varList{record});
  }
  return SUCCEEDED(status) ? 0 : 1;
}
