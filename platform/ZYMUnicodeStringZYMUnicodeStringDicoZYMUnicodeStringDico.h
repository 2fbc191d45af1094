#pragma once

#include "platform/ZYMUnicodeStringZYMUnicodeStringDico.h"

/// From a string to a dictionary of strings: what a client's cache knows of each object, by CAD id.
using ZYMUnicodeStringZYMUnicodeStringDicoZYMUnicodeStringDico = ZYMStringDico<ZYMUnicodeStringZYMUnicodeStringDico>;
