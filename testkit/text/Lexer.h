// SPDX-License-Identifier: Apache-2.0
#pragma once

// Splits one line into words, one at a time. No word is stored, so the memory does not depend on
// the length of the line.

#include "testkit/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

// A word of a line and the column (from 1) of its first byte. An empty text is the end of the line.
struct POLICYMAPTESTKIT_API Token {
  std::string_view text;
  std::uint32_t column = 1;

  bool atEnd() const noexcept { return text.empty(); }
  // True if this is the keyword `word`, given in lower case. Ignores case.
  bool is(std::string_view word) const noexcept;
};

// True if `text` equals `lowerCase`, ignoring the case of `text`.
POLICYMAPTESTKIT_API bool equalsKeyword(std::string_view text, std::string_view lowerCase) noexcept;

// The lengths first: most words are compared with many keywords.
inline bool Token::is(std::string_view word) const noexcept {
  return text.size() == word.size() && equalsKeyword(text, word);
}

// A syntax error: what was expected, and what was found. Never leaves the parsers, which convert it
// to an InputError or skip the line.
struct SyntaxFailure {
  std::string expected;
  Token found;
};

// The words of one line, from left to right. Blanks and tabs separate words.
class POLICYMAPTESTKIT_API Lexer {
 public:
  explicit Lexer(std::string_view line) noexcept;

  // The next word, without consuming it.
  Token peek() const noexcept { return current_; }
  // The word after the next one.
  Token peekSecond() const noexcept;
  // Consumes and returns the next word.
  Token next() noexcept;
  // Consumes the next word if it is the keyword `word`.
  bool accept(std::string_view word) noexcept;
  // Consumes the rest of the line and returns it without surrounding blanks.
  Token rest() noexcept;

  // Raises SyntaxFailure unless all words are consumed.
  void expectEnd(std::string_view expected = "end of line") const;
  // Raises SyntaxFailure at the next word.
  [[noreturn]] void fail(std::string expected) const;

 private:
  Token wordFrom(std::size_t offset) const noexcept;
  Token wordAfter(Token const& token) const noexcept;

  std::string_view line_;
  // Found once per word: a word may be as long as the file.
  Token current_;
};

constexpr bool isDigit(char c) noexcept {
  return c >= '0' && c <= '9';
}

// ASCII letters only.
POLICYMAPTESTKIT_API std::string lowerCase(std::string_view text);

// Parses a decimal number between `low` and `high`, without sign or base. Returns false for any
// other text.
POLICYMAPTESTKIT_API bool parseNumber(std::string_view text, std::uint64_t low, std::uint64_t high,
                                      std::uint64_t& value) noexcept;

// The same for a hexadecimal number that starts with "0x".
POLICYMAPTESTKIT_API bool parseHexNumber(std::string_view text, std::uint64_t high,
                                         std::uint64_t& value) noexcept;

// Consumes a decimal number between `low` and `high`. Raises SyntaxFailure "WHAT LOW-HIGH".
POLICYMAPTESTKIT_API std::uint64_t takeNumber(Lexer& lexer, std::string_view what,
                                              std::uint64_t low, std::uint64_t high);

// Consumes a name: 1 to 255 printable ASCII characters. Raises SyntaxFailure with `what`.
POLICYMAPTESTKIT_API Token takeName(Lexer& lexer, std::string_view what);

}  // namespace PolicyMapTestKit::Text
