#pragma once

#include <cstddef>
#include <cstdint>

namespace ZYMDom {

inline std::uint32_t ByteAt(const char* text, std::size_t at) noexcept { return static_cast<unsigned char>(text[at]); }

inline bool IsContinuation(const char* text, std::size_t at) noexcept { return (ByteAt(text, at) & 0xC0U) == 0x80U; }

/// How many bytes the character beyond ASCII takes that begins at text; 0 when it is not UTF-8 or XML forbids it. The
/// text ends with a NUL byte, which continues no character, so nothing behind it is read.
inline std::size_t MultiByteLength(const char* text) noexcept {
  const std::uint32_t lead = ByteAt(text, 0);
  if (lead < 0xC2U || lead > 0xF4U || !IsContinuation(text, 1)) {
    return 0;
  }
  if (lead < 0xE0U) {
    return 2;
  }
  if (!IsContinuation(text, 2)) {
    return 0;
  }
  // Of a character of four bytes these are the bits of the first three.
  const std::uint32_t code = (lead & 0x0FU) << 12U | (ByteAt(text, 1) & 0x3FU) << 6U | (ByteAt(text, 2) & 0x3FU);
  if (lead < 0xF0U) {
    const bool isSurrogate = code >= 0xD800U && code <= 0xDFFFU;
    return code >= 0x800U && code <= 0xFFFDU && !isSurrogate ? 3 : 0;
  }
  return code >= 0x400U && code <= 0x43FFU && IsContinuation(text, 3) ? 4 : 0;
}

constexpr bool StartsAsciiName(unsigned char c) noexcept {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

constexpr bool ContinuesAsciiName(unsigned char c) noexcept {
  return StartsAsciiName(c) || (c >= '0' && c <= '9') || c == '.' || c == '-';
}

}  // namespace ZYMDom
