#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "platform/HRESULT.h"
#include "platform/ZYMExport.h"
#include "platform/ZYMKeyedHash.h"

/// The framework's string: UTF-8 inside, empty by default. Length and order count bytes.
class ZYM_EXPORT ZYMUnicodeString {
 public:
  ZYMUnicodeString() = default;
  /// null is the empty string.
  ZYMUnicodeString(const char* text) : text_(text == nullptr ? "" : text) {}
  ZYMUnicodeString(std::string text) noexcept : text_(std::move(text)) {}
  ZYMUnicodeString(std::string_view text) : text_(text) {}

  /// Becomes text; room that the string has already is used again. text may not lie within this string.
  void Assign(std::string_view text) { text_.assign(text); }

  bool IsEmpty() const noexcept { return text_.empty(); }
  std::size_t Length() const noexcept { return text_.size(); }
  const std::string& Str() const noexcept { return text_; }
  std::string_view View() const noexcept { return text_; }
  const char* CStr() const noexcept { return text_.c_str(); }
  operator std::string_view() const noexcept { return text_; }

  /// 2: equal. 1: equal but for the case of ASCII letters. 0: different.
  int Compare(const ZYMUnicodeString& other) const noexcept;
  /// Compare as a truth value: equal but for the case of ASCII letters.
  bool Matches(const ZYMUnicodeString& other) const noexcept { return Compare(other) != 0; }
  /// The order of sorting, by bytes: negative, 0 or positive.
  int SortCompare(const ZYMUnicodeString& other) const noexcept;
  /// Becomes the number printed with a printf format that holds one integer conversion; "%I64d" is the 64-bit decimal
  /// on every system. Any other format: E_FAIL, and the string stays.
  HRESULT BuildFromNum(std::int64_t number, const char* format);

  ZYMUnicodeString& operator+=(const ZYMUnicodeString& other) {
    text_ += other.text_;
    return *this;
  }
  friend ZYMUnicodeString operator+(const ZYMUnicodeString& a, const ZYMUnicodeString& b) {
    std::string joined;
    joined.reserve(a.text_.size() + b.text_.size());
    joined.append(a.text_).append(b.text_);
    return joined;
  }

  /// Exact, byte by byte.
  friend bool operator==(const ZYMUnicodeString& a, const ZYMUnicodeString& b) noexcept { return a.text_ == b.text_; }
  friend bool operator==(const ZYMUnicodeString& a, const char* b) noexcept { return a.text_ == b; }
  friend std::strong_ordering operator<=>(const ZYMUnicodeString& a, const ZYMUnicodeString& b) noexcept {
    return a.text_ <=> b.text_;
  }
  friend ZYM_EXPORT std::ostream& operator<<(std::ostream& stream, const ZYMUnicodeString& string);

 private:
  std::string text_;
};

template <>
struct std::hash<ZYMUnicodeString> {
  std::size_t operator()(const ZYMUnicodeString& string) const { return ZYMKeyedHash()(string.View()); }
};
