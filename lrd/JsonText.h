#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace lrd {

using Json = nlohmann::ordered_json;

/// Puts a text into an object. JSON holds UTF-8 alone, but a name on a disk may be any bytes: the member name then
/// holds the text as the lines of other outputs print it, and one more member, name and "Bytes", its bytes in
/// hexadecimal.
void PutText(Json& object, const std::string& name, const std::string& text);
/// Prints a document. Control characters are escaped in it, those too that JSON lets stand.
void PrintJson(const Json& document);

/// For the help of commands that print JSON.
inline constexpr const char* JsonHelp =
    "In JSON a text that is no UTF-8 is printed as in lines, with \\xHH for such bytes, and a second member, its name\n"
    "and \"Bytes\", holds the bytes in hexadecimal.";

}  // namespace lrd
