// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/ActionMapping.h"

#include "records/TestActionKinds.h"
#include "testkit/text/Lexer.h"

#include <algorithm>

namespace PolicyMapTestKit::Text {

namespace {

// "action1, action2, action3 or none"; consumes one of them, and returns its number from 1, or 0.
std::uint8_t takeActionOrNone(Lexer& lexer) {
  auto const& names = PolicyMapTest::testActionNames;
  std::string expected;
  for (std::size_t i = 0; i != names.size(); ++i) {
    if (lexer.accept(names[i])) {
      return static_cast<std::uint8_t>(i + 1);
    }
    expected.append(names[i]).append(i + 1 == names.size() ? " or none" : ", ");
  }
  if (!lexer.accept("none")) {
    lexer.fail(expected);
  }
  return 0;
}

bool isComment(Token const& first) {
  return first.atEnd() || first.text.front() == '!' || first.text.front() == '#';
}

bool begins(std::string_view line, std::vector<std::string> const& words) {
  Lexer lexer(line);
  return std::all_of(words.begin(), words.end(),
                     [&](std::string const& word) { return lexer.accept(word); });
}

}  // namespace

ActionMapping::ActionMapping(SourceText const& source) {
  LineReader reader(source);
  while (reader.next()) {
    Lexer lexer(reader.line());
    if (isComment(lexer.peek())) {
      continue;
    }
    try {
      Entry entry{};
      while (!lexer.peek().atEnd() && lexer.peek().text != "=") {
        entry.words.push_back(lowerCase(lexer.next().text));
      }
      if (entry.words.empty() || lexer.peek().atEnd()) {
        lexer.fail("the first words of a line of a class, = and an action");
      }
      bool const known = std::any_of(entries_.begin(), entries_.end(), [&](Entry const& earlier) {
        return earlier.words == entry.words;
      });
      if (known) {
        Lexer(reader.line()).fail("words that no earlier line maps");
      }
      lexer.next();
      entry.action = takeActionOrNone(lexer);
      lexer.expectEnd();
      entries_.push_back(std::move(entry));
    } catch (SyntaxFailure const& failure) {
      throw InputError(reader.position(failure.found.column), failure.expected, failure.found.text);
    }
  }
}

std::optional<std::uint8_t> ActionMapping::actionOf(std::string_view line) const {
  Entry const* best = nullptr;
  for (Entry const& entry : entries_) {
    bool const longer = best == nullptr || entry.words.size() > best->words.size();
    if (longer && begins(line, entry.words)) {
      best = &entry;
    }
  }
  return best == nullptr ? std::nullopt : std::optional(best->action);
}

std::string ActionMapping::text() const {
  std::string text;
  for (Entry const& entry : entries_) {
    for (std::string const& word : entry.words) {
      text.append(word).append(" ");
    }
    text.append("= ");
    text.append(entry.action == 0 ? "none" : PolicyMapTest::testActionNames[entry.action - 1U]);
    text.append("\n");
  }
  return text;
}

}  // namespace PolicyMapTestKit::Text
