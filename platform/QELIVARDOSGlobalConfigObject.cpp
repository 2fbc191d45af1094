#include "platform/QELIVARDOSGlobalConfigObject.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELIVARDOSGlobalConfigObject, ZYMBaseUnknown)
