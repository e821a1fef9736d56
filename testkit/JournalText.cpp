// SPDX-License-Identifier: Apache-2.0
#include "testkit/JournalText.h"

#include "testkit/Printing.h"
#include "testkit/text/RuleConversion.h"
#include "testkit/text/ShownText.h"

#include <algorithm>
#include <array>
#include <limits>
#include <ostream>
#include <utility>

namespace PolicyMapTestKit {

namespace {

using Text::Json;

constexpr std::uint64_t journalVersion = 1;

constexpr std::array<std::pair<JournalEntry::Kind, std::string_view>, 4> kinds{
    {{JournalEntry::Kind::call, "call"},
     {JournalEntry::Kind::result, "result"},
     {JournalEntry::Kind::status, "status"},
     {JournalEntry::Kind::test, "test"}}};

// The texts of an entry in the order in which they are written.
struct TextMember {
  std::string_view name;
  std::string JournalLine::*value;
};
constexpr std::array textsBeforeRule{TextMember{"operation", &JournalLine::operation},
                                     TextMember{"policy", &JournalLine::policy},
                                     TextMember{"direction", &JournalLine::direction},
                                     TextMember{"option", &JournalLine::option},
                                     TextMember{"intf", &JournalLine::intf},
                                     TextMember{"class", &JournalLine::className},
                                     TextMember{"acl", &JournalLine::list}};
constexpr std::array textsOfRule{TextMember{"subRule", &JournalLine::subRule},
                                 TextMember{"match", &JournalLine::match}};
constexpr std::array textsAfterRule{TextMember{"error", &JournalLine::error},
                                    TextMember{"cause", &JournalLine::cause},
                                    TextMember{"text", &JournalLine::text}};

template <class Members>
void addTexts(Json& json, JournalLine const& line, Members const& members) {
  for (TextMember const& member : members) {
    if (!(line.*member.value).empty()) {
      json.add(member.name, line.*member.value);
    }
  }
}

template <class Members>
void readTexts(JournalLine& read, Text::JsonLine const& json, Members const& members) {
  for (TextMember const& member : members) {
    read.*member.value = json.text(member.name);
  }
}

void readActions(JournalLine& read, Text::JsonLine const& json) {
  JournalEntry::Actions actions{};
  for (std::size_t i = 0; i != actions.size(); ++i) {
    std::string_view const name = PolicyMapTest::testActionNames[i];
    if (!json.has(name)) {
      continue;
    }
    std::uint64_t const value = json.number(name);
    if (value > std::numeric_limits<std::uint32_t>::max()) {
      json.fail(0, "a number of 32 bits as member \"" + std::string(name) + "\"");
    }
    actions[i] = static_cast<std::uint32_t>(value);
    read.actions = actions;
  }
}

// Mermaid ends a message at ';', takes '#' for an escape, '%' for a comment, and would show markup.
std::string mermaidText(std::string_view text) {
  constexpr std::string_view plain = " .,:/_-+*=()[]'|!?";
  std::string shown;
  for (char const c : Text::shownText(text)) {
    auto const byte = static_cast<unsigned char>(c);
    bool const isWord = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (isWord || byte >= 0x80 || plain.find(c) != std::string_view::npos) {
      shown += c;
    } else {
      shown += '#' + std::to_string(byte) + ';';
    }
  }
  return shown;
}

void writeArrow(std::ostream& out, std::string_view arrow, std::string_view text) {
  out << "  " << arrow << ": " << mermaidText(text) << '\n';
}

void writeCall(std::ostream& out, JournalEntry const& entry) {
  bool const byTest = entry.cause.empty();
  writeArrow(out, byTest ? "test->>helper" : "core->>helper", entry.describeCall());
  if (!entry.error.empty()) {
    writeArrow(out, byTest ? "helper--xtest" : "helper--xcore",
               (entry.threw ? "throws " : "fails: ") + entry.error.stdString());
  } else if (entry.operation == "getCountForRule") {
    writeArrow(out, byTest ? "helper-->>test" : "helper-->>core", std::to_string(entry.count));
  }
}

}  // namespace

Json jsonOf(JournalLine const& line) {
  auto const* const kind = std::find_if(kinds.begin(), kinds.end(),
                                        [&](auto const& each) { return each.first == line.kind; });
  Json json(Json::Object{{"number", line.number}, {"time", line.time}, {"kind", kind->second}});
  addTexts(json, line, textsBeforeRule);
  if (line.sequence) {
    json.add("seq", *line.sequence);
  }
  addTexts(json, line, textsOfRule);
  if (line.actions) {
    for (std::size_t i = 0; i != line.actions->size(); ++i) {
      json.add(PolicyMapTest::testActionNames[i], (*line.actions)[i]);
    }
  }
  addTexts(json, line, textsAfterRule);
  if (line.threw) {
    json.add("threw", true);
  }
  if (line.count != 0) {
    json.add("count", line.count);
  }
  return json;
}

std::optional<JournalLine> journalLineOf(Text::JsonLine const& json) {
  std::string const kind = json.text("kind");
  auto const* const known = std::find_if(kinds.begin(), kinds.end(),
                                         [&](auto const& each) { return each.second == kind; });
  if (kind.empty()) {
    json.fail(0, "a member \"kind\"");
  }
  if (known == kinds.end()) {
    return std::nullopt;
  }
  JournalLine read;
  read.kind = known->first;
  read.number = json.number("number");
  read.time = json.real("time");
  readTexts(read, json, textsBeforeRule);
  readTexts(read, json, textsOfRule);
  readTexts(read, json, textsAfterRule);
  if (json.has("seq")) {
    read.sequence = json.number("seq");
  }
  readActions(read, json);
  read.threw = json.has("threw") && json.flag("threw");
  read.count = json.has("count") ? json.number("count") : 0;
  return read;
}

JournalLine::JournalLine(JournalEntry const& entry)
    : kind(entry.kind),
      number(entry.number),
      time(entry.time),
      operation(entry.operation),
      className(entry.className.stdString()),
      actions(entry.actions),
      error(entry.error.stdString()),
      threw(entry.threw),
      count(entry.count),
      cause(entry.cause),
      text(entry.text.stdString()) {
  if (entry.policy) {
    policy = entry.policy->first().stdString();
    direction = entry.policy->second().stdString();
  }
  if (entry.option) {
    option = toText(*entry.option);
  }
  if (entry.intf) {
    intf = entry.intf->name().stdString();
  }
  if (entry.rule) {
    list = entry.rule->aclName().stdString();
    sequence = entry.rule->seqno();
    subRule = !entry.subRule ? "" : describe(entry.subRule);
  }
  if (entry.match) {
    match = Text::describe(*entry.match);
  }
}

std::vector<std::string> jsonLines(Journal const& journal) {
  std::vector<std::string> lines;
  lines.reserve(journal.size() + 1);
  lines.push_back(
      Json(Json::Object{{"journal", journalVersion}, {"dropped", journal.dropped()}}).text());
  for (JournalEntry const& entry : journal) {
    lines.push_back(jsonOf(JournalLine(entry)).text());
  }
  return lines;
}

void writeJsonLines(std::ostream& out, Journal const& journal) {
  for (std::string const& line : jsonLines(journal)) {
    out << line << '\n';
  }
}

std::vector<JournalLine> readJournal(Text::SourceText const& source) {
  std::vector<JournalLine> entries;
  bool headed = false;
  Text::LineReader lines(source);
  while (lines.next()) {
    if (lines.line().find_first_not_of(" \t") == std::string_view::npos) {
      continue;
    }
    Text::JsonLine const json(lines);
    if (!std::exchange(headed, true)) {
      if (json.number("journal") != journalVersion) {
        json.fail(0, "a journal of version " + std::to_string(journalVersion));
      }
    } else if (std::optional<JournalLine> entry = journalLineOf(json)) {
      entries.push_back(*std::move(entry));
    }
  }
  if (!headed) {
    throw Text::InputError({source.name(), 1, 1}, "a line {\"journal\":1}", {});
  }
  return entries;
}

std::vector<JournalLine> readJournal(std::string_view text) {
  return readJournal(Text::SourceText("journal", std::string(text)));
}

void writeMermaid(std::ostream& out, Journal const& journal) {
  out << "sequenceDiagram\n  participant test\n  participant core\n  participant helper\n";
  if (journal.dropped() != 0) {
    out << "  Note over test,helper: " << journal.dropped() << " earlier entries\n";
  }
  for (JournalEntry const& entry : journal) {
    switch (entry.kind) {
    case JournalEntry::Kind::test:
      writeArrow(out, "test->>core",
                 std::string(entry.operation) + (entry.text.empty() ? "" : " ") +
                     entry.text.stdString());
      break;
    case JournalEntry::Kind::result:
      writeArrow(out, entry.error.empty() ? "helper-->>core" : "helper--xcore", entry.describe());
      break;
    case JournalEntry::Kind::status: writeArrow(out, "core-->>test", entry.describe()); break;
    case JournalEntry::Kind::call: writeCall(out, entry); break;
    }
  }
}

}  // namespace PolicyMapTestKit
