// SPDX-License-Identifier: Apache-2.0
#pragma once

// Google Mock matchers for what a Lab recorded. Each explains what differs, and nothing else.
//
//   EXPECT_THAT(lab.record("edge"), Programmed());
//   EXPECT_THAT(lab.record("edge"), HasRule("web 10", "permit tcp any any eq 80", Action1(7)));
//   EXPECT_THAT(lab.record("edge"), RulesAre("web 10 permit tcp any any eq 80", "web 20 ..."));
//   EXPECT_THAT(lab.record("edge"), OnInterfaces("Ethernet1", "Ethernet2"));
//   EXPECT_THAT(lab.failure("edge"), FailsWith("table full", "commitPolicy"));
//   EXPECT_THAT(lab.failure("edge"), NoFailure());
//   EXPECT_THAT(lab.explain(), AllProgrammed());
//   EXPECT_THAT(lab.journal().calls(), Calls("createPolicy", "addRule", "commitPolicy"));
//
// This header needs Google Mock; the test kit itself does not.

#include "testkit/Journal.h"
#include "testkit/Printers.h"
#include "testkit/Printing.h"
#include "testkit/Record.h"
#include "testkit/text/RuleConversion.h"
#include "testkit/text/RuleParser.h"

#include <PolicyMap/PolicyFailure.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMapTestKit {

// Matchers are named as those of Google Mock, and have its functions.
// NOLINTBEGIN(readability-identifier-naming)

namespace matchers {

inline std::string joined(std::vector<std::string> const& texts) {
  std::string all;
  for (std::string const& text : texts) {
    all += (all.empty() ? "" : ", ") + text;
  }
  return all.empty() ? "none" : all;
}

// Throws std::invalid_argument unless the name ends with a number: a mistyped one would never be
// found.
inline void needRuleName(std::string_view name) {
  std::string_view const number = name.substr(name.rfind(' ') + 1);
  if (number.empty() || number.find_first_not_of("0123456789") != std::string_view::npos) {
    throw std::invalid_argument("a rule's name is \"LIST NUMBER\" or \"NUMBER\", not \"" +
                                std::string(name) + '"');
  }
}

// Compares two lists of lines. `same(expected, i)` compares a line with the actual line i.
template <class Same>
bool sameLines(std::vector<std::string> const& expected, std::vector<std::string> const& actual,
               char const* what, std::ostream* out, Same const& same) {
  std::size_t const common = std::min(expected.size(), actual.size());
  for (std::size_t i = 0; i != common; ++i) {
    if (!same(expected[i], i)) {
      *out << what << ' ' << i + 1 << " is \"" << actual[i] << "\", not \"" << expected[i] << '"';
      return false;
    }
  }
  if (actual.size() > common) {
    *out << what << ' ' << common + 1 << " is \"" << actual[common] << "\", and not expected";
  } else if (expected.size() > common) {
    *out << what << ' ' << common + 1 << " is missing: \"" << expected[common] << '"';
  }
  return actual.size() == expected.size();
}

struct ProgrammedMatcher {
  using is_gtest_matcher = void;

  bool MatchAndExplain(Record const& record, std::ostream* out) const {
    if (out != nullptr && !record.created) {
      *out << "it is not created";
    } else if (out != nullptr && record.dirty) {
      *out << "it is not committed";
    }
    return record.created && !record.dirty;
  }
  void DescribeTo(std::ostream* out) const { *out << "is created and committed"; }
  void DescribeNegationTo(std::ostream* out) const { *out << "is not created, or not committed"; }
};

// One property of a rule with its expected value.
struct RuleValueMatcher {
  using is_gtest_matcher = void;
  enum class Property : std::uint8_t { action, subRules };

  Property property = Property::action;
  std::size_t kind = 1;  // of the action
  testing::Matcher<std::uint64_t> value;

  [[nodiscard]] std::string name() const {
    return property == Property::action ? "action" + std::to_string(kind)
                                        : std::string("the number of sub-rules");
  }
  bool MatchAndExplain(RuleRecord const& rule, std::ostream* out) const {
    std::uint64_t const actual =
        property == Property::action ? rule.action(kind) : rule.subRules.size();
    if (out != nullptr && !value.Matches(actual)) {
      *out << name() << " is " << actual;
    }
    return value.Matches(actual);
  }
  void DescribeTo(std::ostream* out) const {
    *out << "has " << name() << " that ";
    value.DescribeTo(out);
  }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "has " << name() << " that ";
    value.DescribeNegationTo(out);
  }
};

struct HasRuleMatcher {
  using is_gtest_matcher = void;

  std::string name;
  std::string match;  // empty: any
  std::vector<RuleValueMatcher> values;

  bool MatchAndExplain(Record const& record, std::ostream* out) const {
    std::ostream nowhere(nullptr);
    std::ostream& text = out == nullptr ? nowhere : *out;
    RuleRecord const* rule = nullptr;
    try {
      rule = &record.rule(name);
    } catch (LookupError const& error) {
      text << error.what();
      return false;
    }
    std::string const actual = Text::describe(rule->match);
    if (!match.empty() && !Text::isWritten(rule->match, match)) {
      text << "rule " << name << " is \"" << actual << '"';
      return false;
    }
    return std::all_of(values.begin(), values.end(), [&](RuleValueMatcher const& value) {
      bool const matches = value.MatchAndExplain(*rule, nullptr);
      if (!matches) {
        text << "of rule " << name << ", ";
        value.MatchAndExplain(*rule, &text);
      }
      return matches;
    });
  }
  void DescribeTo(std::ostream* out) const {
    *out << "has rule " << name << (match.empty() ? "" : " \"" + match + '"');
    for (RuleValueMatcher const& value : values) {
      *out << " that ";
      value.DescribeTo(out);
    }
  }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "not: ";
    DescribeTo(out);
  }
};

struct RulesAreMatcher {
  using is_gtest_matcher = void;

  std::vector<std::string> lines;

  bool MatchAndExplain(Record const& record, std::ostream* out) const {
    std::ostream nowhere(nullptr);
    std::vector<std::string> actual;
    bool const oneClass = std::all_of(record.begin(), record.end(), [&](RuleRecord const& rule) {
      return rule.key.className() == record.rules.front().key.className();
    });
    for (RuleRecord const& rule : record) {
      actual.push_back((oneClass ? "" : rule.key.className().stdString() + " ") +
                       nameInList(rule.key) + " " + rule.matchText());
    }
    return sameLines(lines, actual, "rule", out == nullptr ? &nowhere : out,
                     [&](std::string const& wanted, std::size_t i) {
                       return isLineOf(record.rules[i], wanted);
                     });
  }
  void DescribeTo(std::ostream* out) const {
    *out << (lines.empty() ? "has no rules" : "has the rules " + joined(lines));
  }
  void DescribeNegationTo(std::ostream* out) const {
    *out << (lines.empty() ? "has rules" : "does not have the rules " + joined(lines));
  }

 private:
  // "[CLASS] LIST NUMBER MATCH".
  static bool isLineOf(RuleRecord const& rule, std::string const& line) {
    std::size_t const match = std::min(line.find(" permit "), line.find(" deny "));
    if (match == std::string::npos) {
      throw std::invalid_argument("a rule is \"LIST NUMBER MATCH\", not \"" + line + '"');
    }
    std::string const name = line.substr(0, match);
    bool const written = Text::isWritten(rule.match, std::string_view(line).substr(match + 1));
    std::string const inList = nameInList(rule.key);
    return written && (name == inList || name == rule.key.className().stdString() + " " + inList);
  }
};

struct OnInterfacesMatcher {
  using is_gtest_matcher = void;

  std::vector<std::string> names;

  bool MatchAndExplain(Record const& record, std::ostream* out) const {
    std::vector<std::string> actual;
    for (Vorel::IntfId const intf : record.interfaces) {
      actual.push_back(intf.name().stdString());
    }
    std::vector<std::string> const missing = without(names, actual);
    std::vector<std::string> const extra = without(actual, names);
    if (out != nullptr && !missing.empty()) {
      *out << "it is not on " << joined(missing) << (extra.empty() ? "" : ", and ");
    }
    if (out != nullptr && !extra.empty()) {
      *out << "it is also on " << joined(extra);
    }
    return missing.empty() && extra.empty();
  }
  void DescribeTo(std::ostream* out) const { *out << "is on the interfaces " << joined(names); }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "is not on exactly the interfaces " << joined(names);
  }

 private:
  static std::vector<std::string> without(std::vector<std::string> some,
                                          std::vector<std::string> const& others) {
    std::erase_if(some, [&](std::string const& name) {
      return std::find(others.begin(), others.end(), name) != others.end();
    });
    return some;
  }
};

struct FailsWithMatcher {
  using is_gtest_matcher = void;

  testing::Matcher<std::string> text;
  std::string operation;  // empty: any
  std::string rule;       // empty: any

  bool MatchAndExplain(PolicyMap::PolicyFailure const& failure, std::ostream* out) const {
    std::ostream nowhere(nullptr);
    std::ostream& explained = out == nullptr ? nowhere : *out;
    std::string const error = failure.error().stdString();
    if (!failure) {
      explained << "there is no failure";
      return false;
    }
    if (!text.Matches(error)) {
      explained << "the text is \"" << error << '"';
      return false;
    }
    if (!operation.empty() && failure.operation().stdString() != operation) {
      explained << "the operation is " << failure.operation();
      return false;
    }
    if (!rule.empty() && !failure.rule()) {
      explained << "it names no rule";
      return false;
    }
    if (!rule.empty() && nameInList(failure.rule()) != rule) {
      explained << "the rule is \"" << nameInList(failure.rule()) << '"';
      return false;
    }
    return true;
  }
  void DescribeTo(std::ostream* out) const {
    *out << "has failed" << (operation.empty() ? "" : " in " + operation)
         << (rule.empty() ? "" : " of rule " + rule) << " with a text that ";
    text.DescribeTo(out);
  }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "not: ";
    DescribeTo(out);
  }
};

struct NoFailureMatcher {
  using is_gtest_matcher = void;

  // The value says it all.
  bool MatchAndExplain(PolicyMap::PolicyFailure const& failure, std::ostream* /*out*/) const {
    return !failure;
  }
  void DescribeTo(std::ostream* out) const { *out << "is no failure"; }
  void DescribeNegationTo(std::ostream* out) const { *out << "is a failure"; }
};

struct AllProgrammedMatcher {
  using is_gtest_matcher = void;

  bool MatchAndExplain(Explanations const& explanations, std::ostream* out) const {
    std::vector<std::string> const lines = explanations.notProgrammed();
    if (out != nullptr && explanations.empty()) {
      *out << "nothing is attached";
    }
    for (std::size_t i = 0; out != nullptr && i != lines.size(); ++i) {
      *out << (i == 0 ? "" : "\n") << lines[i];
    }
    return lines.empty() && !explanations.empty();
  }
  void DescribeTo(std::ostream* out) const { *out << "everything is programmed as configured"; }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "something is not programmed as configured";
  }
};

struct CallsMatcher {
  using is_gtest_matcher = void;

  std::vector<std::string> lines;

  bool MatchAndExplain(Journal const& journal, std::ostream* out) const {
    std::ostream nowhere(nullptr);
    std::vector<std::string> actual;
    for (JournalEntry const& entry : journal) {
      if (entry.kind == JournalEntry::Kind::call) {
        actual.push_back(entry.describe());
      }
    }
    // An expected line may leave out words at the end.
    return sameLines(lines, actual, "call", out == nullptr ? &nowhere : out,
                     [&](std::string const& wanted, std::size_t i) {
                       return actual[i] == wanted || actual[i].starts_with(wanted + " ");
                     });
  }
  void DescribeTo(std::ostream* out) const { *out << "has the calls " << joined(lines); }
  void DescribeNegationTo(std::ostream* out) const {
    *out << "does not have the calls " << joined(lines);
  }
};

}  // namespace matchers

// A record of a policy that is created, with all changes committed.
inline matchers::ProgrammedMatcher Programmed() {
  return {};
}

// A rule's value of an action by its kind, e.g. ActionValue(1, 7) or ActionValue(1, Gt(5)).
inline matchers::RuleValueMatcher ActionValue(std::size_t kind,
                                              testing::Matcher<std::uint64_t> value) {
  return {matchers::RuleValueMatcher::Property::action, kind, std::move(value)};
}
// Action1(7) and so on.
#define POLICYMAPTEST_ROW(kind)                                                           \
  inline matchers::RuleValueMatcher Action##kind(testing::Matcher<std::uint64_t> value) { \
    return ActionValue(kind, std::move(value));                                           \
  }
POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW

// A rule's number of sub-rules.
inline matchers::RuleValueMatcher SubRules(testing::Matcher<std::uint64_t> count) {
  return {matchers::RuleValueMatcher::Property::subRules, 0, std::move(count)};
}

// A record with a rule of this name (see Record::rule()), this match as policy text, and these
// values.
template <class... Values>
matchers::HasRuleMatcher HasRule(std::string name, std::string match, Values... values) {
  matchers::needRuleName(name);
  return {std::move(name), std::move(match), {std::move(values)...}};
}
inline matchers::HasRuleMatcher HasRule(std::string name) {
  matchers::needRuleName(name);
  return {std::move(name), {}, {}};
}
template <class... Values>
matchers::HasRuleMatcher HasRule(std::string name, matchers::RuleValueMatcher first,
                                 Values... values) {
  matchers::needRuleName(name);
  return {std::move(name), {}, {std::move(first), std::move(values)...}};
}

// A record with exactly these rules in this order, each as "LIST NUMBER MATCH", or with the class
// before it.
template <class... Lines>
matchers::RulesAreMatcher RulesAre(Lines... lines) {
  return {{std::string(std::move(lines))...}};
}

// A record on exactly these interfaces. Throws Kor::RangeException for a name that none can have.
template <class... Names>
matchers::OnInterfacesMatcher OnInterfaces(Names... names) {
  return {{Vorel::IntfId(Kor::String(std::string(std::move(names)))).name().stdString()...}};
}

// A failure with this text; with an operation and a rule ("LIST NUMBER") only of that.
inline matchers::FailsWithMatcher FailsWith(testing::Matcher<std::string> text,
                                            std::string operation = {}, std::string rule = {}) {
  if (!operation.empty()) {
    needOperation(operation);
  }
  if (!rule.empty()) {
    matchers::needRuleName(rule);
  }
  return {std::move(text), std::move(operation), std::move(rule)};
}

// No failure: EXPECT_THAT(lab.failure("edge"), NoFailure()).
inline matchers::NoFailureMatcher NoFailure() {
  return {};
}

// Explanations of policies that are all programmed, at all of their interfaces; at least one.
inline matchers::AllProgrammedMatcher AllProgrammed() {
  return {};
}

// A journal whose calls of the helper are exactly these. Each is a line of
// JournalEntry::describe(), of which words at the end may be left out: "addRule edge/input ipv4 web
// web 10". Other entries do not count.
template <class... Lines>
matchers::CallsMatcher Calls(Lines... lines) {
  matchers::CallsMatcher matcher{{std::string(std::move(lines))...}};
  for (std::string const& line : matcher.lines) {
    needOperation(std::string_view(line).substr(0, line.find(' ')));
  }
  return matcher;
}

// NOLINTEND(readability-identifier-naming)

}  // namespace PolicyMapTestKit
