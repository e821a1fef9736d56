// SPDX-License-Identifier: Apache-2.0
#pragma once

// Count: an exact number of packets, of 512 bits. The largest space, of TCP over IPv6, has fewer
// than 2^360 packets.

#include "packets/Export.h"

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API Count {
 public:
  Count() = default;
  explicit Count(std::uint64_t number) : words_{number} {}
  [[nodiscard]] static Count powerOfTwo(unsigned exponent) { return Count(1).shifted(exponent); }

  // Modulo 2^512, which no sum of packets reaches.
  Count& operator+=(Count const& other);
  Count& operator*=(std::uint64_t factor);
  [[nodiscard]] Count shifted(unsigned bits) const;  // to the left

  [[nodiscard]] bool isZero() const { return *this == Count(); }
  bool operator==(Count const&) const = default;
  std::strong_ordering operator<=>(Count const& other) const;

  // "65536".
  [[nodiscard]] std::string decimal() const;
  // For people: "65,536", or from 2^40 on the nearest power, "2^81.16"; "2^96" only if it is one.
  [[nodiscard]] std::string text() const;
  // The logarithm of the number to base 2; of zero, minus infinity.
  [[nodiscard]] double log2() const;

 private:
  static constexpr std::size_t size = 8;

  [[nodiscard]] unsigned highestBit() const;  // of a number other than zero
  // Divides by a small number and returns the remainder.
  std::uint32_t divide(std::uint32_t divisor);

  std::array<std::uint64_t, size> words_{};  // the least significant first
};

}  // namespace PolicyMapPackets
