#pragma once

#include "platform/ZYMUnicodeStringList.h"

/// The value list behind a list of strings.
using ZYMListValZYMUnicodeString = ZYMUnicodeStringList;
