// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/FilterSetGenerator.h"

#include <array>
#include <cstdio>

namespace PolicyMapTestKit::Text {

namespace {

// splitmix64: unlike the standard distributions, it is the same in every implementation.
class Numbers {
 public:
  explicit Numbers(std::uint64_t seed) noexcept : state_(seed) {}

  // Returns a number below `limit`.
  unsigned below(unsigned limit) noexcept {
    state_ += 0x9e3779b97f4a7c15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
    mixed ^= mixed >> 31U;
    return static_cast<unsigned>(mixed % limit);
  }

 private:
  std::uint64_t state_;
};

// Wide enough for the longest line: two IPv6 prefixes of two groups each.
using LineBuffer = std::array<char, 160>;

template <class... Values>
void append(std::string& text, char const* format, Values... values) {
  LineBuffer buffer{};
  int const size = std::snprintf(buffer.data(), buffer.size(), format, values...);
  text.append(buffer.data(), static_cast<std::size_t>(size));
}

// Each number is drawn in its own statement, because the evaluation order of arguments differs
// between compilers.
void appendPrefix(std::string& text, Numbers& numbers, Family family) {
  unsigned const high = numbers.below(65536);
  unsigned const low = numbers.below(65536);
  unsigned const shorter = numbers.below(17);
  if (family == Family::ip6) {
    append(text, "2001:db8:%x:%x::/%u", high, low, 64 - shorter);
  } else {
    append(text, "%u.%u.%u.%u/%u", 1 + high % 223, high / 256, low % 256, low / 256, 32 - shorter);
  }
}

void appendPorts(std::string& text, Numbers& numbers, unsigned kind) {
  unsigned const low = kind == 0 ? 0 : kind == 1 ? 1024 : numbers.below(65536);
  unsigned const high = kind < 2 ? 65535 : low;
  append(text, "\t%u : %u", low, high);
}

void appendRule(std::string& text, Numbers& numbers, Family family) {
  text += '@';
  appendPrefix(text, numbers, family);
  text += '\t';
  appendPrefix(text, numbers, family);
  unsigned const draw = numbers.below(8);
  // Kind of source and destination ports: 0 any, 1 a range, 2 one port.
  unsigned const source = draw == 1 ? 2 : 0;
  unsigned const destination = draw == 0 ? 0 : draw == 2 ? 1 : 2;
  appendPorts(text, numbers, source);
  appendPorts(text, numbers, destination);
  text += draw == 0       ? "\t0x2f/0xFF\t0x0000/0x0000\t\n"
          : draw % 2 == 0 ? "\t0x06/0xFF\t0x0000/0x0200\t\n"
                          : "\t0x11/0xFF\t0x0000/0x0000\t\n";
}

}  // namespace

std::string generateFilterSet(std::size_t rules, std::uint64_t seed, Family family) {
  Numbers numbers(seed);
  std::string text;
  text.reserve(rules * 80);
  for (std::size_t rule = 0; rule != rules; ++rule) {
    appendRule(text, numbers, family);
  }
  return text;
}

}  // namespace PolicyMapTestKit::Text
