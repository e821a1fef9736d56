// SPDX-License-Identifier: Apache-2.0
#pragma once

// Python number literals; Strep.h says which.

#include <cstddef>
#include <string>
#include <string_view>

namespace Kor {

// A run of digits, possibly with underscores between them.
struct Digits {
  std::string plain;       // without underscores
  std::size_t length = 0;  // with underscores
};

// An integer literal at the start of a text.
struct IntegerLiteral {
  bool negative = false;
  unsigned base = 10;
  Digits digits;           // empty: no integer
  std::size_t length = 0;  // with sign and prefix
};

IntegerLiteral integerLiteral(std::string_view text);

// A decimal number at the start of a text, with optional fraction and exponent.
struct FloatLiteral {
  std::string plain;  // without plus and underscores
  std::size_t length = 0;
};

FloatLiteral floatLiteral(std::string_view text);

}  // namespace Kor
