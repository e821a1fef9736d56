// SPDX-License-Identifier: Apache-2.0
#pragma once

// Count: an exact number of packets, below 2^512.

#include "packets/Export.h"

#include <array>
#include <compare>
#include <cstdint>
#include <string>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API Count {
 public:
  Count() = default;
  explicit Count(std::uint64_t number) { words_[0] = number; }

  Count& operator+=(Count const& other);
  Count& operator*=(std::uint64_t factor);
  // Times 2^bits.
  Count& operator<<=(unsigned bits);

  bool operator==(Count const&) const = default;
  std::strong_ordering operator<=>(Count const& other) const;

  // Decimal digits; "2^k" in place of more than 12 of them, if it is that.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::string digits() const;

 private:
  // Divides by `divisor`; returns the remainder.
  std::uint64_t divide(std::uint64_t divisor);

  std::array<std::uint64_t, 8> words_{};  // the lowest first
};

}  // namespace PolicyMapPackets
