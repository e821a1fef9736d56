// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/SkippedLines.h"

#include <algorithm>
#include <array>

namespace PolicyMapTestKit::Text {

namespace {

constexpr std::size_t kindLimit = 256;
constexpr std::size_t wordLimit = 32;
constexpr int wordsInKind = 3;

// Keywords that are reported together with the next word.
constexpr std::array<std::string_view, 9> prefixes = {
    "no", "ip", "ipv6", "mac", "match", "set", "switchport", "service", "spanning-tree"};

bool isLetter(char character) noexcept {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isKeywordPart(char character) noexcept {
  return isLetter(character) || isDigit(character) || character == '-' || character == '_';
}

// Returns the word in lower case, truncated, if it looks like a keyword; otherwise empty.
std::string keyword(std::string_view word) {
  if (!word.empty() && word.back() == ':') {
    word.remove_suffix(1);
  }
  word = word.substr(0, wordLimit);
  if (word.empty() || !isLetter(word.front()) ||
      !std::all_of(word.begin(), word.end(), isKeywordPart)) {
    return {};
  }
  return lowerCase(word);
}

// Skips what precedes the verb of an access-list entry.
void passEntryNumber(Lexer& lexer) {
  lexer.accept("access-list");
  std::uint64_t number = 0;
  if (parseNumber(lexer.peek().text, 0, UINT64_MAX, number)) {
    lexer.next();
  }
}

}  // namespace

void SkippedLines::count(std::string const& kind, std::uint64_t lines) {
  bool const room = byKind_.size() < kindLimit || byKind_.count(kind) != 0;
  byKind_[room ? kind : "other"] += lines;
  total_ += lines;
}

void SkippedLines::add(std::string const& kind, SourcePosition const& place) {
  count(kind, 1);
  if (lines_.size() < mostLines) {
    lines_.push_back({place, kind});
  }
}

void SkippedLines::add(SkippedLines const& more) {
  for (auto const& [kind, lines] : more.byKind_) {
    count(kind, lines);
  }
  std::size_t const room = std::min(mostLines - lines_.size(), more.lines_.size());
  lines_.insert(lines_.end(), more.lines_.begin(),
                more.lines_.begin() + static_cast<std::ptrdiff_t>(room));
  understood_ += more.understood_;
  missed_ += more.missed_;
}

std::string skippedKind(std::string_view line, SyntaxFailure const& failure) {
  Lexer lexer(line);
  passEntryNumber(lexer);
  std::string kind = keyword(lexer.peek().text);
  if (kind.empty()) {
    return "(text)";
  }
  Token last = lexer.next();
  for (int words = 1; words != wordsInKind; ++words) {
    bool const more = std::any_of(prefixes.begin(), prefixes.end(),
                                  [&last](std::string_view prefix) { return last.is(prefix); });
    std::string const word = more ? keyword(lexer.peek().text) : std::string();
    if (word.empty()) {
      break;
    }
    kind += " " + word;
    last = lexer.next();
  }
  if (failure.found.column <= last.column) {
    return kind;
  }
  std::string const word = keyword(failure.found.text);
  return kind + " (" + (failure.found.atEnd() ? "incomplete" : word.empty() ? "value" : word) + ")";
}

}  // namespace PolicyMapTestKit::Text
