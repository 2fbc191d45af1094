#include "xmlhandlers/QELXVARDOSLRDCheckoutExXMLHandler.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMFillDictionary.h"
#include "xmlhandlers/InfoSearch.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSLRDCheckoutExXMLHandler, QELXVARDOSLRDXMLHandler)

QELXVARDOS_TRACED_HERE;

namespace {

using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

}  // namespace

QELXVARDOSLRDCheckoutExXMLHandler::QELXVARDOSLRDCheckoutExXMLHandler(const QELIVARDOSGlobalConfigObject_var& config)
    : QELXVARDOSLRDXMLHandler(config) {}

HRESULT QELXVARDOSLRDCheckoutExXMLHandler::GetLRDObjects(const ZYMIDOMNode_var& root, RecordMap& records) {
  const Step step(Trace, "QELXVARDOSLRDCheckoutExXMLHandler::GetLRDObjects");
  const ZYMIDOMElement_var element(root);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  const InfoSearch found = InfoSearch::Below(element);
  if (found.info) {
    QELXVARDOSLRDXMLHandler::GetLRDObjects(found.info, records);
  }
  return step.Return(found.item);
}

HRESULT QELXVARDOSLRDCheckoutExXMLHandler::CreateOrUpdateLRD(const ZYMIDOMNode_var& root,
                                                             const RecordMap& /*records*/) {
  const Step step(Trace, "QELXVARDOSLRDCheckoutExXMLHandler::CreateOrUpdateLRD");
  RecordMap answered;
  const HRESULT status = GetLRDObjects(root, answered);
  const HRESULT written = WriteSelected(answered);
  return step.Return(FAILED(written) ? written : status);
}
