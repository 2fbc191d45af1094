#include "component/QELXIVARDOSRecognitionHandler.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELXIVARDOSRecognitionHandler, ZYMBaseUnknown, "{B23B6ADF-9285-42B6-9EBD-C352A317BA7A}")
