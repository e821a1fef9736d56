// SPDX-License-Identifier: Apache-2.0
#pragma once

// PerOption: one value per match option. forOption: dispatch by match option. Both treat every
// option other than ipv4, ipv6 and mac as mpls.
//
//   PerOption<bool> due;
//   due[ClassMapMatchOption::mac] = true;
//   forOption(option, [&] { ip(); }, [&] { ip6(); }, [&] { mac(); }, [&] { mpls(); });

#include "PolicyMap/ClassMapMatchOption.h"

#include <array>
#include <cstddef>

namespace PolicyMap {

// Calls the function for the option and returns its result. All four must have the same type of
// result.
template <class Ipv4, class Ipv6, class Mac, class Mpls>
constexpr decltype(auto) forOption(ClassMapMatchOption option, Ipv4&& ipv4, Ipv6&& ipv6, Mac&& mac,
                                   Mpls&& mpls) {
  switch (option) {
  case ClassMapMatchOption::ipv4: return ipv4();
  case ClassMapMatchOption::ipv6: return ipv6();
  case ClassMapMatchOption::mac: return mac();
  default: return mpls();
  }
}

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
    return forOption(
        option, [] { return std::size_t{0}; }, [] { return std::size_t{1}; },
        [] { return std::size_t{2}; }, [] { return std::size_t{3}; });
  }

  std::array<T, allMatchOptions.size()> values_{};
};

}  // namespace PolicyMap
