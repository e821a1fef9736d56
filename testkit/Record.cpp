// SPDX-License-Identifier: Apache-2.0
#include "testkit/Record.h"

#include "testkit/Printing.h"
#include "testkit/text/RuleConversion.h"

#include <algorithm>
#include <ostream>

namespace PolicyMapTestKit {

namespace {

std::string fullName(PolicyMap::AclRuleKey const& key) {
  return key.className().stdString() + " " + nameInList(key);
}

void describeCount(std::ostream& out, std::string_view name, std::uint64_t count,
                   std::uint64_t usual) {
  if (count != usual) {
    out << ", " << name << ' ' << count;
  }
}

}  // namespace

std::uint32_t RuleRecord::action(std::size_t kind) const {
  if (kind == 0 || kind > actions.size()) {
    throw LookupError(
        "action", "action" + std::to_string(kind),
        {PolicyMapTest::testActionNames.begin(), PolicyMapTest::testActionNames.end()});
  }
  return actions[kind - 1];
}

std::string RuleRecord::matchText() const {
  return Text::describe(match);
}

std::string RuleRecord::describe() const {
  std::string text = nameInList(key) + " " + Text::describe(match);
  for (std::size_t i = 0; i != actions.size(); ++i) {
    if (actions[i] != 0) {
      text +=
          ", " + std::string(PolicyMapTest::testActionNames[i]) + " " + std::to_string(actions[i]);
    }
  }
  if (subRules.size() != 1) {
    text += ", " + std::to_string(subRules.size()) + " sub-rules";
  } else if (subRules.front().needsRangeChecker()) {
    text += ", range checker";
  }
  return text;
}

std::vector<RuleRecord const*> Record::rulesNamed(
    std::string_view name, std::string (*nameOfRule)(PolicyMap::AclRuleKey const&)) const {
  std::vector<RuleRecord const*> found;
  for (RuleRecord const& rule : rules) {
    if (nameOfRule(rule.key) == name) {
      found.push_back(&rule);
    }
  }
  return found;
}

std::string Record::name() const {
  return policy + "/" + direction + " " + toText(option);
}

RuleRecord const& Record::rule(std::string_view name) const {
  std::vector<RuleRecord const*> found = rulesNamed(name, &nameInList);
  if (found.empty()) {
    found = rulesNamed(name, &fullName);
  }
  if (found.size() == 1) {
    return *found.front();
  }
  std::vector<std::string> known;
  for (RuleRecord const& rule : rules) {
    known.push_back(found.empty() ? nameInList(rule.key) : fullName(rule.key));
  }
  throw LookupError((found.empty() ? "rule of " : "single rule of ") + this->name(), name, known);
}

RuleRecord const& Record::rule(PolicyMap::AclRuleKey const& key) const {
  for (RuleRecord const& rule : rules) {
    if (rule.key == key) {
      return rule;
    }
  }
  std::vector<std::string> known;
  for (RuleRecord const& rule : rules) {
    known.push_back(fullName(rule.key));
  }
  throw LookupError("rule of " + name(), fullName(key), known);
}

std::ostream& operator<<(std::ostream& out, RuleRecord const& rule) {
  return out << rule.describe();
}

std::ostream& operator<<(std::ostream& out, Record const& record) {
  out << record.name() << (record.created ? "" : ", not created")
      << (record.dirty ? ", not committed" : "") << ", on";
  for (Vorel::IntfId const intf : record.interfaces) {
    out << ' ' << intf.name();
  }
  out << (record.interfaces.empty() ? " no interface" : "");
  describeCount(out, "createCount", record.createCount, 1);
  describeCount(out, "commitCount", record.commitCount, 1);
  describeCount(out, "beginUpdateActionCount", record.beginUpdateActionCount, 0);
  describeCount(out, "endUpdateActionCount", record.endUpdateActionCount, 0);
  if (record.rules.empty()) {
    describeCount(out, "ruleCount", record.ruleCount, 0);
    describeCount(out, "subRuleCount", record.subRuleCount, 0);
  }
  for (RuleRecord const& rule : record) {
    out << "\n  " << rule.key.className() << ": " << rule;
  }
  return out;
}

}  // namespace PolicyMapTestKit
