#pragma once

#include "platform/ZYMUnicodeString.h"

/// Rules of the CAD system Creo.
class ZYM_EXPORT QELXVARDOSCreoUtil {
 public:
  /// A file name without its version: one last ".digits" goes where what remains still has a stem and an extension,
  /// both not empty. "part.prt.3" gives "part.prt"; "part.prt", "part.3", ".prt.3" and "part.prt.3a" stay. Of a name
  /// with "/" the last component counts.
  static ZYMUnicodeString fileNameWitoutVersion(const ZYMUnicodeString& fileName);
};
