#pragma once

#include "platform/ZYMUnicodeString.h"

/// The words of records/Words.def, each in its namespace. They are set when the module is loaded, in the order of
/// ZYMLoadOrder, and never change.
#define CONSTANT(Group, Scope, Name, text) \
  namespace Scope {                        \
  extern const ZYMUnicodeString Name;      \
  }
#include "records/Words.def"
