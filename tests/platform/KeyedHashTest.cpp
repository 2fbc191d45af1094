#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ZYMKeyedHash.h"
#include "platform/ZYMUnicodeString.h"

namespace {

TEST(KeyedHashTest, it_is_siphash_1_3) {
  std::string bytes;
  for (int byte = 0; byte < 20; ++byte) {
    bytes += static_cast<char>(byte);
  }
  const std::vector<std::pair<std::size_t, std::uint64_t>> known = {
      {1, 0x68a914128e01e473U},  {7, 0x2f098ab0c751325aU},  {8, 0xead411e67ebe2eeaU},  {9, 0x75927f9d95124362U},
      {15, 0xf30eb725bb91c9eaU}, {16, 0x8972188433a5c5b7U}, {20, 0x639e355ae68c0100U},
  };
  for (const auto& [length, hash] : known) {
    EXPECT_EQ(ZYMKeyedHash::SipHash({}, std::string_view(bytes).substr(0, length)), hash) << length;
  }
  EXPECT_NE(ZYMKeyedHash::SipHash({1, 0}, ""), ZYMKeyedHash::SipHash({0, 1}, ""));
}

TEST(KeyedHashTest, strings_are_hashed_under_a_key_that_nobody_knows) {
  EXPECT_NE(ZYMKeyedHash()("key"), ZYMKeyedHash::SipHash({}, "key"));
  EXPECT_EQ(ZYMKeyedHash()("key"), std::hash<ZYMUnicodeString>()("key"));
}

}  // namespace
