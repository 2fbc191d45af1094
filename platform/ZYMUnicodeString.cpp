#include "platform/ZYMUnicodeString.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

namespace {

char LowerAscii(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsOneOf(char c, std::string_view characters) noexcept { return characters.find(c) != std::string_view::npos; }

// The format with its one conversion widened to 64 bits; empty when the format holds anything but one integer
// conversion.
std::string ConversionFor64Bits(std::string_view format) {
  const std::size_t percent = format.find('%');
  if (percent == std::string_view::npos || format.find('%', percent + 1) != std::string_view::npos) {
    return {};
  }
  std::size_t at = percent + 1;
  while (at < format.size() && IsOneOf(format[at], "-+ #0123456789.")) {
    ++at;
  }
  std::string widened(format.substr(0, at));
  for (const std::string_view size : {"I64", "ll", "l", ""}) {
    if (format.substr(at).starts_with(size)) {
      at += size.size();
      break;
    }
  }
  if (at >= format.size() || !IsOneOf(format[at], "diuxXo")) {
    return {};
  }
  return widened.append("ll").append(format.substr(at));
}

}  // namespace

int ZYMUnicodeString::Compare(const ZYMUnicodeString& other) const noexcept {
  if (text_ == other.text_) {
    return 2;
  }
  return std::equal(text_.begin(), text_.end(), other.text_.begin(), other.text_.end(),
                    [](char a, char b) { return LowerAscii(a) == LowerAscii(b); })
             ? 1
             : 0;
}

int ZYMUnicodeString::SortCompare(const ZYMUnicodeString& other) const noexcept { return text_.compare(other.text_); }

HRESULT ZYMUnicodeString::BuildFromNum(std::int64_t number, const char* format) {
  if (std::string_view(format) == "%I64d") {
    text_ = std::to_string(number);
    return S_OK;
  }
  const std::string conversion = ConversionFor64Bits(format);
  if (conversion.empty()) {
    return E_FAIL;
  }
  const long long argument = number;
  const int length = std::snprintf(nullptr, 0, conversion.c_str(), argument);
  if (length < 0) {
    return E_FAIL;
  }
  std::string printed(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(printed.data(), printed.size(), conversion.c_str(), argument);
  printed.pop_back();
  text_ = std::move(printed);
  return S_OK;
}

std::ostream& operator<<(std::ostream& stream, const ZYMUnicodeString& string) { return stream << string.text_; }
