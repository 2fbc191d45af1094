#pragma once

#include "platform/ZYMUnicodeString.h"
#include "platform/ZYMValueList.h"

/// A list of strings. Locate compares exactly.
using ZYMUnicodeStringList = ZYMValueList<ZYMUnicodeString>;
