// SPDX-License-Identifier: Apache-2.0
#include "Kor/TextTokens.h"

#include "Kor/TextAhead.h"

#include <string>

namespace Kor {

bool takeString(TextIterator& it, TextIterator const& end, std::string_view token) {
  if (!textAhead(it, end).starts_with(token)) {
    return false;
  }
  skipBytes(it, token.size());
  return true;
}

void needString(TextIterator& it, TextIterator const& end, std::string_view pattern) {
  while (!pattern.empty()) {
    if (pattern.front() == ' ') {
      skipSpace(it, end);
      pattern.remove_prefix(1);
      continue;
    }
    std::string_view const token = pattern.substr(0, pattern.find(' '));
    if (!takeString(it, end, token)) {
      failAtColumn("expected " + std::string(token), it.position());
    }
    pattern.remove_prefix(token.size());
  }
}

}  // namespace Kor
