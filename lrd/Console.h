#pragma once

#include <string>
#include <string_view>

namespace lrd {

/// Writes to standard output. Answers false once nobody reads it any more; what follows is then passed over, so a
/// command may stop early or go on. Any other failure to write ends the command.
bool Print(std::string_view text);
/// Hands everything printed so far to the system.
void FlushPrinted();
/// A line on standard error, with the program's name before it and the message made printable.
void Complain(std::string_view message);
/// The same about a file, named first.
void Complain(const std::string& file, const std::string& message);

/// Whether a person can be asked.
bool CanAsk();
/// Whether the person says yes to the question.
bool Agrees(const std::string& question);

enum class Colour { None, Green, Yellow, Red };
/// The text in that colour, on a terminal that shows colours and unless NO_COLOR is set.
std::string Coloured(std::string_view text, Colour colour);

}  // namespace lrd
