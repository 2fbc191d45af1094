#pragma once

#include "platform/ZYMHandle.h"

class QELXIVARDOSLRDObject;

/// A handle to a record.
using QELXIVARDOSLRDObject_var = ZYMHandle<QELXIVARDOSLRDObject>;
