#pragma once

#include "platform/ZYMUnicodeString.h"

/// Whether a path leads out of the record folder that it names, as a name that a server sent might make it.
bool LeavesRecordFolder(const ZYMUnicodeString& path);
