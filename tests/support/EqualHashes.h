#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/// Keys of letters and digits that share one hash under MurmurHash64A with the seed that std::hash of strings has in
/// libstdc++. The hash goes on from block to block of eight bytes with (state ^ mixed block) * odd, which can be
/// undone: to any first block there is a second that leads from a given state to a given state. Each key is a row of
/// such pairs, for each place in the row one of two.
class EqualHashes {
 public:
  /// count must be a power of two.
  static std::vector<std::string> Keys(std::size_t count) {
    std::vector<std::string> keys(1);
    std::uint64_t state = Seed ^ PairsFor(count) * 2 * sizeof(std::uint64_t) * Factor;
    while (keys.size() < count) {
      const std::uint64_t block = PlainBlock(0);
      const std::uint64_t next = Step(Step(state, block), block);
      const std::string pair = Text(block) + Text(block);
      const std::string other = OtherPair(state, next);
      std::vector<std::string> longer;
      for (const std::string& key : keys) {
        longer.push_back(key + pair);
        longer.push_back(key + other);
      }
      keys = std::move(longer);
      state = next;
    }
    return keys;
  }

 private:
  static constexpr std::uint64_t Seed = 0xc70f6907U;
  static constexpr std::uint64_t Factor = 0xc6a4a7935bd1e995U;

  static std::uint64_t PairsFor(std::size_t count) { return count < 2 ? 0 : 1 + PairsFor(count / 2); }

  static std::uint64_t Mix(std::uint64_t block) {
    block *= Factor;
    return (block ^ block >> 47U) * Factor;
  }
  static std::uint64_t Step(std::uint64_t state, std::uint64_t block) { return (state ^ Mix(block)) * Factor; }
  static std::uint64_t DividedByFactor(std::uint64_t product) {
    std::uint64_t inverse = Factor;
    for (int doubling = 0; doubling < 6; ++doubling) {
      inverse *= 2 - Factor * inverse;
    }
    return product * inverse;
  }
  /// The block that leads from state to next.
  static std::uint64_t BlockBetween(std::uint64_t state, std::uint64_t next) {
    const std::uint64_t unmixed = DividedByFactor(DividedByFactor(next) ^ state);
    return DividedByFactor(unmixed ^ unmixed >> 47U);
  }
  static bool IsPlain(std::uint64_t block) {
    for (int byte = 0; byte < 8; ++byte, block >>= 8U) {
      const char c = static_cast<char>(block & 0xFFU);
      if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'))) {
        return false;
      }
    }
    return true;
  }
  static std::uint64_t PlainBlock(std::uint64_t number) {
    std::uint64_t block = 0;
    for (unsigned int byte = 0; byte < 8; ++byte) {
      block |= ('a' + (number >> 4U * byte & 0xFU)) << 8U * byte;
    }
    return block;
  }
  static std::string OtherPair(std::uint64_t state, std::uint64_t next) {
    for (std::uint64_t number = 1;; ++number) {
      const std::uint64_t first = PlainBlock(number);
      if (const std::uint64_t second = BlockBetween(Step(state, first), next); IsPlain(second)) {
        return Text(first) + Text(second);
      }
    }
  }
  static std::string Text(std::uint64_t block) {
    std::string text(sizeof block, '\0');
    std::memcpy(text.data(), &block, sizeof block);
    return text;
  }
};
