// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Utf8.h"

#include <algorithm>
#include <array>

namespace PolicyMapTestKit::Text {

namespace {

// What the first byte of a UTF-8 sequence determines: its length, its payload bits and the lowest
// valid code.
struct Announced {
  std::uint8_t mask;
  std::uint8_t mark;
  std::size_t size;
  std::uint32_t lowest;
};
constexpr std::array<Announced, 4> announcements{{{0x80, 0x00, 1, 0x00},
                                                  {0xe0, 0xc0, 2, 0x80},
                                                  {0xf0, 0xe0, 3, 0x800},
                                                  {0xf8, 0xf0, 4, 0x10000}}};

}  // namespace

Utf8Character firstCharacter(std::string_view text) {
  auto const byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  auto const* const announced =
      std::find_if(announcements.begin(), announcements.end(),
                   [&](Announced const& kind) { return (byte(0) & kind.mask) == kind.mark; });
  if (announced == announcements.end() || text.size() < announced->size) {
    return {};
  }
  std::uint32_t code = byte(0) & ~std::uint32_t{announced->mask};
  for (std::size_t i = 1; i != announced->size; ++i) {
    if ((byte(i) & 0xc0U) != 0x80U) {
      return {};
    }
    code = code << 6U | (byte(i) & 0x3fU);
  }
  bool const surrogate = code >= 0xd800 && code <= 0xdfff;
  bool const valid = code >= announced->lowest && code <= 0x10ffff && !surrogate;
  return valid ? Utf8Character{code, announced->size} : Utf8Character{};
}

void appendUtf8(std::string& text, std::uint32_t code) {
  auto const append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (code < 0x80) {
    append(code);
    return;
  }
  if (code < 0x800) {
    append(0xc0U | code >> 6U);
  } else if (code < 0x10000) {
    append(0xe0U | code >> 12U);
    append(0x80U | (code >> 6U & 0x3fU));
  } else {
    append(0xf0U | code >> 18U);
    append(0x80U | (code >> 12U & 0x3fU));
    append(0x80U | (code >> 6U & 0x3fU));
  }
  append(0x80U | (code & 0x3fU));
}

}  // namespace PolicyMapTestKit::Text
