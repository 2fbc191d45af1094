#include "component/QELXIVARDOSLRDObject.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELXIVARDOSLRDObject, ZYMBaseUnknown, "{58AF0FFD-4BFB-4675-BAFC-5F3DB3CBBE2C}")
