// SPDX-License-Identifier: Apache-2.0
// The lines of policy-maps.

#include "records/TestActionKinds.h"
#include "testkit/text/IpOptions.h"
#include "testkit/text/LineParser.h"

#include <algorithm>
#include <initializer_list>

namespace PolicyMapTestKit::Text {

namespace {

// Consumes the name of a test action and returns its kind.
std::uint8_t takeActionKind(Lexer& lexer) {
  auto const& names = PolicyMapTest::testActionNames;
  std::string expected;
  for (std::size_t i = 0; i != names.size(); ++i) {
    if (lexer.accept(names[i])) {
      return static_cast<std::uint8_t>(i + 1);
    }
    expected.append(i == 0 ? "" : ", ").append(names[i]);
  }
  lexer.fail(expected + " or a marking such as dscp");
}

std::uint64_t takeAnyNumber(Lexer& lexer) {
  return takeNumber(lexer, "a number", 0, highestWord);
}

// What follows `set`.
struct Marking {
  std::array<std::string_view, 3> words;
  std::uint64_t (*take)(Lexer& lexer);
};
constexpr std::array markings{
    Marking{{"dscp"}, &takeDscpValue},
    Marking{{"ip", "dscp"}, &takeDscpValue},
    Marking{{"precedence"}, &takePrecedenceValue},
    Marking{{"ip", "precedence"}, &takePrecedenceValue},
    Marking{{"cos"}, &takeAnyNumber},
    Marking{{"qos-group"}, &takeAnyNumber},
    Marking{{"discard-class"}, &takeAnyNumber},
    Marking{{"traffic-class"}, &takeAnyNumber},
    Marking{{"mpls", "experimental", "imposition"}, &takeAnyNumber},
    Marking{{"mpls", "experimental", "topmost"}, &takeAnyNumber},
    Marking{{"mpls", "experimental"}, &takeAnyNumber},
};

constexpr std::array<std::string_view, 3> policeVerbs = {"conform-action", "exceed-action",
                                                         "violate-action"};

constexpr std::array<std::string_view, 30> otherActions = {"admit",
                                                           "conform-color",
                                                           "exceed-color",
                                                           "police-single-rate",
                                                           "compression",
                                                           "conform-action",
                                                           "drop",
                                                           "estimate",
                                                           "exceed-action",
                                                           "fair-queue",
                                                           "inspect",
                                                           "log",
                                                           "mark",
                                                           "mirror",
                                                           "netflow-sampler",
                                                           "pass",
                                                           "queue-buffers",
                                                           "queue-limit",
                                                           "random-detect",
                                                           "redirect",
                                                           "reset",
                                                           "service-policy",
                                                           "trust",
                                                           "urlfilter",
                                                           "violate-action",
                                                           "wred",
                                                           "mirror-port",
                                                           "police-two-rate",
                                                           "child-conform-aware",
                                                           "account"};

// Consumes the words that are not empty, if they come next.
bool acceptWords(Lexer& lexer, std::array<std::string_view, 3> const& words) {
  return std::all_of(words.begin(), words.end(),
                     [&](std::string_view word) { return word.empty() || lexer.accept(word); });
}

// Returns so many times `bits` bits per second in kbit/s, rounded up. Raises SyntaxFailure at the
// rate if that is not the value of an action.
std::uint64_t kilobits(Lexer const& rate, std::uint64_t number, std::uint64_t bits) {
  constexpr std::uint64_t highest = highestWord * 1000;
  if (number > highest / bits) {
    rate.fail("a rate of at most " + std::to_string(highestWord) + " kbit/s");
  }
  return (number * bits + 999) / 1000;
}

// Takes a rate such as `8000`, `64k`, `10 mbps`, and returns it in kbit/s; none if the next word is
// no rate. A number without a unit counts `bits` bits per second.
std::optional<std::uint64_t> takeRate(Lexer& lexer, std::uint64_t bits) {
  struct Unit {
    std::string_view word;
    std::string_view letter;
    std::uint64_t bits;
  };
  static constexpr std::array units{Unit{"bps", "", 1}, Unit{"kbps", "k", 1000},
                                    Unit{"mbps", "m", 1000000}, Unit{"gbps", "g", 1000000000}};
  Lexer const before = lexer;
  std::string_view const word = lexer.peek().text;
  std::size_t const digits = std::min(word.find_first_not_of("0123456789"), word.size());
  std::string_view const suffix = word.substr(digits);
  std::uint64_t number = 0;
  if (!parseNumber(word.substr(0, digits), 0, UINT64_MAX, number)) {
    return std::nullopt;
  }
  for (Unit const& unit : units) {
    bool const attached =
        !suffix.empty() && (equalsKeyword(suffix, unit.letter) || equalsKeyword(suffix, unit.word));
    if (attached || (suffix.empty() && lexer.peekSecond().is(unit.word))) {
      lexer.next();
      if (!attached) {
        lexer.next();
      }
      return kilobits(before, number, unit.bits);
    }
  }
  static constexpr std::array<std::string_view, 5> otherUnits = {"pps", "packets-per-second",
                                                                 "percent", "cps", "kilobits"};
  if (!suffix.empty() || contains(otherUnits, lexer.peekSecond())) {
    return std::nullopt;
  }
  lexer.next();
  return kilobits(before, number, bits);
}

// Takes a rate, which may follow one of the words. None, and no word consumed, if there is none.
std::optional<std::uint64_t> takeRateAfter(std::initializer_list<std::string_view> words,
                                           Lexer& lexer, std::uint64_t bits) {
  Lexer const before = lexer;
  static_cast<void>(std::any_of(words.begin(), words.end(),
                                [&](std::string_view word) { return lexer.accept(word); }));
  std::optional<std::uint64_t> const rate = takeRate(lexer, bits);
  if (!rate) {
    lexer = before;
  }
  return rate;
}

}  // namespace

void LineParser::policyMap(Lexer& lexer, bool remove) {
  PolicyMapOpen open;
  open.type = takeType(lexer);
  open.policyMap = nameOfType(takeName(lexer, "a policy-map name"), open.type);
  // Some dialects specify the direction here; this one does so where the policy-map is attached.
  if (!lexer.accept("in")) {
    lexer.accept("out");
  }
  lexer.expectEnd();
  if (remove) {
    emit(PolicyMapRemove{std::move(open.policyMap)});
    return;
  }
  outer_ = withoutColumn(open.policyMap);
  type_ = open.type;
  emit(std::move(open));
  enter(Mode::policyMap);
}

void LineParser::policyClass(Lexer& lexer, bool remove) {
  // Even a faulty header ends the mode: the lines after it must not be applied to the previous
  // class.
  mode_ = Mode::policyMap;
  std::string const written = takeType(lexer);
  std::string const& type = written.empty() ? type_ : written;
  Name name = nameOfType(takeName(lexer, "a class name"), type);
  std::optional<Name> other;
  if (!remove && lexer.accept("insert-before")) {
    other = nameOfType(takeName(lexer, "a class name"), type);
  }
  lexer.expectEnd(remove || other ? "end of line" : "insert-before or end of line");
  if (remove) {
    emit(PolicyClassRemove{outer_, std::move(name)});
    return;
  }
  className_ = withoutColumn(name);
  emit(PolicyClassOpen{outer_, std::move(name), std::move(other)});
  mode_ = Mode::policyClass;
  classLine_ = position_.line;
}

// The value of a marking; 0 if all are removed. None if it is no number, e.g. `dscp table T`, which
// only a lenient reading takes.
std::optional<std::uint64_t> LineParser::takeMarking(Lexer& lexer,
                                                     std::uint64_t (*take)(Lexer& lexer),
                                                     bool remove) const {
  if (remove && lexer.peek().atEnd()) {
    return 0;
  }
  try {
    std::uint64_t const value = take(lexer);
    lexer.expectEnd();
    return value;
  } catch (SyntaxFailure const&) {
    if (!lenient_) {
      throw;
    }
    return std::nullopt;
  }
}

void LineParser::setAction(Lexer& lexer, bool remove) {
  isAbout(lexer.peek());
  for (Marking const& marking : markings) {
    Lexer ahead = lexer;
    if (acceptWords(ahead, marking.words)) {
      std::optional<std::uint64_t> const value = takeMarking(ahead, marking.take, remove);
      if (value) {
        lexer = ahead;
        emitAction(mapped(markingAction), *value, remove);
      } else {
        emitOtherAction("set " + std::string(lexer.rest().text), remove);
      }
      return;
    }
  }
  auto const& numbers = PolicyMapTest::testActionNames;
  bool const isNumber =
      std::any_of(numbers.begin(), numbers.end(), [&](auto name) { return lexer.peek().is(name); });
  if (lexer.peek().is("tunnel") || lexer.peek().is("vlan") || lexer.peek().is("ip") ||
      (lenient_ && !isNumber && !lexer.peek().atEnd())) {
    emitOtherAction("set " + std::string(lexer.rest().text), remove);
    return;
  }
  std::uint8_t const kind = takeActionKind(lexer);
  bool const any = remove && lexer.peek().atEnd();
  emitAction(kind, any ? 0 : takeNumber(lexer, "action value", 0, highestWord), remove);
  lexer.expectEnd();
}

void LineParser::assignQueue(Lexer& lexer, bool remove) {
  bool const any = remove && lexer.peek().atEnd();
  emitAction(mapped(markingAction), any ? 0 : takeNumber(lexer, "queue", 0, highestWord), remove);
  lexer.expectEnd();
}

// The rate, and what happens to packets within and above it. They replace what an earlier line said
// about them.
void LineParser::police(Lexer& lexer, bool remove) {
  std::optional<std::uint64_t> const rate =
      takeRateAfter({"cir", "rate"}, lexer, command_ == "police-simple" ? 1000 : 1);
  for (std::string_view const keyword : policeVerbs) {
    emit(PolicyClassOtherAction{outer_, className_, std::string(keyword), true, true});
  }
  emit(PolicyClassOtherAction{outer_, className_, command_, true, true});
  emitRate(rate, lexer, remove);
  while (!lexer.peek().atEnd()) {
    bool const isVerb = contains(policeVerbs, lexer.peek());
    std::string text(lexer.next().text);
    while (isVerb && !lexer.peek().atEnd() && !contains(policeVerbs, lexer.peek())) {
      text.append(" ").append(lexer.next().text);
    }
    if (isVerb && !remove) {
      emitOtherAction(text, false);
    }
  }
}

void LineParser::shape(Lexer& lexer, bool remove) {
  emitRate(takeRateAfter({"average", "peak"}, lexer, 1), lexer, remove);
  lexer.rest();
}

// `bandwidth KBPS` and `priority KBPS`.
void LineParser::bandwidth(Lexer& lexer, bool remove) {
  emitRate(takeRateAfter({}, lexer, 1000), lexer, remove);
  lexer.rest();
}

// Without a rate, the rest of the line is another action. `no priority` may remove one.
void LineParser::emitRate(std::optional<std::uint64_t> rate, Lexer& lexer, bool remove) {
  if (remove && lexer.peek().atEnd() && command_ != "priority") {
    if (std::uint8_t const kind = mapped(rateAction); kind != 0) {
      emit(PolicyClassAction{outer_, className_, kind, std::nullopt, true});
    }
  } else if (rate) {
    emitAction(mapped(rateAction), *rate, remove);
  } else {
    emitOtherAction(command_ + " " + std::string(lexer.rest().text), remove);
  }
}

void LineParser::classAction(Lexer& lexer, bool remove) {
  inPolice_ = contains(policeVerbs, lexer.peek());
  emitOtherAction(std::string(lexer.rest().text), remove);
}

bool LineParser::isOtherAction(Token const& word) {
  return contains(otherActions, word);
}

std::uint8_t LineParser::mapped(std::uint8_t usualKind) const {
  Lexer lexer(reader_.line());
  lexer.accept("no");
  return actions_.actionOf(lexer.rest().text).value_or(usualKind);
}

void LineParser::emitAction(std::uint8_t kind, std::uint64_t value, bool remove) {
  if (kind == 0) {
    return;
  }
  PolicyClassAction body{outer_, className_, kind, std::nullopt};
  if (!remove) {
    body.value = static_cast<std::uint32_t>(value);
  }
  emit(std::move(body));
}

void LineParser::emitOtherAction(std::string const& text, bool remove) {
  Lexer words(text);
  std::string normal;
  while (!words.peek().atEnd()) {
    normal.append(normal.empty() ? "" : " ").append(words.next().text);
  }
  std::uint8_t const action = actions_.actionOf(normal).value_or(otherAction);
  if (action != 0) {
    emit(PolicyClassOtherAction{outer_, className_, std::move(normal), remove, false, action});
  }
}

}  // namespace PolicyMapTestKit::Text
