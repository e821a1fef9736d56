// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/TextTokens.h"

#include <optional>
#include <string>
#include <string_view>

namespace Kor {

// Python string literals; Strep.h says which.

// Appends the bytes as a single-quoted literal.
void appendStringLiteral(std::string& to, std::string_view bytes);
// Parses a literal that starts at `it`, and returns its bytes. Raises RangeException.
std::string readStringLiteral(TextIterator& it, TextIterator const& end);
// The same for a literal that is its bytes between two quotes, as most are. Returns the bytes in
// the text itself, or nothing, without consuming anything, if the literal is of another kind.
std::optional<std::string_view> takePlainLiteral(TextIterator& it, TextIterator const& end);

}  // namespace Kor
