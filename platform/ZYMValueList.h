#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <utility>
#include <vector>

/// The framework's ordered list of values: the template behind the published list names. Positions count from 1. An
/// index out of range reads as a default value (a null handle, an empty string); removing a position out of range does
/// nothing. Locate looks through the list: who asks a long one often keeps a set of its own.
template <typename Value>
class ZYMValueList {
 public:
  using iterator = typename std::vector<Value>::iterator;
  using const_iterator = typename std::vector<Value>::const_iterator;

  ZYMValueList() = default;
  ZYMValueList(std::initializer_list<Value> values) : values_(values) {}
  ZYMValueList(const ZYMValueList& other) = default;
  ZYMValueList(ZYMValueList&&) noexcept = default;
  /// other may belong to what only this list holds: its values are copied before any of this one's goes.
  ZYMValueList& operator=(const ZYMValueList& other) {
    std::vector<Value> values = other.values_;
    values_.swap(values);
    return *this;
  }
  ZYMValueList& operator=(ZYMValueList&&) noexcept = default;
  ~ZYMValueList() = default;

  void Append(const Value& value) { values_.push_back(value); }
  void AppendList(const ZYMValueList& other) {
    const std::vector<Value> added = other.values_;
    values_.insert(values_.end(), added.begin(), added.end());
  }
  /// position 1 puts the value first, Size() + 1 last; out of that range nothing is inserted.
  void InsertAt(int position, const Value& value) {
    if (position >= 1 && position <= Size() + 1) {
      values_.insert(values_.begin() + (position - 1), value);
    }
  }
  void Prepend(const Value& value) { InsertAt(1, value); }
  void Push(const Value& value) { Append(value); }
  /// Removes and returns the last value; a default value when the list is empty.
  Value Pop() {
    if (values_.empty()) {
      return Value();
    }
    Value last = std::move(values_.back());
    values_.pop_back();
    return last;
  }
  Value Peek() const { return values_.empty() ? Value() : values_.back(); }

  /// The first position at or after from that holds an equal value; 0 when there is none.
  int Locate(const Value& value, int from = 1) const {
    for (std::size_t at = static_cast<std::size_t>(std::max(from, 1)) - 1; at < values_.size(); ++at) {
      if (values_[at] == value) {
        return static_cast<int>(at) + 1;
      }
    }
    return 0;
  }

  void RemovePosition(int position) {
    if (Holds(position)) {
      values_.erase(values_.begin() + (position - 1));
    }
  }
  void RemoveAll() { values_.clear(); }
  int Size() const noexcept { return static_cast<int>(values_.size()); }
  Value operator[](int position) const {
    return Holds(position) ? values_[static_cast<std::size_t>(position) - 1] : Value();
  }

  /// Stable. compare answers negative, 0 or positive.
  template <typename Comparison>
  void QuickSort(Comparison compare) {
    std::stable_sort(values_.begin(), values_.end(),
                     [compare](const Value& a, const Value& b) { return compare(a, b) < 0; });
  }

  iterator begin() noexcept { return values_.begin(); }
  iterator end() noexcept { return values_.end(); }
  const_iterator begin() const noexcept { return values_.begin(); }
  const_iterator end() const noexcept { return values_.end(); }

  friend bool operator==(const ZYMValueList& a, const ZYMValueList& b) { return a.values_ == b.values_; }

 private:
  bool Holds(int position) const noexcept { return position >= 1 && position <= Size(); }

  std::vector<Value> values_;
};
