#pragma once

#include "platform/QELVARDOSNameRules.h"
#include "records/QELXVARDOSLRDConstants.h"

/// Why nothing may be written at a path, since the name that a server sent leads out of the record folder; None when it
/// does not.
inline QELVARDOSNameRules::Refusal RefusalOf(const ZYMUnicodeString& path) {
  return QELVARDOSNameRules::Path(path.View(), FileName::RecordFolder.View());
}
