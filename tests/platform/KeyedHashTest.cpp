#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "platform/ZYMKeyedHash.h"
#include "platform/ZYMUnicodeString.h"
#include "tests/support/EqualHashes.h"

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

TEST(KeyedHashTest, keys_that_were_chosen_for_one_hash_do_not_share_one) {
  std::set<std::size_t> unkeyed;
  std::set<std::size_t> ofText;
  std::set<std::size_t> ofString;
  const std::vector<std::string> keys = EqualHashes::Keys(1024);
  for (const std::string& key : keys) {
    unkeyed.insert(std::hash<std::string>()(key));
    ofText.insert(ZYMKeyedHash()(key));
    ofString.insert(std::hash<ZYMUnicodeString>()(key));
  }
#ifdef __GLIBCXX__
  EXPECT_EQ(unkeyed.size(), 1U);
#endif
  EXPECT_EQ(ofText.size(), keys.size());
  EXPECT_EQ(ofText, ofString);
}

}  // namespace
