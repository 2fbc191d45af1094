#pragma once

#include <cstddef>
#include <iterator>
#include <list>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>

#include "platform/ZYMKeyedHash.h"
#include "platform/ZYMUnicodeString.h"

/// The framework's dictionary from a string to a value: the template behind the published Dico names. Iteration follows
/// the order of insertion, so every result that is made by walking a dictionary is reproducible; inserting a key again
/// replaces its value and moves it to the end. The empty string is a key like any other.
template <typename Value>
class ZYMStringDico {
 public:
  struct Entry {
    ZYMUnicodeString first;
    Value second;
  };

 private:
  using Entries = std::list<Entry>;

  template <typename Base>
  class KeyIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = ZYMUnicodeString;
    using difference_type = std::ptrdiff_t;
    using pointer = const ZYMUnicodeString*;
    using reference = const ZYMUnicodeString&;

    KeyIterator() = default;
    explicit KeyIterator(Base at) : at_(at) {}
    reference operator*() const { return at_->first; }
    pointer operator->() const { return &at_->first; }
    KeyIterator& operator++() {
      ++at_;
      return *this;
    }
    KeyIterator operator++(int) { return KeyIterator(at_++); }
    friend bool operator==(const KeyIterator&, const KeyIterator&) = default;

   private:
    Base at_;
  };

 public:
  using iterator = typename Entries::iterator;
  using const_iterator = typename Entries::const_iterator;
  using key_iterator = KeyIterator<const_iterator>;
  using const_key_iterator = key_iterator;

  static constexpr int LeastBuckets = 53;

  /// sizeHint: how many entries to prepare for; less than 53 counts as 53. The dictionary grows beyond it by itself.
  explicit ZYMStringDico(int sizeHint = LeastBuckets)
      : places_(static_cast<std::size_t>(sizeHint < LeastBuckets ? LeastBuckets : sizeHint)) {}
  ZYMStringDico(const ZYMStringDico& other) : ZYMStringDico(other.Size()) { InsertDico(other); }
  /// The moved-from dictionary is empty.
  ZYMStringDico(ZYMStringDico&& other) noexcept = default;
  ZYMStringDico& operator=(const ZYMStringDico& other) {
    ZYMStringDico copy(other);
    *this = std::move(copy);
    return *this;
  }
  ZYMStringDico& operator=(ZYMStringDico&& other) noexcept = default;
  ~ZYMStringDico() = default;

  void Insert(const ZYMUnicodeString& key, const Value& value) {
    // Most keys are new, so one is put in its place before it is looked for.
    entries_.push_back({key, value});
    const auto added = std::prev(entries_.end());
    if (const auto [place, isNew] = places_.try_emplace(added->first.View(), added); !isNew) {
      place->second->second = value;
      entries_.splice(entries_.end(), entries_, place->second);
      entries_.erase(added);
    }
  }
  /// Inserts every entry of other in its order. Inserting a dictionary into itself does nothing.
  void InsertDico(const ZYMStringDico& other) {
    if (this != &other) {
      for (const Entry& entry : other) {
        Insert(entry.first, entry.second);
      }
    }
  }
  /// Answers whether the key was present.
  bool Erase(const ZYMUnicodeString& key) {
    const auto place = places_.find(key.View());
    if (place == places_.end()) {
      return false;
    }
    const iterator entry = place->second;
    places_.erase(place);
    entries_.erase(entry);
    return true;
  }
  bool HasKey(const ZYMUnicodeString& key) const { return Find(key) != nullptr; }
  /// A default value (a null handle, an empty string) for a key that is missing; inserts nothing.
  Value operator[](const ZYMUnicodeString& key) const {
    const Value* found = Find(key);
    return found == nullptr ? Value() : *found;
  }
  /// The value itself, owned by the dictionary, or null for a key that is missing.
  const Value* Find(const ZYMUnicodeString& key) const {
    const auto place = places_.find(key.View());
    return place == places_.end() ? nullptr : &place->second->second;
  }
  void RemoveAll() {
    places_.clear();
    entries_.clear();
  }
  int Size() const noexcept { return static_cast<int>(entries_.size()); }

  iterator begin() noexcept { return entries_.begin(); }
  iterator end() noexcept { return entries_.end(); }
  const_iterator begin() const noexcept { return entries_.begin(); }
  const_iterator end() const noexcept { return entries_.end(); }
  key_iterator begin_key() const noexcept { return key_iterator(entries_.begin()); }
  key_iterator end_key() const noexcept { return key_iterator(entries_.end()); }

 private:
  Entries entries_;
  std::unordered_map<std::string_view, iterator, ZYMKeyedHash> places_;
};
