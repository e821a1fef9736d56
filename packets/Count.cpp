// SPDX-License-Identifier: Apache-2.0
#include "packets/Count.h"

#include "packets/Space.h"

#include <algorithm>
#include <bit>

namespace PolicyMapPackets {

namespace {

constexpr unsigned wordBits = 64;

}  // namespace

Count& Count::operator+=(Count const& other) {
  Bits carry = 0;
  for (std::size_t i = 0; i != words_.size(); ++i) {
    carry += Bits{words_[i]} + other.words_[i];
    words_[i] = static_cast<std::uint64_t>(carry);
    carry >>= wordBits;
  }
  return *this;
}

Count& Count::operator*=(std::uint64_t factor) {
  Bits carry = 0;
  for (std::uint64_t& word : words_) {
    carry += Bits{word} * factor;
    word = static_cast<std::uint64_t>(carry);
    carry >>= wordBits;
  }
  return *this;
}

Count& Count::operator<<=(unsigned bits) {
  for (; bits >= wordBits; bits -= wordBits) {
    std::rotate(words_.begin(), words_.end() - 1, words_.end());
    words_[0] = 0;
  }
  return *this *= std::uint64_t{1} << bits;
}

std::strong_ordering Count::operator<=>(Count const& other) const {
  return std::lexicographical_compare_three_way(words_.rbegin(), words_.rend(),
                                                other.words_.rbegin(), other.words_.rend());
}

std::uint64_t Count::divide(std::uint64_t divisor) {
  Bits rest = 0;
  for (auto word = words_.rbegin(); word != words_.rend(); ++word) {
    rest = rest << wordBits | *word;
    *word = static_cast<std::uint64_t>(rest / divisor);
    rest %= divisor;
  }
  return static_cast<std::uint64_t>(rest);
}

std::string Count::digits() const {
  std::string text;
  Count left = *this;
  do {
    text += static_cast<char>('0' + left.divide(10));
  } while (left != Count());
  std::reverse(text.begin(), text.end());
  return text;
}

std::string Count::text() const {
  constexpr std::size_t fewDigits = 12;
  std::string number = digits();
  unsigned ones = 0;
  unsigned exponent = 0;
  for (std::size_t i = 0; i != words_.size(); ++i) {
    ones += static_cast<unsigned>(std::popcount(words_[i]));
    if (words_[i] != 0) {
      exponent =
          static_cast<unsigned>(i) * wordBits + static_cast<unsigned>(std::countr_zero(words_[i]));
    }
  }
  return ones == 1 && number.size() > fewDigits ? "2^" + std::to_string(exponent) : number;
}

}  // namespace PolicyMapPackets
