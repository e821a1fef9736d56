// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/ShownText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::size_t longestWord = 64;
constexpr std::size_t restOfWord = 40;
constexpr std::size_t longestMessage = 1000;

// The first character of a text; its size is 0 for invalid UTF-8.
struct Character {
  std::uint32_t code = 0;
  std::size_t size = 0;
};

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

Character firstOf(std::string_view text) {
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
  return valid ? Character{code, announced->size} : Character{};
}

struct CodeRange {
  std::uint32_t first;
  std::uint32_t last;
};
constexpr std::array<CodeRange, 6> unshown{{{0x00, 0x1f},      // control characters
                                            {0x7f, 0x9f},      // more of them
                                            {0x061c, 0x061c},  // a direction mark
                                            {0x200e, 0x200f},  // more of them
                                            {0x2028, 0x202e},  // separators, embeddings, overrides
                                            {0x2066, 0x2069}}};  // isolates

bool isShown(std::uint32_t code) {
  return std::none_of(unshown.begin(), unshown.end(), [code](CodeRange const& range) {
    return range.first <= code && code <= range.last;
  });
}

}  // namespace

std::string shownText(std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    Character const character = firstOf(text);
    std::string_view const bytes = text.substr(0, std::max<std::size_t>(character.size, 1));
    text.remove_prefix(bytes.size());
    if (character.size != 0 && isShown(character.code)) {
      shown += bytes;
      continue;
    }
    for (char const c : bytes) {
      auto const byte = static_cast<unsigned char>(c);
      shown += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xfU]};
    }
  }
  return shown;
}

std::string shortened(std::string_view message) {
  std::string text;
  while (!message.empty() && text.size() <= longestMessage) {
    std::string_view const word = message.substr(0, message.find(' '));
    if (word.size() > longestWord) {
      text.append(word.substr(0, restOfWord)).append("...");
    } else {
      text += word;
    }
    message.remove_prefix(word.size());
    std::size_t const blanks = std::min(message.find_first_not_of(' '), message.size());
    text += message.substr(0, std::min(blanks, longestMessage));
    message.remove_prefix(blanks);
  }
  if (message.empty() && text.size() <= longestMessage) {
    return text;
  }
  return text.substr(0, longestMessage) + "...";
}

}  // namespace PolicyMapTestKit::Text
