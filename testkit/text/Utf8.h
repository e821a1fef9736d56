// SPDX-License-Identifier: Apache-2.0
#pragma once

// Decodes UTF-8.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

// A character and the number of its bytes; the size is 0 for invalid UTF-8.
struct Utf8Character {
  std::uint32_t code = 0;
  std::size_t size = 0;
};

// The first character of a text that is not empty.
Utf8Character firstCharacter(std::string_view text);

// Appends a character; `code` must be valid.
void appendUtf8(std::string& text, std::uint32_t code);

}  // namespace PolicyMapTestKit::Text
