#pragma once

#include "records/QELXVARDOSIdentifier.h"
