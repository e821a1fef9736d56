// SPDX-License-Identifier: Apache-2.0
// Cuts one line into words, one at a time: nothing is stored per word, so that the length of a line
// costs time but no memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace lab {

/// A word of a line and the column (from 1) of its first byte. An empty text is the end of the
/// line.
struct Token {
  std::string_view text;
  std::uint32_t column = 1;

  bool atEnd() const noexcept { return text.empty(); }
  /// Is this the keyword `word`, written in lower case, in any mixture of cases?
  bool is(std::string_view word) const noexcept;
};

/// A line that does not follow the syntax: what would have been accepted, and what stood there.
/// Never leaves the parsers, which turn it into an InputError or skip the line.
struct SyntaxFailure {
  std::string expected;
  Token found;
};

/// The words of one line, from left to right. Blanks and tabs separate words.
class Lexer {
 public:
  explicit Lexer(std::string_view line) noexcept;

  /// The next word, which stays the next word.
  Token peek() const noexcept { return current_; }
  /// The word after the next one.
  Token peekSecond() const noexcept;
  /// Takes the next word.
  Token next() noexcept;
  /// Takes the next word if it is the keyword `word`.
  bool accept(std::string_view word) noexcept;
  /// Everything up to the end of the line without blanks around it; taken.
  Token rest() noexcept;

  /// Raises SyntaxFailure unless all words are taken.
  void expectEnd(std::string_view expected = "end of line") const;
  /// Raises SyntaxFailure at the next word.
  [[noreturn]] void fail(std::string expected) const;

 private:
  Token wordFrom(std::size_t offset) const noexcept;
  Token wordAfter(Token const& token) const noexcept;

  std::string_view line_;
  // Found once per word: a word may be as long as the file.
  Token current_;
};

/// Does `text`, in any mixture of cases, equal `lowerCase`?
bool equalsKeyword(std::string_view text, std::string_view lowerCase) noexcept;

/// Reads a whole decimal number between `low` and `high` (signs and other bases are refused);
/// false when `text` is anything else.
bool parseNumber(std::string_view text, std::uint64_t low, std::uint64_t high,
                 std::uint64_t& value) noexcept;

/// The same for a hexadecimal number that starts with "0x".
bool parseHexNumber(std::string_view text, std::uint64_t high, std::uint64_t& value) noexcept;

/// Takes a decimal number between `low` and `high`; raises SyntaxFailure with "WHAT LOW-HIGH".
std::uint64_t takeNumber(Lexer& lexer, std::string_view what, std::uint64_t low,
                         std::uint64_t high);

/// Takes a name: 1 to 255 printable ASCII characters. Raises SyntaxFailure with `what`.
Token takeName(Lexer& lexer, std::string_view what);

}  // namespace lab
