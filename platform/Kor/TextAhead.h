// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the parsers of text forms ask about the text ahead. Not for other files.

#include "Kor/Exception.h"
#include "Kor/String.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Kor {

// The text from `it` to `end`.
inline std::string_view textAhead(String::IteratorConst const& it,
                                  String::IteratorConst const& end) {
  return it.text().view().substr(it.position(), end.position() - it.position());
}
inline bool atEnd(String::IteratorConst const& it, String::IteratorConst const& end) {
  return it.position() >= end.position();
}
// The next character, 0 at the end.
inline char charAhead(String::IteratorConst const& it, String::IteratorConst const& end) {
  return atEnd(it, end) ? '\0' : *it;
}
inline void skipBytes(String::IteratorConst& it, std::size_t bytes) {
  it.positionIs(it.position() + bytes);
}

// The value of a digit of any base up to 16, -1 for another character.
inline int hexValue(char c) {
  if (c >= '0' && c <= '9') {
    return c - '0';
  }
  char const lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Raises RangeException "WHAT at column COLUMN".
[[noreturn]] inline void failAtColumn(std::string const& what, std::size_t column) {
  throw RangeException(what + " at column " + std::to_string(column));
}

}  // namespace Kor
