#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/ZYMExport.h"

/// The hash of every table whose keys come from outside: SipHash-1-3 under a key that is drawn once for each process,
/// so that nobody can choose keys that share a hash. Another process, another order: nothing may depend on it.
///
/// Not declared noexcept, which makes the tables of the standard library keep the hash beside each key rather than
/// compute it again.
struct ZYM_EXPORT ZYMKeyedHash {
  std::size_t operator()(std::string_view text) const;

  struct Key {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
  };
  static std::uint64_t SipHash(const Key& key, std::string_view text) noexcept;
};
