#include "platform/QELIVARDOSGlobalConfigObject.h"

#include "platform/ZYMFillDictionary.h"

ZYM_DEFINE_INTERFACE(QELIVARDOSGlobalConfigObject, ZYMBaseUnknown, "{167F9DA2-90A5-4199-ABB4-F0325C945D85}")
