// SPDX-License-Identifier: Apache-2.0
#include "packets/PacketChange.h"

#include "testkit/Printing.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace PolicyMapPackets {

namespace {

using RuleName = std::tuple<std::string, std::string, std::uint32_t>;

// What is compared of the rules of one time.
struct RuleContents {
  std::vector<RuleName> order;
  std::map<RuleName, std::string> contents;

  void add(DecidingRule const& rule, std::string const& rest) {
    RuleName name{rule.className, rule.list, rule.seqno};
    contents.emplace(name, rule.match + rest);
    order.push_back(std::move(name));
  }
};

std::string actionsOf(Treatment const& treatment) {
  return "\n" + actionsText(treatment);
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
void addConfigured(MatchTree const& tree, std::string const& actions, RuleContents& rules) {
  for (ConfiguredRule const& rule : tree.rules) {
    rules.add(decidingRule(rule), actions);
  }
  for (MatchTree const& part : tree.parts) {
    addConfigured(part, actions, rules);
  }
}

RuleContents rulesOf(Subject const& subject, Said said) {
  RuleContents rules;
  if (said == Said::byConfiguration) {
    for (ConfiguredClass const& each : subject.configured.classes) {
      addConfigured(each.match, actionsOf(each.treatment), rules);
    }
    return rules;
  }
  for (PolicyMapTestKit::RuleRecord const& rule : subject.recorded) {
    std::string rest = actionsOf({rule.key.className().stdString(), rule.actions});
    for (PolicyMap::SubRuleData const& subRule : rule.subRules) {
      rest += "\n" + PolicyMapTestKit::describe(subRule);
    }
    rules.add(decidingRule(rule), rest);
  }
  return rules;
}

RuleChanges ruleChanges(RuleContents const& before, RuleContents const& after) {
  RuleChanges changes;
  for (auto const& [name, content] : before.contents) {
    auto const found = after.contents.find(name);
    if (found == after.contents.end()) {
      ++changes.removed;
    } else if (found->second != content) {
      ++changes.changed;
    }
  }
  for (auto const& [name, content] : after.contents) {
    changes.added += before.contents.contains(name) ? 0 : 1;
  }
  changes.reordered = !changes.any() && before.order != after.order;
  return changes;
}

class ComparingTimes {
 public:
  ComparingTimes(Said said, SearchOptions const& options) : said_(said), options_(options) {}

  PacketChange compare(Subject const& before, Subject const& after) const {
    PacketChange change;
    change.subject = before.name();
    if (before.name() != after.name()) {
      change.subject += " -> " + after.name();
    }
    change.hasExceptions = !options_.except.empty();
    change.reason = obstacle(before, after);
    change.rules = ruleChanges(rulesOf(before, said_), rulesOf(after, said_));
    if (!change.reason.empty()) {
      change.verdict = Verdict::notProgrammed;
      return change;
    }
    static_cast<Differences&>(change) = differencesOf({before, said_}, {after, said_}, options_);
    change.verdict = change.verdictOfSearch();
    return change;
  }

 private:
  [[nodiscard]] std::string obstacle(Subject const& before, Subject const& after) const {
    if (said_ == Said::byConfiguration || (before.obstacle.empty() && after.obstacle.empty())) {
      return {};
    }
    return before.obstacle.empty() ? "after: " + after.obstacle : "before: " + before.obstacle;
  }

  Said said_;
  SearchOptions const& options_;
};

// The subjects with the same key, one of which may be missing.
struct Times {
  Subject const* before = nullptr;
  Subject const* after = nullptr;
};

Subject nothingLike(Subject const& other) {
  Subject subject;
  subject.policy = other.policy;
  subject.option = other.option;
  return subject;
}

}  // namespace

std::vector<PacketChange> packetChanges(std::vector<Subject> const& before,
                                        std::vector<Subject> const& after, Said said,
                                        SearchOptions const& options) {
  bool const isAtInterface = !options.selection.interface.empty();
  std::map<std::tuple<Kor::Name, Kor::Name, PolicyMap::ClassMapMatchOption>, Times> all;
  auto const timesOf = [&](Subject const& subject) -> Times& {
    Kor::Name const name = isAtInterface ? Kor::Name() : subject.policy.first();
    return all[{name, subject.policy.second(), subject.option}];
  };
  for (Subject const& subject : before) {
    timesOf(subject).before = &subject;
  }
  for (Subject const& subject : after) {
    timesOf(subject).after = &subject;
  }
  ComparingTimes const comparing(said, options);
  std::vector<PacketChange> found;
  for (auto const& [key, times] : all) {
    bool const hasRules = (times.before != nullptr && times.before->hasRules()) ||
                          (times.after != nullptr && times.after->hasRules());
    if (!hasRules) {
      continue;
    }
    Subject const nothing = nothingLike(times.before != nullptr ? *times.before : *times.after);
    found.push_back(comparing.compare(times.before != nullptr ? *times.before : nothing,
                                      times.after != nullptr ? *times.after : nothing));
  }
  return found;
}

}  // namespace PolicyMapPackets
