#include "xmlhandlers/QELXVARDOSLRDCheckoutExPathXMLHandler.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMFillDictionary.h"
#include "xmlhandlers/InfoSearch.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSLRDCheckoutExPathXMLHandler, QELXVARDOSLRDXMLHandler)

QELXVARDOS_TRACED_HERE;

namespace {

using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

}  // namespace

QELXVARDOSLRDCheckoutExPathXMLHandler::QELXVARDOSLRDCheckoutExPathXMLHandler(
    const QELIVARDOSGlobalConfigObject_var& config)
    : QELXVARDOSLRDXMLHandler(config) {}

HRESULT QELXVARDOSLRDCheckoutExPathXMLHandler::GetLRDObjects(const ZYMIDOMNode_var& root, RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDCheckoutExPathXMLHandler::GetLRDObjects");
  const ZYMIDOMElement_var element(root);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  const InfoSearch found = InfoSearch::Below(element);
  return step.Return(found.info ? ReadCadObjectNode(found.info, records) : found.item);
}

HRESULT QELXVARDOSLRDCheckoutExPathXMLHandler::CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                                                                 const RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDCheckoutExPathXMLHandler::CreateOrUpdateLRD");
  // The response is read for what reading it raises and traces; the caller's records are what is written.
  RecordMap answered;
  GetLRDObjects(root, answered);
  return step.Return(WriteSelected(records));
}
