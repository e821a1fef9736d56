// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/ShownText.h"

#include "testkit/text/Utf8.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::size_t longestWord = 64;
constexpr std::size_t restOfWord = 40;
constexpr std::size_t longestMessage = 1000;

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
    Utf8Character const character = firstCharacter(text);
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
