#include "component/QELXIVARDOSLRDObject.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELXIVARDOSLRDObject, ZYMBaseUnknown)
