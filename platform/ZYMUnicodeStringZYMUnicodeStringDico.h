#pragma once

#include "platform/ZYMStringDico.h"

/// From a string to a string; a missing key reads as the empty string.
using ZYMUnicodeStringZYMUnicodeStringDico = ZYMStringDico<ZYMUnicodeString>;
