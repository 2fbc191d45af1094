#include <cstdlib>
#include <iostream>
#include <string>

#include "platform/ZYMIDOM.h"
#include "recognition/QELXVARDOSRecognitionFactory.h"
#include "tests/support/TestConfiguration.h"
#include "xmlhandlers/QELXVARDOSLRDXMLFactory.h"

/// Writes the record of the one object of a response into a folder again and again, as "0.xml", "1.xml" and so on, with
/// a call of its own each time.
int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: record_singly RESPONSE FOLDER NUMBER\n";
    return 2;
  }
  const QELIVARDOSGlobalConfigObject_var config = ZYMMakeComponent<TestConfiguration>();
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
    record->SetLRDFilePath(ZYMUnicodeString(std::string(argv[2]) + "/" + std::to_string(number) + ".xml"));
    status = recorder->CreateOrUpdateLRD(QELXIVARDOSLRDObject_varList{record});
  }
  return SUCCEEDED(status) ? 0 : 1;
}
