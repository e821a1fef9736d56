// SPDX-License-Identifier: Apache-2.0
#pragma once

// PerOption: one value per match option. Every option other than ipv4, ipv6 and mac uses the fourth
// value, that of mpls.

#include "PolicyMap/ClassMapMatchOption.h"

#include <array>
#include <cstddef>

namespace PolicyMap {

template <class T>
class PerOption {
 public:
  PerOption() = default;
  // The same value for every option.
  explicit PerOption(T const& value) { values_.fill(value); }

  [[nodiscard]] T& operator[](ClassMapMatchOption option) { return values_[placeOf(option)]; }
  [[nodiscard]] T const& operator[](ClassMapMatchOption option) const {
    return values_[placeOf(option)];
  }

  // In the order of allMatchOptions.
  [[nodiscard]] auto begin() { return values_.begin(); }
  [[nodiscard]] auto end() { return values_.end(); }
  [[nodiscard]] auto begin() const { return values_.begin(); }
  [[nodiscard]] auto end() const { return values_.end(); }

 private:
  static constexpr std::size_t placeOf(ClassMapMatchOption option) {
    switch (option) {
    case ClassMapMatchOption::ipv4:
    case ClassMapMatchOption::ipv6:
    case ClassMapMatchOption::mac: return static_cast<std::size_t>(option);
    default: return allMatchOptions.size() - 1;
    }
  }

  std::array<T, allMatchOptions.size()> values_{};
};

}  // namespace PolicyMap
