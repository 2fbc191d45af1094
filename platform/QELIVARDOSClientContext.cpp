#include "platform/QELIVARDOSClientContext.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELIVARDOSClientContext, ZYMBaseUnknown)
