// SPDX-License-Identifier: Apache-2.0
#include "testkit/Difference.h"

#include "testkit/Printing.h"
#include "testkit/text/RuleConversion.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>

namespace PolicyMapTestKit {

namespace {

using PolicyMap::AclRuleKey;
using Kind = Change::Kind;

struct PointedKeyHash {
  std::size_t operator()(AclRuleKey const* key) const { return key->hash(); }
};
struct PointedKeyEqual {
  bool operator()(AclRuleKey const* a, AclRuleKey const* b) const { return *a == *b; }
};
using RulesByKey =
    std::unordered_map<AclRuleKey const*, RuleRecord const*, PointedKeyHash, PointedKeyEqual>;

RulesByKey rulesByKey(Record const& record) {
  RulesByKey rules;
  rules.reserve(record.rules.size());
  for (RuleRecord const& rule : record.rules) {
    rules.emplace(&rule.key, &rule);
  }
  return rules;
}

std::string classesInOrder(Record const& record) {
  std::unordered_set<std::string> seen;
  std::string text;
  for (RuleRecord const& rule : record.rules) {
    std::string const name = rule.key.className().stdString();
    if (seen.insert(name).second) {
      text += (text.empty() ? "" : ", ") + name;
    }
  }
  return text;
}

std::string textOf(std::vector<PolicyMap::SubRuleData> const& subRules) {
  std::string text;
  for (PolicyMap::SubRuleData const& subRule : subRules) {
    text += (text.empty() ? "" : " | ") + describe(subRule);
  }
  return text.empty() ? "none" : text;
}

// The counters of every record, and those that its rules follow from.
struct Counter {
  std::string_view name;
  std::uint32_t Record::*value;
};
constexpr std::array counters{Counter{"createCount", &Record::createCount},
                              Counter{"commitCount", &Record::commitCount},
                              Counter{"beginUpdateActionCount", &Record::beginUpdateActionCount},
                              Counter{"endUpdateActionCount", &Record::endUpdateActionCount}};

bool hasItsRules(Record const& record) {
  return record.rules.size() == record.ruleCount;
}

// Appends the changes of one record to a list.
class RecordComparison {
 public:
  RecordComparison(std::vector<Change>& changes, Record const& before, Record const& after)
      : changes_(changes),
        before_(before),
        after_(after),
        old_(rulesByKey(before)),
        now_(rulesByKey(after)) {}

  void run() {
    state();
    for (Counter const& counter : counters) {
      addNumber(counter.name, before_.*counter.value, after_.*counter.value);
    }
    if (!hasItsRules(before_) || !hasItsRules(after_)) {
      addNumber("ruleCount", before_.ruleCount, after_.ruleCount);
      addNumber("subRuleCount", before_.subRuleCount, after_.subRuleCount);
    }
    interfaces();
    if (before_.rules != after_.rules) {
      rules();
      order();
    }
  }

 private:
  Change& add(Kind kind) {
    return changes_.emplace_back(Change{.kind = kind,
                                        .policy = after_.policy,
                                        .direction = after_.direction,
                                        .option = after_.option});
  }
  Change& addRule(Kind kind, AclRuleKey const& key) {
    Change& change = add(kind);
    change.rule = key;
    return change;
  }
  static void setNumbers(Change& change, std::uint64_t before, std::uint64_t after) {
    change.before = std::to_string(before);
    change.after = std::to_string(after);
    change.numberBefore = before;
    change.numberAfter = after;
  }
  void addNumber(std::string_view name, std::uint64_t before, std::uint64_t after) {
    if (before != after) {
      Change& change = add(Kind::counterChanged);
      change.field = name;
      setNumbers(change, before, after);
    }
  }

  void state() {
    if (before_.created != after_.created) {
      add(after_.created ? Kind::created : Kind::removed);
    }
    if (before_.dirty != after_.dirty) {
      add(after_.dirty ? Kind::uncommitted : Kind::committed);
    }
  }

  void interfaces() {
    forEachMissing(before_, after_,
                   [this](std::string const& name) { add(Kind::intfAdded).after = name; });
    forEachMissing(after_, before_,
                   [this](std::string const& name) { add(Kind::intfRemoved).before = name; });
  }
  // The interfaces of `in` that `from` does not have.
  template <class Visit>
  static void forEachMissing(Record const& from, Record const& in, Visit const& visit) {
    for (Vorel::IntfId const intf : in.interfaces) {
      if (!std::binary_search(from.interfaces.begin(), from.interfaces.end(), intf)) {
        visit(intf.name().stdString());
      }
    }
  }

  void rules() {
    for (RuleRecord const& rule : before_.rules) {
      if (!now_.contains(&rule.key)) {
        addRule(Kind::ruleRemoved, rule.key).before = Text::describe(rule.match);
      }
    }
    for (RuleRecord const& rule : after_.rules) {
      auto const was = old_.find(&rule.key);
      if (was == old_.end()) {
        addRule(Kind::ruleAdded, rule.key).after = Text::describe(rule.match);
      } else {
        compare(*was->second, rule);
      }
    }
  }

  void compare(RuleRecord const& was, RuleRecord const& is) {
    if (was.match != is.match) {
      Change& change = addRule(Kind::matchChanged, is.key);
      change.before = Text::describe(was.match);
      change.after = Text::describe(is.match);
    }
    if (was.subRules != is.subRules) {
      Change& change = addRule(Kind::subRulesChanged, is.key);
      setNumbers(change, was.subRules.size(), is.subRules.size());
      change.before = textOf(was.subRules);
      change.after = textOf(is.subRules);
    }
    for (std::size_t i = 0; i != was.actions.size(); ++i) {
      if (was.actions[i] != is.actions[i]) {
        Change& change = addRule(Kind::actionChanged, is.key);
        change.field = PolicyMapTest::testActionNames[i];
        setNumbers(change, was.actions[i], is.actions[i]);
      }
    }
  }

  void order() {
    auto const isLeft = [this](RuleRecord const& rule) { return now_.contains(&rule.key); };
    auto at = before_.rules.begin();
    for (RuleRecord const& rule : after_.rules) {
      if (!old_.contains(&rule.key)) {
        continue;
      }
      at = std::find_if(at, before_.rules.end(), isLeft);
      if (at->key != rule.key) {
        Change& change = add(Kind::rulesReordered);
        change.before = classesInOrder(before_);
        change.after = classesInOrder(after_);
        return;
      }
      ++at;
    }
  }

  std::vector<Change>& changes_;
  Record const& before_;
  Record const& after_;
  RulesByKey old_;
  RulesByKey now_;
};

auto identityOf(Record const& record) {
  return std::tie(record.policy, record.direction, record.option);
}

// An empty record of the same policy.
Record nothingOf(Record const& record) {
  Record nothing;
  nothing.policy = record.policy;
  nothing.direction = record.direction;
  nothing.option = record.option;
  return nothing;
}

std::string ruleName(AclRuleKey const& rule) {
  std::string const name = "rule " + nameInList(rule);
  return rule.aclName() == rule.className() ? name
                                            : name + " of class " + rule.className().stdString();
}

// What changed, without the name of the policy.
std::string textOf(Change const& change) {
  std::string const step = change.before + " -> " + change.after;
  switch (change.kind) {
  case Kind::created: return "created";
  case Kind::removed: return "no longer created";
  case Kind::committed: return "committed";
  case Kind::uncommitted: return "not committed";
  case Kind::counterChanged: return change.field + " " + step;
  case Kind::intfAdded: return "interface " + change.after + " added";
  case Kind::intfRemoved: return "interface " + change.before + " removed";
  case Kind::ruleAdded: return ruleName(*change.rule) + " added: " + change.after;
  case Kind::ruleRemoved: return ruleName(*change.rule) + " removed: " + change.before;
  case Kind::matchChanged: return ruleName(*change.rule) + ": " + step;
  case Kind::subRulesChanged: return ruleName(*change.rule) + ": sub-rules " + step;
  case Kind::actionChanged: return ruleName(*change.rule) + ": " + change.field + " " + step;
  case Kind::rulesReordered: return "rules in another order, by class: " + change.after;
  }
  return {};
}

}  // namespace

std::string Change::describe() const {
  return policy + "/" + direction + " " + toText(option) + ": " + textOf(*this);
}

Difference difference(Record const& before, Record const& after) {
  std::vector<Change> changes;
  RecordComparison(changes, before, after).run();
  return Difference(std::move(changes));
}

Difference difference(Snapshot const& before, Snapshot const& after) {
  std::vector<Change> changes;
  auto const compare = [&changes](Record const& was, Record const& is) {
    if (was != is) {
      RecordComparison(changes, was, is).run();
    }
  };
  auto was = before.begin();
  auto is = after.begin();
  while (was != before.end() || is != after.end()) {
    bool const isNew =
        was == before.end() || (is != after.end() && identityOf(*is) < identityOf(*was));
    bool const isGone =
        is == after.end() || (was != before.end() && identityOf(*was) < identityOf(*is));
    if (isNew) {
      compare(nothingOf(*is), *is);
      ++is;
    } else if (isGone) {
      compare(*was, nothingOf(*was));
      ++was;
    } else {
      compare(*was++, *is++);
    }
  }
  return Difference(std::move(changes));
}

std::ostream& operator<<(std::ostream& out, Change const& change) {
  return out << change.describe();
}

std::ostream& operator<<(std::ostream& out, Difference const& difference) {
  if (difference.empty()) {
    return out << "no difference";
  }
  char const* separator = "";
  for (Change const& change : difference) {
    out << std::exchange(separator, "\n") << change;
  }
  return out;
}

}  // namespace PolicyMapTestKit
