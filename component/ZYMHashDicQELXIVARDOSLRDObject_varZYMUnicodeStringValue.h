#pragma once

#include "component/QELXIVARDOSLRDObject.h"
#include "platform/ZYMHashDic.h"

/// The handles of a record dictionary, by key.
using ZYMHashDicQELXIVARDOSLRDObject_varZYMUnicodeStringValue = ZYMHashDic<QELXIVARDOSLRDObject_var>;
