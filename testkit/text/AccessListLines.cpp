// SPDX-License-Identifier: Apache-2.0
// The lines of access lists.

#include "testkit/text/LineParser.h"

namespace PolicyMapTestKit::Text {

namespace {

// A list that a number names, and whether it is a standard one.
struct NumberedList {
  std::string name;
  bool standard = false;
};

// None if it is not the number of an IPv4 list.
std::optional<NumberedList> numberedList(std::string_view text) {
  std::uint64_t number = 0;
  bool const standard = parseNumber(text, 1, 99, number) || parseNumber(text, 1300, 1999, number);
  if (!standard && !parseNumber(text, 100, 199, number) && !parseNumber(text, 2000, 2699, number)) {
    return std::nullopt;
  }
  return NumberedList{std::to_string(number), standard};
}

}  // namespace

void LineParser::ipAccessList(Lexer& lexer, bool remove) {
  bool const standard = lexer.accept("standard");
  if (!standard) {
    lexer.accept("extended");
  }
  accessList(lexer, Family::ip4, remove, standard ? RuleKind::standardIp4 : RuleKind::ip4);
}

void LineParser::macAccessList(Lexer& lexer, bool remove) {
  lexer.accept("extended");
  accessList(lexer, Family::mac, remove);
}

void LineParser::accessList(Lexer& lexer, Family family, bool remove, RuleKind kind) {
  // What a device logs of its lists.
  static constexpr std::array<std::string_view, 4> settings = {"log-update", "logging",
                                                               "persistent", "resequence"};
  if (contains(settings, lexer.peek()) && !lexer.peekSecond().atEnd()) {
    lexer.rest();
    return;
  }
  AccessListId list{family, nameOf(takeName(lexer, "an access-list name"))};
  lexer.expectEnd();
  if (remove) {
    emit(AccessListRemove{std::move(list)});
    return;
  }
  list_ = {family, withoutColumn(list.name)};
  ruleKind_ = kind;
  emit(AccessListOpen{std::move(list), kind == RuleKind::standardIp4});
  enter(Mode::accessList);
}

// One line that names its list by number, as if the list's mode were open for this line.
void LineParser::numberedAccessList(Lexer& lexer, bool remove) {
  if (lexer.accept("compiled")) {
    lexer.expectEnd();
    return;
  }
  Token const token = lexer.peek();
  std::optional<NumberedList> const list = numberedList(token.text);
  if (!list) {
    lexer.fail("an access-list number 1-199 or 1300-2699");
  }
  lexer.next();
  auto const& [name, standard] = *list;
  list_ = {Family::ip4, {name, token.column}};
  ruleKind_ = standard ? RuleKind::standardIp4 : RuleKind::ip4;
  if (remove && lexer.peek().atEnd()) {
    numbered_.clear();
    emit(AccessListRemove{list_});
    return;
  }
  std::size_t const before = result_.statements.size();
  if (!lexer.peek().is("permit") && !lexer.peek().is("deny") && !lexer.peek().is("remark")) {
    lexer.fail("permit, deny or remark");
  }
  accessListEntry(lexer, remove);
  if (remove) {
    return;
  }
  if (numbered_ != name) {
    // Opened only after the line was parsed.
    result_.statements.insert(result_.statements.begin() + static_cast<std::ptrdiff_t>(before),
                              {position_, 0, subject_, AccessListOpen{list_, standard}});
    numbered_ = name;
    numberedLine_ = position_.line;
  }
  result_.statements.back().block = numberedLine_;
}

// Parses an entry of the list. Returns false, without consuming a word, if the line is not one.
bool LineParser::accessListEntry(Lexer& lexer, bool remove) {
  std::optional<std::uint32_t> sequence;
  std::uint64_t number = 0;
  lexer.accept("sequence");
  if (parseNumber(lexer.peek().text, 0, std::numeric_limits<std::uint64_t>::max(), number)) {
    isAbout(lexer.peek());
    sequence = static_cast<std::uint32_t>(takeNumber(lexer, "sequence number", 1, highestWord));
  }
  if (sequence && remove && !lexer.peek().is("permit") && !lexer.peek().is("deny")) {
    removeSequence(lexer, *sequence);
    return true;
  }
  if (lexer.accept("remark")) {
    remark(lexer, sequence, remove);
    return true;
  }
  bool const permit = lexer.peek().is("permit");
  if (!sequence) {
    isAbout(lexer.peek());
  }
  if (!permit && !lexer.peek().is("deny")) {
    if (sequence) {
      lexer.fail("permit, deny or remark");
    }
    return false;
  }
  lexer.next();
  if (!sequence && ruleKind_ == RuleKind::ip6) {
    sequence = takeTrailingSequence(lexer);
  }
  ListRule rule =
      parseListRule(lexer, ruleKind_, permit ? Verdict::permit : Verdict::deny, position_);
  if (remove) {
    emit(RuleRemove{list_, sequence, std::move(rule)});
  } else {
    emit(RuleAdd{list_, sequence, std::move(rule)});
  }
  return true;
}

// Takes `sequence N` from the end of the line.
std::optional<std::uint32_t> LineParser::takeTrailingSequence(Lexer& lexer) const {
  Lexer ahead = lexer;
  while (!ahead.peek().atEnd() && !ahead.peek().is("sequence")) {
    ahead.next();
  }
  if (ahead.peek().atEnd()) {
    return std::nullopt;
  }
  Token const word = ahead.next();
  std::uint64_t const number = takeNumber(ahead, "sequence number", 1, highestWord);
  ahead.expectEnd();
  Lexer rest(reader_.line().substr(0, word.column - 1));
  while (rest.peek().column < lexer.peek().column) {
    rest.next();
  }
  lexer = rest;
  return static_cast<std::uint32_t>(number);
}

// True if the line is an entry, or looks like one; its place is kept then. A widening reading keeps
// no `deny`.
bool LineParser::skipsEntry(Lexer lexer, bool isIndented) {
  lexer.accept("no");
  std::optional<std::uint32_t> sequence;
  std::uint64_t number = 0;
  lexer.accept("sequence");
  if (parseNumber(lexer.peek().text, 1, highestWord, number)) {
    sequence = static_cast<std::uint32_t>(number);
    lexer.next();
  }
  SkippedKind kind = SkippedKind::other;
  if (lexer.peek().is("deny")) {
    kind = SkippedKind::deny;
  } else if (lexer.peek().is("permit")) {
    kind = SkippedKind::permit;
  } else if (!isIndented) {
    return false;
  }
  for (; !lexer.peek().atEnd(); lexer.next()) {
    if (lexer.peek().is("deny") || lexer.peek().is("drop")) {
      kind = SkippedKind::deny;  // such as `dynamic NAME deny ...`
    } else if (!sequence && lexer.peek().is("sequence") &&
               parseNumber(lexer.peekSecond().text, 1, highestWord, number)) {
      sequence = static_cast<std::uint32_t>(number);
    }
  }
  if (kind != SkippedKind::deny || !widening_) {
    emit(SkippedEntryAdd{list_, sequence, kind});
  }
  return true;
}

// The same for a line that names its list by number.
bool LineParser::skipsNumberedEntry() {
  Lexer lexer(reader_.line());
  lexer.next();
  Token const word = lexer.next();
  std::optional<NumberedList> const list = numberedList(word.text);
  if (!list) {
    return false;
  }
  list_ = {Family::ip4, {list->name, word.column}};
  if (numbered_ != list->name) {
    emit(AccessListOpen{list_, list->standard});
    numbered_ = list->name;
    numberedLine_ = position_.line;
  }
  return skipsEntry(lexer, true);
}

void LineParser::remark(Lexer& lexer, std::optional<std::uint32_t> sequence, bool remove) {
  if (remove && !lexer.peek().atEnd()) {
    isAbout(lexer.peek());
  }
  std::string text(lexer.rest().text);
  if (remove) {
    emit(RemarkRemove{list_, std::move(text)});
  } else {
    emit(RemarkAdd{list_, sequence, std::move(text)});
  }
}

void LineParser::removeSequence(Lexer& lexer, std::uint32_t sequence) {
  bool const remarkOnly = lexer.accept("remark");
  if (remarkOnly) {
    lexer.rest();
  }
  lexer.expectEnd("remark or end of line");
  emit(EntryRemove{list_, sequence, remarkOnly});
}

}  // namespace PolicyMapTestKit::Text
