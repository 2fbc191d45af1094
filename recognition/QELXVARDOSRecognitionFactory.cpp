#include "recognition/QELXVARDOSRecognitionFactory.h"

#include "component/QELXVARDOSTraceChannels.h"
#include "platform/ZYMIDOMLook.h"
#include "recognition/QELXVARDOSRecognitionHandler.h"
#include "recognition/QELXVARDOSRecognitionHandlerNoLRD.h"
#include "records/QELXVARDOSLRDConstants.h"

QELXVARDOS_TRACED_HERE;

QELXVARDOSRecognitionFactory::QELXVARDOSRecognitionFactory() = default;

QELXVARDOSRecognitionFactory::QELXVARDOSRecognitionFactory(const QELIVARDOSClientContext_var& context)
    : context_(context) {}

QELXVARDOSRecognitionFactory::~QELXVARDOSRecognitionFactory() = default;

ZYMUnicodeStringList QELXVARDOSRecognitionFactory::CommandsWithoutRecords() const {
  return context_ ? context_->GetCommandsWithoutLRD() : ZYMUnicodeStringList();
}

HRESULT QELXVARDOSRecognitionFactory::GetRecognitionHandler(const ZYMUnicodeString& command,
                                                            const QELIVARDOSGlobalConfigObject_var& config,
                                                            const ZYMIDOMNode_var& request,
                                                            QELXIVARDOSRecognitionHandler_var& handler) {
  const Step step(Trace, "QELXVARDOSRecognitionFactory::GetRecognitionHandler");
  const ZYMUnicodeStringList withoutRecords = CommandsWithoutRecords();
  if (const ZYMIDOMElement_var element(request); element) {
    if (withoutRecords.Locate(command) != 0 || Attribute(element, Word::DownloadFileOnly) == Word::UpperTrue) {
      handler = ZYMMakeComponent<QELXVARDOSRecognitionHandlerNoLRD>(command);
    } else {
      handler = ZYMMakeComponent<QELXVARDOSRecognitionHandler>(command, config);
    }
  }
  if (handler) {
    // The framework's class name, not the handler's: the line reads the same for both.
    Trace.Write("LRD recognition object of type : ", ZYMBaseUnknown::ClassName(), " created");
  }
  return step.Return(S_OK);
}
