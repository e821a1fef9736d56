// SPDX-License-Identifier: Apache-2.0
#pragma once

// BucketOrder: which bucket of a HashTable a hash belongs to.
//
// Hashes are ordered by their bits in reverse. Of 2^k buckets, the hash belongs to the one with the
// number of its low k bits in reverse. So the buckets are in the same order, and that order does
// not depend on k.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Kor {

class BucketOrder {
 public:
  static constexpr std::uint32_t most = 1U << 24;

  // A power of two of buckets, not more than `most`.
  constexpr explicit BucketOrder(std::uint32_t count = 1)
      : count_(count),
        isWide_(count > 1U << 16),
        unused_((isWide_ ? 24U : 16U) - static_cast<std::uint32_t>(std::countr_zero(count))) {}

  [[nodiscard]] std::uint32_t count() const { return count_; }

  // By bytes: to reverse all bits at once takes more instructions than the rest of a search, and
  // so leaves fewer searches in flight.
  [[nodiscard]] std::uint32_t bucketOf(std::uint32_t hash) const {
    std::uint32_t reversed = reversedByte[hash & 0xffU];
    reversed = reversed << 8 | reversedByte[hash >> 8 & 0xffU];
    if (isWide_) {
      reversed = reversed << 8 | reversedByte[hash >> 16 & 0xffU];
    }
    return reversed >> unused_;
  }

  // Of two hashes, the one that has a 0 in the lowest bit in which they differ comes first.
  [[nodiscard]] static bool comesBefore(std::uint32_t a, std::uint32_t b) {
    std::uint32_t const differing = a ^ b;
    return (b & differing & (0U - differing)) != 0;
  }

 private:
  static constexpr std::array<std::uint8_t, 256> reversedByte = [] {
    std::array<std::uint8_t, 256> reversed{};
    for (std::size_t bit = 1, image = 128; bit < reversed.size(); bit *= 2, image /= 2) {
      for (std::size_t i = 0; i < bit; ++i) {
        reversed[bit + i] = static_cast<std::uint8_t>(reversed[i] + image);
      }
    }
    return reversed;
  }();

  std::uint32_t count_;
  bool isWide_;
  std::uint32_t unused_;  // low bits of the reversed bytes
};

}  // namespace Kor
