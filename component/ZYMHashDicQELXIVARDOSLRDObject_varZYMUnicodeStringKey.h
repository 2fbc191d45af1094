#pragma once

#include "platform/ZYMHashDic.h"
#include "platform/ZYMUnicodeString.h"

/// The copies of the keys of a record dictionary, by key.
using ZYMHashDicQELXIVARDOSLRDObject_varZYMUnicodeStringKey = ZYMHashDic<ZYMUnicodeString>;
