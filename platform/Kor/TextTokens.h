// SPDX-License-Identifier: Apache-2.0
#pragma once

// Tokens of text forms: what all parsers of Strep.h are made of.

#include "Kor/Export.h"
#include "Kor/String.h"

#include <string_view>

namespace Kor {

using TextIterator = String::IteratorConst;

// Consumes `pattern`, in which a blank means optional white space. Raises "expected TOKEN at column
// N": TOKEN is the pattern without blanks, N the column after the skipped white space.
KOR_API void needString(TextIterator& it, TextIterator const& end, std::string_view pattern);
inline bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
inline void skipSpace(TextIterator& it, TextIterator const& end) {
  while (it.position() < end.position() && isSpace(*it)) {
    ++it;
  }
}
// Consumes `token` if it is next and returns whether it did.
KOR_API bool takeString(TextIterator& it, TextIterator const& end, std::string_view token);

}  // namespace Kor
