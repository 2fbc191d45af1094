#pragma once

#include "platform/ZYMIDOM.h"
#include "platform/ZYMStringDico.h"

/// From a CAD id to the element that carries it.
using ZYMIDOMNode_varZYMUnicodeStringDico = ZYMStringDico<ZYMIDOMNode_var>;
