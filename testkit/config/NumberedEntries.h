// SPDX-License-Identifier: Apache-2.0
#pragma once

// Entries ordered by number, found by number and by value.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace PolicyMapTestKit::Text {

// `Value` is compared by ==. `Hash` is a function object that returns a 32-bit hash of it.
template <class Value, class Hash>
class NumberedEntries {
 public:
  using ByNumber = std::map<std::uint32_t, Value>;

  // The distance between the last entry and one appended without a number.
  static constexpr std::uint32_t step = 10;

  ByNumber const& byNumber() const noexcept { return byNumber_; }
  std::size_t size() const noexcept { return byNumber_.size(); }
  Value const* find(std::uint32_t number) const {
    auto const found = byNumber_.find(number);
    return found == byNumber_.end() ? nullptr : &found->second;
  }

  // The lowest number of an entry with an equal value.
  std::optional<std::uint32_t> numberOf(Value const& value) {
    index();
    std::uint32_t const hash = Hash()(value);
    for (auto at = byHash_.lower_bound({hash, 0}); at != byHash_.end() && at->first == hash; ++at) {
      if (byNumber_.at(at->second) == value) {
        return at->second;
      }
    }
    return std::nullopt;
  }

  // The number for an entry that is appended without one; none if the numbers are exhausted.
  std::optional<std::uint32_t> nextNumber() const {
    std::uint32_t const last = byNumber_.empty() ? 0 : byNumber_.rbegin()->first;
    if (last > std::numeric_limits<std::uint32_t>::max() - step) {
      return std::nullopt;
    }
    return last + step;
  }

  // Stores a value; replaces the entry of that number.
  void put(std::uint32_t number, Value value) {
    erase(number);
    if (indexed_) {
      byHash_.emplace(Hash()(value), number);
    }
    byNumber_.emplace_hint(byNumber_.end(), number, std::move(value));
  }

  // Returns false if no entry has that number.
  bool erase(std::uint32_t number) {
    auto const found = byNumber_.find(number);
    if (found == byNumber_.end()) {
      return false;
    }
    if (indexed_) {
      byHash_.erase({Hash()(found->second), number});
    }
    byNumber_.erase(found);
    return true;
  }

 private:
  // Built on the first search by value.
  void index() {
    if (!indexed_) {
      for (auto const& [number, value] : byNumber_) {
        byHash_.emplace(Hash()(value), number);
      }
      indexed_ = true;
    }
  }

  ByNumber byNumber_;
  std::set<std::pair<std::uint32_t, std::uint32_t>> byHash_;
  bool indexed_ = false;
};

}  // namespace PolicyMapTestKit::Text
