#pragma once

#include <string>
#include <string_view>

namespace lrd {

/// The text as it may be printed, on a terminal as in a file: one line that steers nothing and can be read back. A
/// control character (below U+0020, U+007F to U+009F) and a byte that is no UTF-8 are written as \xHH, byte by byte; a
/// backslash is doubled; all else stays as it is.
std::string Printable(std::string_view text);
void AppendPrintable(std::string& line, std::string_view text);

bool IsUtf8(std::string_view text);
/// Two digits a byte.
std::string InHexadecimal(std::string_view bytes);

}  // namespace lrd
