#include "platform/ZYMKeyedHash.h"

#include <bit>
#include <cstring>
#include <random>

namespace {

template <typename Word>
std::uint64_t WordAt(const char* bytes) noexcept {
  Word word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// The bytes behind the last full word and, above them, the length.
std::uint64_t LastWord(std::string_view rest, std::size_t length) noexcept {
  const char* const bytes = rest.data();
  std::uint64_t word = std::uint64_t{length} << 56U;
  unsigned int at = 0;
  if ((rest.size() & 4U) != 0) {
    word |= WordAt<std::uint32_t>(bytes);
    at = 4;
  }
  if ((rest.size() & 2U) != 0) {
    word |= WordAt<std::uint16_t>(bytes + at) << 8U * at;
    at += 2;
  }
  if ((rest.size() & 1U) != 0) {
    word |= WordAt<std::uint8_t>(bytes + at) << 8U * at;
  }
  return word;
}

struct State {
  std::uint64_t a, b, c, d;

  void Round() noexcept {
    a += b;
    b = std::rotl(b, 13) ^ a;
    a = std::rotl(a, 32);
    c += d;
    d = std::rotl(d, 16) ^ c;
    a += d;
    d = std::rotl(d, 21) ^ a;
    c += b;
    b = std::rotl(b, 17) ^ c;
    c = std::rotl(c, 32);
  }
  void Take(std::uint64_t word) noexcept {
    d ^= word;
    Round();
    a ^= word;
  }
};

ZYMKeyedHash::Key DrawKey() {
  std::random_device source;
  const auto draw = [&source] { return std::uint64_t{source()} << 32U | source(); };
  const std::uint64_t low = draw();
  return {low, draw()};
}

}  // namespace

std::size_t ZYMKeyedHash::operator()(std::string_view text) const {
  static const Key key = DrawKey();
  return static_cast<std::size_t>(SipHash(key, text));
}

std::uint64_t ZYMKeyedHash::SipHash(const Key& key, std::string_view text) noexcept {
  State state{key.low ^ 0x736f6d6570736575U, key.high ^ 0x646f72616e646f6dU, key.low ^ 0x6c7967656e657261U,
              key.high ^ 0x7465646279746573U};
  const std::size_t length = text.size();
  for (; text.size() >= 8; text.remove_prefix(8)) {
    state.Take(WordAt<std::uint64_t>(text.data()));
  }
  state.Take(LastWord(text, length));
  state.c ^= 0xFFU;
  state.Round();
  state.Round();
  state.Round();
  return state.a ^ state.b ^ state.c ^ state.d;
}
