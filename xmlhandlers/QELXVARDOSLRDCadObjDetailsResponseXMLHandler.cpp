#include "xmlhandlers/QELXVARDOSLRDCadObjDetailsResponseXMLHandler.h"

#include "platform/ZYMFillDictionary.h"
#include "xmlhandlers/InfoSearch.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSLRDCadObjDetailsResponseXMLHandler, QELXVARDOSLRDXMLHandler)

QELXVARDOSLRDCadObjDetailsResponseXMLHandler::QELXVARDOSLRDCadObjDetailsResponseXMLHandler(
    const QELIVARDOSGlobalConfigObject_var& config)
    : QELXVARDOSLRDXMLHandler(config) {}

HRESULT QELXVARDOSLRDCadObjDetailsResponseXMLHandler::GetLRDObjects(
    const ZYMIDOMNode_var& root, QELXIVARDOSLRDObject_varZYMUnicodeStringDico& records) {
  const InfoSearch found = InfoSearch::Below(ZYMIDOMElement_var(root));
  if (FAILED(found.search)) {
    return found.search;
  }
  ReadCadObjectNode(found.info, records);
  return found.item;
}
