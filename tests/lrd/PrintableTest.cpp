#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "lrd/Printable.h"

using lrd::InHexadecimal;
using lrd::IsUtf8;
using lrd::Printable;

namespace {

TEST(PrintableTest, what_is_text_stays_and_what_steers_or_is_no_utf8_is_spelt_out_byte_by_byte) {
  const std::pair<std::string, std::string> texts[] = {
      {"casing v2 \"a\" 'b' ~", "casing v2 \"a\" 'b' ~"},
      {"Geh\u00e4use \u6cf5 \U0001f600 \u00a0", "Geh\u00e4use \u6cf5 \U0001f600 \u00a0"},
      {"a\\b\\x41", R"(a\\b\\x41)"},
      {std::string("\0\t\n\r\x1b[31m\x1f\x7f", 11), R"(\x00\x09\x0a\x0d\x1b[31m\x1f\x7f)"},
      {"\u0080\u009b\u009f", R"(\xc2\x80\xc2\x9b\xc2\x9f)"},
      // A lone byte, a form that is too long, half of a pair, beyond the last character, and what is cut off.
      {"a\xe4z", R"(a\xe4z)"},
      {"\xc0\xaf\xe0\x80\xaf", R"(\xc0\xaf\xe0\x80\xaf)"},
      {"\xed\xa0\x80", R"(\xed\xa0\x80)"},
      {"\xf4\x90\x80\x80\xff", R"(\xf4\x90\x80\x80\xff)"},
      {"\xe6\xb3", R"(\xe6\xb3)"},
      {"\xe6z\xbf", R"(\xe6z\xbf)"},
  };
  for (const auto& [text, printed] : texts) {
    EXPECT_EQ(Printable(text), printed);
    EXPECT_EQ(IsUtf8(text), printed.find("\\xe") == std::string::npos && printed.find("\\xf") == std::string::npos &&
                                printed.find("\\xc0") == std::string::npos)
        << printed;
  }
  EXPECT_EQ(InHexadecimal(std::string("\0z\xff", 3)), "007aff");
}

TEST(PrintableTest, characters_of_every_length_are_told_from_bytes_that_are_none_where_the_lengths_meet) {
  for (const std::string character :
       {"\u00a0", "\u07ff", "\u0800", "\u0fff", "\u1000", "\ucfff", "\ud000", "\ud7ff", "\ue000", "\uffff",
        "\U00010000", "\U0003ffff", "\U00040000", "\U000fffff", "\U00100000", "\U0010ffff"}) {
    EXPECT_EQ(Printable(character), character);
    EXPECT_TRUE(IsUtf8(character)) << InHexadecimal(character);
    for (std::size_t length = 1; length < character.size(); ++length) {
      EXPECT_FALSE(IsUtf8(character.substr(0, length))) << InHexadecimal(character) << " cut off";
      EXPECT_FALSE(IsUtf8(character.substr(0, length) + "z")) << InHexadecimal(character) << " broken off";
      EXPECT_FALSE(IsUtf8(character.substr(length))) << InHexadecimal(character) << " without its beginning";
    }
  }
  // Too long a form, halves of pairs, and what lies beyond the last character.
  for (const std::string bytes : {"\xc1\xbf", "\xe0\x9f\xbf", "\xf0\x8f\xbf\xbf", "\xed\xa0\x80", "\xed\xbf\xbf",
                                  "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xf8\x88\x80\x80\x80", "\xfe", "\xff"}) {
    std::string spelt;
    for (const char byte : bytes) {
      spelt += "\\x" + InHexadecimal(std::string(1, byte));
    }
    EXPECT_EQ(Printable(bytes), spelt);
    EXPECT_FALSE(IsUtf8(bytes)) << spelt;
  }
}

}  // namespace
