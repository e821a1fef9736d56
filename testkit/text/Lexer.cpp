// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/Lexer.h"

#include <algorithm>
#include <utility>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::size_t nameLimit = 255;
constexpr std::string_view blanks = " \t";

bool isBlank(char character) noexcept {
  return character == ' ' || character == '\t';
}

char toLower(char character) noexcept {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

unsigned digitOf(char character) noexcept {
  if (character >= '0' && character <= '9') {
    return static_cast<unsigned>(character - '0');
  }
  char const lower = toLower(character);
  return lower >= 'a' && lower <= 'f' ? static_cast<unsigned>(lower - 'a' + 10) : 16;
}

// std::from_chars takes three times as long.
template <unsigned base>
bool parseInBase(std::string_view text, std::uint64_t& value) noexcept {
  std::uint64_t parsed = 0;
  for (char const character : text) {
    unsigned const digit = digitOf(character);
    if (digit >= base || __builtin_mul_overflow(parsed, base, &parsed) ||
        __builtin_add_overflow(parsed, digit, &parsed)) {
      return false;
    }
  }
  value = parsed;
  return !text.empty();
}

}  // namespace

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), toLower);
  return lower;
}

bool equalsKeyword(std::string_view text, std::string_view lowerCase) noexcept {
  return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                    [](char left, char right) { return toLower(left) == right; });
}

bool parseNumber(std::string_view text, std::uint64_t low, std::uint64_t high,
                 std::uint64_t& value) noexcept {
  std::uint64_t parsed = 0;
  if (!parseInBase<10>(text, parsed) || parsed < low || parsed > high) {
    return false;
  }
  value = parsed;
  return true;
}

bool parseHexNumber(std::string_view text, std::uint64_t high, std::uint64_t& value) noexcept {
  std::uint64_t parsed = 0;
  if (!equalsKeyword(text.substr(0, 2), "0x") || !parseInBase<16>(text.substr(2), parsed) ||
      parsed > high) {
    return false;
  }
  value = parsed;
  return true;
}

Lexer::Lexer(std::string_view line) noexcept
    : line_(line.substr(0, line.find_last_not_of(blanks) + 1)), current_(wordFrom(0)) {}

Token Lexer::wordFrom(std::size_t offset) const noexcept {
  std::size_t begin = offset;
  while (begin < line_.size() && isBlank(line_[begin])) {
    ++begin;
  }
  std::size_t end = begin;
  while (end < line_.size() && !isBlank(line_[end])) {
    ++end;
  }
  return {line_.substr(begin, end - begin), static_cast<std::uint32_t>(begin) + 1};
}

Token Lexer::wordAfter(Token const& token) const noexcept {
  return wordFrom(token.column - 1 + token.text.size());
}

Token Lexer::peekSecond() const noexcept {
  return wordAfter(current_);
}

Token Lexer::next() noexcept {
  Token const token = current_;
  current_ = wordAfter(token);
  return token;
}

bool Lexer::accept(std::string_view word) noexcept {
  if (!current_.is(word)) {
    return false;
  }
  next();
  return true;
}

Token Lexer::rest() noexcept {
  Token const all{line_.substr(current_.column - 1), current_.column};
  current_ = wordFrom(line_.size());
  return all;
}

void Lexer::expectEnd(std::string_view expected) const {
  if (!peek().atEnd()) {
    fail(std::string(expected));
  }
}

void Lexer::fail(std::string expected) const {
  throw SyntaxFailure{std::move(expected), current_};
}

std::uint64_t takeNumber(Lexer& lexer, std::string_view what, std::uint64_t low,
                         std::uint64_t high) {
  std::uint64_t value = 0;
  if (!parseNumber(lexer.peek().text, low, high, value)) {
    lexer.fail(std::string(what) + " " + std::to_string(low) + "-" + std::to_string(high));
  }
  lexer.next();
  return value;
}

Token takeName(Lexer& lexer, std::string_view what) {
  Token const token = lexer.peek();
  bool const printable = std::all_of(token.text.begin(), token.text.end(), [](char character) {
    return character > ' ' && character <= '~';
  });
  if (token.atEnd() || !printable) {
    lexer.fail(std::string(what));
  }
  if (token.text.size() > nameLimit) {
    lexer.fail(std::string(what) + " of at most " + std::to_string(nameLimit) + " characters");
  }
  return lexer.next();
}

}  // namespace PolicyMapTestKit::Text
