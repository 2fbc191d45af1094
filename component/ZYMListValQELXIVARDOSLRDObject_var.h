#pragma once

#include "component/QELXIVARDOSLRDObject_var.h"
#include "platform/ZYMValueList.h"

/// The value list of record handles behind QELXIVARDOSLRDObject_varList.
using ZYMListValQELXIVARDOSLRDObject_var = ZYMValueList<QELXIVARDOSLRDObject_var>;
