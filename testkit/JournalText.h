// SPDX-License-Identifier: Apache-2.0
#pragma once

// Forms of a Journal for other programs: JSON lines, which can be read again, and a Mermaid
// sequence diagram.
//
//   writeJsonLines(file, lab.journal());
//   for (JournalLine const& line : readJournal(SourceText::fromFile(path))) { ... }

#include "testkit/Export.h"
#include "testkit/Journal.h"
#include "testkit/text/Json.h"
#include "testkit/text/JsonLine.h"
#include "testkit/text/SourceText.h"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

// What JSON carries of an entry: names and texts instead of the objects. A text that the entry does
// not have is empty.
struct POLICYMAPTESTKIT_API JournalLine {
  using Kind = JournalEntry::Kind;

  Kind kind = Kind::call;
  std::uint64_t number = 0;
  double time = 0;
  std::string operation;
  std::string policy;
  std::string direction;
  std::string option;
  std::string intf;
  std::string className;
  // The rule: its list, which is empty for a rule of the class-map itself, and its number.
  std::string list;
  std::optional<std::uint64_t> sequence;
  std::string subRule;
  std::string match;
  std::optional<JournalEntry::Actions> actions;
  std::string error;
  bool threw = false;
  std::uint64_t count = 0;
  std::string cause;
  std::string text;

  JournalLine() = default;
  explicit JournalLine(JournalEntry const& entry);

  bool operator==(JournalLine const&) const = default;
};

// The head line {"journal":1,"dropped":N}, with the version of the form and the number of entries
// that were dropped; then an object per entry. Each has "number", "time", "kind" ("call", "result",
// "status" or "test") and "operation"; other members only if they are not empty, 0 or false:
//
//   {"number":3,"time":0.0,"kind":"call","operation":"createPolicy","policy":"edge",
//    "direction":"input","option":"ipv4","cause":"rules changed","text":"load policy text"}
//
// The others are "intf", "class", "acl", "seq", "subRule", "match", "action1", ..., "error",
// "threw" and "count".
[[nodiscard]] POLICYMAPTESTKIT_API std::vector<std::string> jsonLines(Journal const& journal);
POLICYMAPTESTKIT_API void writeJsonLines(std::ostream& out, Journal const& journal);

// One entry of them, and read again: none if its kind is unknown.
[[nodiscard]] POLICYMAPTESTKIT_API Text::Json jsonOf(JournalLine const& line);
[[nodiscard]] POLICYMAPTESTKIT_API std::optional<JournalLine> journalLineOf(
    Text::JsonLine const& json);

// Reads JSON lines. Ignores empty lines, unknown members, and entries of an unknown kind. Throws
// Text::InputError, with the number of the line, for any other text.
[[nodiscard]] POLICYMAPTESTKIT_API std::vector<JournalLine> readJournal(
    Text::SourceText const& source);
[[nodiscard]] POLICYMAPTESTKIT_API std::vector<JournalLine> readJournal(std::string_view text);

// A sequence diagram between the test, the core and the helper: an arrow per call, a dashed arrow
// per asynchronous result and per count, and a dashed arrow with a cross per failure.
POLICYMAPTESTKIT_API void writeMermaid(std::ostream& out, Journal const& journal);

}  // namespace PolicyMapTestKit
