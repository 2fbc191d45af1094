#include "component/QELXIVARDOSRecognitionHandler.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELXIVARDOSRecognitionHandler, ZYMBaseUnknown)
