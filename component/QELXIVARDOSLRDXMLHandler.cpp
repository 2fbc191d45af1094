#include "component/QELXIVARDOSLRDXMLHandler.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELXIVARDOSLRDXMLHandler, ZYMBaseUnknown)
