#include "records/QELXVARDOSLRDConstants.h"

#include "platform/ZYMLoadOrder.h"

#define CONSTANT(Group, Scope, Name, text)                \
  namespace Scope {                                       \
  ZYM_LOADED_AS(Group) const ZYMUnicodeString Name(text); \
  }
#include "records/Words.def"
