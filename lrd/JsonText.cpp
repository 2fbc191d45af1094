#include "lrd/JsonText.h"

#include "lrd/Console.h"
#include "lrd/Printable.h"

namespace lrd {

namespace {

/// The dump escapes those below U+0020; the others can only stand in strings.
std::string WithControlsEscaped(const std::string& dump) {
  std::string text;
  text.reserve(dump.size());
  for (std::size_t at = 0; at < dump.size(); ++at) {
    const bool isC1 = dump[at] == '\xc2' && static_cast<unsigned char>(dump[at + 1]) < 0xa0;
    if (isC1) {
      ++at;
    }
    if (isC1 || dump[at] == '\x7f') {
      text += "\\u00" + InHexadecimal(dump.substr(at, 1));
    } else {
      text += dump[at];
    }
  }
  return text;
}

}  // namespace

void PutText(Json& object, const std::string& name, const std::string& text) {
  if (IsUtf8(text)) {
    object[name] = text;
  } else {
    object[name] = Printable(text);
    object[name + "Bytes"] = InHexadecimal(text);
  }
}

void PrintJson(const Json& document) { Print(WithControlsEscaped(document.dump(2)) + "\n"); }

}  // namespace lrd
