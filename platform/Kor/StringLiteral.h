// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/TextTokens.h"

#include <string>
#include <string_view>

namespace Kor {

// Python string literals; Strep.h says which.

// Returns the bytes as a single-quoted literal.
std::string stringLiteral(std::string_view bytes);
// Parses a literal that starts at `it`, and returns its bytes. Raises RangeException.
std::string readStringLiteral(TextIterator& it, TextIterator const& end);

}  // namespace Kor
