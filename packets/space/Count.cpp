// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Count.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>

namespace PolicyMapPackets {

namespace {

constexpr unsigned wordBits = 64;
constexpr unsigned firstShownAsPower = 40;

// "1234567" as "1,234,567".
std::string grouped(std::string digits) {
  constexpr std::size_t group = 3;
  for (std::size_t at = digits.size(); at > group;) {
    at -= group;
    digits.insert(at, ",");
  }
  return digits;
}

}  // namespace

Count& Count::operator+=(Count const& other) {
  std::uint64_t carry = 0;
  for (std::size_t i = 0; i != size; ++i) {
    std::uint64_t const sum = words_[i] + carry;
    carry = sum < carry ? 1 : 0;
    words_[i] = sum + other.words_[i];
    carry += words_[i] < sum ? 1 : 0;
  }
  return *this;
}

Count& Count::operator*=(std::uint64_t factor) {
  constexpr unsigned half = wordBits / 2;
  constexpr std::uint64_t lowHalf = 0xffffffffU;
  std::uint64_t const factorLow = factor & lowHalf;
  std::uint64_t const factorHigh = factor >> half;
  std::uint64_t carry = 0;
  for (std::uint64_t& word : words_) {
    std::uint64_t const low = (word & lowHalf) * factorLow;
    std::uint64_t const cross = (word >> half) * factorLow + (low >> half);
    std::uint64_t const middle = (word & lowHalf) * factorHigh + (cross & lowHalf);
    std::uint64_t const high = (word >> half) * factorHigh + (cross >> half) + (middle >> half);
    std::uint64_t const product = middle << half | (low & lowHalf);
    word = product + carry;
    carry = high + (word < product ? 1 : 0);
  }
  return *this;
}

Count Count::shifted(unsigned bits) const {
  Count result;
  std::size_t const words = bits / wordBits;
  unsigned const rest = bits % wordBits;
  for (std::size_t i = words; i < size; ++i) {
    result.words_[i] = words_[i - words] << rest;
    if (rest != 0 && i > words) {
      result.words_[i] |= words_[i - words - 1] >> (wordBits - rest);
    }
  }
  return result;
}

std::strong_ordering Count::operator<=>(Count const& other) const {
  for (std::size_t i = size; i-- != 0;) {
    if (words_[i] != other.words_[i]) {
      return words_[i] <=> other.words_[i];
    }
  }
  return std::strong_ordering::equal;
}

unsigned Count::highestBit() const {
  std::size_t word = size - 1;
  while (words_[word] == 0) {
    --word;
  }
  return static_cast<unsigned>(word) * wordBits + wordBits - 1 -
         static_cast<unsigned>(std::countl_zero(words_[word]));
}

std::uint32_t Count::divide(std::uint32_t divisor) {
  constexpr unsigned half = wordBits / 2;
  std::uint64_t remainder = 0;
  for (std::size_t i = size; i-- != 0;) {
    std::uint64_t const upper = remainder << half | words_[i] >> half;
    std::uint64_t const lower = upper % divisor << half | (words_[i] & 0xffffffffU);
    words_[i] = upper / divisor << half | lower / divisor;
    remainder = lower % divisor;
  }
  return static_cast<std::uint32_t>(remainder);
}

std::string Count::decimal() const {
  constexpr std::uint32_t nineDigits = 1000000000;
  Count rest = *this;
  std::string digits;
  do {
    std::string const some = std::to_string(rest.divide(nineDigits));
    digits.insert(0, some);
    if (!rest.isZero()) {
      digits.insert(0, std::string(9 - some.size(), '0'));
    }
  } while (!rest.isZero());
  return digits;
}

std::string Count::text() const {
  if (isZero() || highestBit() < firstShownAsPower) {
    return grouped(decimal());
  }
  if (*this == powerOfTwo(highestBit())) {
    return "2^" + std::to_string(highestBit());
  }
  std::ostringstream text;
  text << "2^" << std::fixed << std::setprecision(2) << log2();
  return text.str();
}

double Count::log2() const {
  if (isZero()) {
    return -std::numeric_limits<double>::infinity();
  }
  double value = 0;
  for (std::size_t i = size; i-- != 0;) {
    value = std::ldexp(value, static_cast<int>(wordBits)) + static_cast<double>(words_[i]);
  }
  return std::log2(value);
}

}  // namespace PolicyMapPackets
