#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The 128-bit identity of an interface.
class ZYMGuid {
 public:
  /// From the registry form, braces included: "{58AF0FFD-4BFB-4675-BAFC-5F3DB3CBBE2C}". Evaluated by the compiler, so a
  /// malformed literal does not build.
  consteval explicit ZYMGuid(std::string_view text) {
    if (text.size() != 38 || text.front() != '{' || text.back() != '}') {
      throw "a GUID is written {8-4-4-4-12}";
    }
    std::size_t digits = 0;
    for (const char c : text.substr(1, 36)) {
      if (c == '-') {
        continue;
      }
      words_.at(digits / 16) = words_.at(digits / 16) << 4U | Nibble(c);
      ++digits;
    }
    if (digits != 32) {
      throw "a GUID has 32 hexadecimal digits";
    }
  }

  friend constexpr bool operator==(const ZYMGuid&, const ZYMGuid&) = default;

 private:
  static consteval std::uint64_t Nibble(char c) {
    if (c >= '0' && c <= '9') {
      return static_cast<std::uint64_t>(c - '0');
    }
    if (c >= 'A' && c <= 'F') {
      return static_cast<std::uint64_t>(c - 'A' + 10);
    }
    throw "a GUID is written in upper-case hexadecimal digits";
  }

  std::array<std::uint64_t, 2> words_{};
};
