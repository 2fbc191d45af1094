#pragma once

#include <cstdio>
#include <string>
#include <system_error>

namespace lrd {

/// What the program asks of the system beyond the standard library.

/// Whether a person looks at the stream.
bool IsTerminal(std::FILE* stream);
/// From here on, writing to a pipe that nobody reads is an error and no longer ends the process.
void ReportBrokenPipes();
/// What the system would answer to making or renaming a file in that folder, with nothing made; false when it would do
/// it.
std::error_code WouldRefuseFileIn(const std::string& folder);

}  // namespace lrd
