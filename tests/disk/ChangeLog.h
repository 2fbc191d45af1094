#pragma once

#include <fstream>
#include <string>
#include <string_view>
#include <type_traits>

/// A file with a line for each change of the disk, in order; without a file it keeps nothing. A line is a word and its
/// fields between blanks, with every byte of a field that is a blank, a percent sign or not printable ASCII as %XX.
class ChangeLog {
 public:
  /// False when the file cannot be written.
  bool Open(const std::string& path) {
    file_.open(path, std::ios::binary);
    return file_.is_open();
  }

  /// A disk that is killed has told all that it did.
  template <typename... Fields>
  void Add(const char* word, const Fields&... fields) {
    if (file_.is_open()) {
      file_ << word;
      (Put(fields), ...);
      file_ << '\n' << std::flush;
    }
  }

 private:
  template <typename Number>
  requires std::is_arithmetic_v<Number>
  void Put(Number number) { file_ << ' ' << number; }

  void Put(std::string_view field) {
    constexpr std::string_view Digits = "0123456789ABCDEF";
    file_ << ' ';
    for (const char c : field) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte > ' ' && byte < 0x7F && c != '%') {
        file_ << c;
      } else {
        file_ << '%' << Digits[byte >> 4U] << Digits[byte & 0xFU];
      }
    }
  }

  std::ofstream file_;
};
