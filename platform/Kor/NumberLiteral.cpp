// SPDX-License-Identifier: Apache-2.0
#include "Kor/NumberLiteral.h"

#include "Kor/TextAhead.h"

#include <algorithm>
#include <tuple>

namespace Kor {
namespace {

Digits digitsOf(std::string_view text, unsigned base) {
  auto const isOne = [&](std::size_t place) {
    return place < text.size() && static_cast<unsigned>(hexValue(text[place])) < base;
  };
  Digits digits;
  for (;; ++digits.length) {
    if (isOne(digits.length)) {
      digits.plain.push_back(text[digits.length]);
    } else if (digits.plain.empty() || text.substr(digits.length, 1) != "_" ||
               !isOne(digits.length + 1)) {
      return digits;
    }
  }
}

}  // namespace

IntegerLiteral integerLiteral(std::string_view text) {
  IntegerLiteral literal;
  std::size_t const sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  literal.negative = sign == 1 && text[0] == '-';
  std::string_view const head = text.substr(sign, 2);
  std::size_t prefix = 0;
  for (auto const& [lower, upper, base] :
       {std::tuple("0x", "0X", 16U), std::tuple("0o", "0O", 8U), std::tuple("0b", "0B", 2U)}) {
    if (head == lower || head == upper) {
      literal.base = base;
      prefix = text.substr(sign + 2, 1) == "_" ? 3 : 2;
    }
  }
  literal.digits = digitsOf(text.substr(std::min(sign + prefix, text.size())), literal.base);
  if (literal.digits.plain.empty() && prefix != 0) {
    // No digits after the prefix: the number is the prefix's zero.
    prefix = 0;
    literal.base = 10;
    literal.digits = digitsOf(text.substr(sign), 10);
  }
  literal.length = sign + prefix + literal.digits.length;
  return literal;
}

FloatLiteral floatLiteral(std::string_view text) {
  FloatLiteral literal;
  auto const take = [&](Digits const& digits) {
    literal.plain += digits.plain;
    literal.length += digits.length;
    return !digits.plain.empty();
  };
  auto const next = [&] { return text.substr(literal.length); };
  if (next().starts_with('-') || next().starts_with('+')) {
    literal.plain = next()[0] == '-' ? "-" : "";
    literal.length = 1;
  }
  bool some = take(digitsOf(next(), 10));
  if (next().starts_with('.')) {
    literal.plain.push_back('.');
    ++literal.length;
    some = take(digitsOf(next(), 10)) || some;
  }
  if (!some) {
    return {};
  }
  // An exponent without digits does not belong to the number.
  std::string_view const tail = next();
  if (tail.starts_with('e') || tail.starts_with('E')) {
    std::size_t const sign = tail.size() > 1 && (tail[1] == '-' || tail[1] == '+') ? 1 : 0;
    Digits const exponent = digitsOf(tail.substr(1 + sign), 10);
    if (!exponent.plain.empty()) {
      literal.plain.append(tail.substr(0, 1 + sign));
      literal.length += 1 + sign;
      take(exponent);
    }
  }
  return literal;
}

}  // namespace Kor
