#pragma once

#include <iterator>

#include "platform/ZYMStringDico.h"

/// The framework's hash dictionary in its older form: the template behind the published ZYMHashDic names.
template <typename Value>
class ZYMHashDic {
 public:
  using Iterator = typename ZYMStringDico<Value>::const_iterator;

  explicit ZYMHashDic(int sizeHint = ZYMStringDico<Value>::LeastBuckets) : entries_(sizeHint) {}

  /// Replaces the value of a key that is present.
  void Insert(const ZYMUnicodeString& name, const Value& value) { entries_.Insert(name, value); }
  /// The value itself, owned by the dictionary, or null for a name that is missing.
  const Value* Locate(const ZYMUnicodeString& name) const { return entries_.Find(name); }
  /// Answers whether the name was present.
  bool Remove(const ZYMUnicodeString& name) { return entries_.Erase(name); }
  void RemoveAll() { entries_.RemoveAll(); }
  /// The name at a position of the iteration, from 1; empty out of range. Takes time in proportion to the position.
  ZYMUnicodeString ItemName(int position) const {
    return position >= 1 && position <= Size() ? std::next(entries_.begin(), position - 1)->first : ZYMUnicodeString();
  }
  /// At the first entry; the end is reached after Size() steps.
  Iterator CreateIterator() const { return entries_.begin(); }
  int Size() const noexcept { return entries_.Size(); }

  /// The same names with equal values, in whatever order.
  friend bool operator==(const ZYMHashDic& a, const ZYMHashDic& b) {
    if (a.Size() != b.Size()) {
      return false;
    }
    for (const auto& entry : a.entries_) {
      const Value* other = b.Locate(entry.first);
      if (other == nullptr || !(*other == entry.second)) {
        return false;
      }
    }
    return true;
  }

 private:
  ZYMStringDico<Value> entries_;
};
