// SPDX-License-Identifier: Apache-2.0
#pragma once

// 32-bit hashes, identical with every compiler and in every run. They never throw or allocate.

#include <cstdint>
#include <string_view>
#include <type_traits>

namespace Kor {

// Reverses the order of the 32 bits. Always inlined: a call costs more than the work.
[[gnu::always_inline]] constexpr std::uint32_t bitReverse(std::uint32_t bits) {
  bits = ((bits >> 1) & 0x55555555U) | ((bits & 0x55555555U) << 1);
  bits = ((bits >> 2) & 0x33333333U) | ((bits & 0x33333333U) << 2);
  bits = ((bits >> 4) & 0x0f0f0f0fU) | ((bits & 0x0f0f0f0fU) << 4);
  return __builtin_bswap32(bits);
}

// The hash of a text, byte by byte.
constexpr std::uint32_t hashBytes(std::string_view text) {
  std::uint32_t hash = 2166136261U;
  for (char const c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  }
  return hash;
}

// Spreads a number over all 32 bits; a bijection.
constexpr std::uint32_t hashNumber(std::uint32_t number) {
  number = (number ^ (number >> 16)) * 0x7feb352dU;
  number = (number ^ (number >> 15)) * 0x846ca68bU;
  return number ^ (number >> 16);
}

// Mixes one more word into a hash.
constexpr std::uint32_t hashCombine(std::uint32_t hash, std::uint32_t word) {
  return hashNumber(hash ^ (word + 0x9e3779b9U + (hash << 6) + (hash >> 2)));
}

// The hash of a collection key. Numbers and enumerations are hashed here; other keys provide
// hash().
template <class Key>
[[nodiscard]] constexpr std::uint32_t hashOf(Key const& key) {
  if constexpr (std::is_enum_v<Key> || std::is_integral_v<Key>) {
    auto const wide = static_cast<std::uint64_t>(key);
    auto const low = static_cast<std::uint32_t>(wide);
    auto const high = static_cast<std::uint32_t>(wide >> 32);
    if constexpr (sizeof(Key) <= sizeof(std::uint32_t)) {
      return hashNumber(low);
    } else {
      return hashCombine(hashNumber(low), high);
    }
  } else {
    return key.hash();
  }
}

}  // namespace Kor
