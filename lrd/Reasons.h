#pragma once

#include <string>

#include "component/QELXVARDOSReason.h"
#include "lrd/JsonText.h"

namespace lrd {

/// Those of the reason; without any, empty ones.
const QELXVARDOSReason::Details& DetailsOf(const QELXVARDOSReason& reason);

/// The reasons that the module gives, in words.
const char* InWords(QELXVARDOSReason::Kind reason);
const char* InWords(QELXVARDOSReason::Doubt doubt);

/// Appends the reason with the facts that decided, such that a person can look them up: in brackets, each behind its
/// name. The failure is left out.
void AppendReason(std::string& line, const QELXVARDOSReason& reason);
/// Appends what is doubtful, each doubt with what it rests on; nothing without a doubt.
void AppendDoubts(std::string& line, const QELXVARDOSReason& reason);
/// Puts the same into an object.
void PutReason(Json& json, const QELXVARDOSReason& reason);

/// The same for the one doubt that is told of two objects. with: the CAD id of the other.
inline constexpr const char* SharingInWords = "another object has the same record file";
void AppendSharing(std::string& line, const ZYMUnicodeString& with);
void PutSharing(Json& json, const ZYMUnicodeString& with);

/// The closed lists, for the help of commands that print reasons.
std::string ReasonsHelp();

}  // namespace lrd
