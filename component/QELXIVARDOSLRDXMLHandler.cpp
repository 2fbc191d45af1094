#include "component/QELXIVARDOSLRDXMLHandler.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELXIVARDOSLRDXMLHandler, ZYMBaseUnknown, "{32BA92C8-E5E3-4342-9D70-7A24668122E0}")
