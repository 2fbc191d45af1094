#include "platform/QELIVARDOSClientContext.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELIVARDOSClientContext, ZYMBaseUnknown, "{70829E1E-8C8A-4A25-A2DA-998B6A6D694B}")
