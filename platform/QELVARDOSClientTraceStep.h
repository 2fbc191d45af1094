#pragma once

#include "platform/QELVARDOSClientTrace.h"
