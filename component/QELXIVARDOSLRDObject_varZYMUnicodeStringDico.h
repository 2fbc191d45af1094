#pragma once

#include "component/QELXIVARDOSLRDObject.h"
#include "platform/ZYMStringDico.h"

/// From a CAD id, or from a physical id, to a record. A missing key reads as a null handle.
using QELXIVARDOSLRDObject_varZYMUnicodeStringDico = ZYMStringDico<QELXIVARDOSLRDObject_var>;
