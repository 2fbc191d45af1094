#include "recognition/QELXVARDOSRecognitionHandler.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMFillDictionary.h"
#include "platform/ZYMIDOMLook.h"
#include "recognition/Recognition.h"
#include "records/QELXVARDOSLRDConstants.h"

ZYM_DEFINE_COMPONENT(QELXVARDOSRecognitionHandler, QELXIVARDOSRecognitionHandler)

ZYMBaseUnknown* CreateBOAQELXIVARDOSRecognitionHandlerQELXVARDOSRecognitionHandler() {
  return new QELXVARDOSRecognitionHandler;
}

QELXVARDOS_TRACED_HERE;

namespace {

using RecordMap = QELXIVARDOSLRDObject_varZYMUnicodeStringDico;

}  // namespace

QELXVARDOSRecognitionHandler::QELXVARDOSRecognitionHandler() = default;

QELXVARDOSRecognitionHandler::QELXVARDOSRecognitionHandler(const ZYMUnicodeString& command,
                                                           const QELIVARDOSGlobalConfigObject_var& config)
    : command_(command), config_(config) {}

QELXVARDOSRecognitionHandler::~QELXVARDOSRecognitionHandler() = default;

ZYMUnicodeString QELXVARDOSRecognitionHandler::CadName() const {
  return command_ == Word::Creo || config_.IsNull() ? command_ : config_->GetCADName();
}

HRESULT QELXVARDOSRecognitionHandler::Recognize(const ZYMIDOMNode_var& request, RecordMap& lrdMap) {
  const Step step(Trace, "QELXVARDOSRecognitionHandler::Recognize");
  const ZYMIDOMElement_var element(request);
  if (element.IsNull()) {
    return step.Return(S_OK);
  }
  const ZYMIDOMElement_var list = FirstElement(element, Word::CadObjectList);
  HRESULT status = GetLRDMap(element, lrdMap);
  Trace.Write(" Size of CADId to LRD Map = ", lrdMap.Size());
  if (SUCCEEDED(status) && list) {
    status = Recognition({command_, CadName(), config_, observer_, keepGoing_}, element, list).Run(lrdMap);
  }
  return step.Return(status);
}
