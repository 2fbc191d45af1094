#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>

namespace lrd {

/// What the program asks of the system beyond the standard library.

/// Whether a person looks at the stream.
bool IsTerminal(std::FILE* stream);
/// From here on, writing to a pipe that nobody reads, or more than a file may hold, is an error and no longer ends the
/// process.
void ReportFailedWrites();
/// From here on, Ctrl-C and the request to terminate are noticed and no longer end the process. What the caller of the
/// program chose to ignore stays ignored.
void NoticeEndings();
enum class Ending { None, Interrupt, Termination };
/// The first of them that was noticed.
Ending NoticedEnding();
/// Writes all of the text to standard output. operation_canceled: it would have had to wait, and an ending was noticed.
std::error_code WriteOut(std::string_view text);
/// The same to a device or a pipe.
std::error_code WriteToDevice(const std::string& device, std::string_view text);
/// The line that a person types; empty when there is none to come, or an ending was noticed.
std::string ReadLine();
/// What the system would answer to making or renaming a file in that folder, with nothing made; false when it would do
/// it.
std::error_code WouldRefuseFileIn(const std::string& folder);

}  // namespace lrd
