#pragma once

#include <string_view>

#include "platform/ZYMExport.h"

/// What a name that a server sent may do with the path that is made of it. A record file is FOLDER/RECORDS/NAME, where
/// RECORDS is the record folder; a name must not lead to any place outside of it, nor denote something that is no file.
/// Pure functions over text, one for each family of systems, so that each can be asked on any system.
namespace QELVARDOSNameRules {

/// Why a name is refused. None: it is not.
enum class Refusal {
  None,
  OtherFolder,         ///< a "." or "..", or what the system takes for one
  Drive,               ///< "C:x": on another drive, whatever stands before it
  Stream,              ///< "a:b": within another file
  Device,              ///< "nul.xml": no file at all
  Ending,              ///< a dot or a blank at the end, which the system drops: the file of another name
  ForbiddenCharacter,  ///< one that no name can have
};
/// The reason in words, for a trace or a message; empty for None.
ZYM_EXPORT std::string_view Reason(Refusal refusal);

/// name: all that stands behind the record folder, the suffix of record files included. It may have several components.
ZYM_EXPORT Refusal PosixName(std::string_view name);
ZYM_EXPORT Refusal WindowsName(std::string_view name);

/// The same of a whole path: what stands behind the first component that is the record folder. A path without one is
/// taken as given, and so is whatever stands before it.
ZYM_EXPORT Refusal PosixPath(std::string_view path, std::string_view recordFolder);
ZYM_EXPORT Refusal WindowsPath(std::string_view path, std::string_view recordFolder);

/// By the rules of the system that this is built for.
inline Refusal Name(std::string_view name) {
#ifdef _WIN32
  return WindowsName(name);
#else
  return PosixName(name);
#endif
}
inline Refusal Path(std::string_view path, std::string_view recordFolder) {
#ifdef _WIN32
  return WindowsPath(path, recordFolder);
#else
  return PosixPath(path, recordFolder);
#endif
}

}  // namespace QELVARDOSNameRules
