// SPDX-License-Identifier: Apache-2.0
#include "packets/hardware/CommittedRules.h"

#include <algorithm>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Journal;
using PolicyMapTestKit::JournalEntry;
using PolicyMapTestKit::Lab;
using PolicyMapTestKit::Record;
using PolicyMapTestKit::RuleRecord;
using Rules = std::vector<RuleRecord>;

PolicyMapTest::AclPolicyType keyOf(Record const& record) {
  return {PolicyMap::PolicyMapSmKey(Kor::Name(record.policy), Kor::Name(record.direction)),
          record.option};
}

void dropFalseSubRules(PolicyMapTest::AclPolicyData const& data, RuleRecord& rule) {
  auto const flags = data.subRulesForKey(rule.key);
  std::erase_if(rule.subRules, [&](PolicyMap::SubRuleData const& subRule) {
    return !flags || !flags->subRule(subRule);
  });
}

// What the calls of the helper for one policy and option have done.
class Replay {
 public:
  void take(JournalEntry const& entry) {
    if (entry.operation == "createPolicy" || entry.operation == "recreatePolicy") {
      begun_ = true;
      added_.clear();
    } else if (entry.operation == "deletePolicy") {
      begun_ = true;
      added_.clear();
      committed_.reset();
    } else if (entry.operation == "addRule" && entry.error.empty()) {
      add(entry);
    } else if (entry.operation == "updateAction" && entry.error.empty()) {
      update(entry, added_);
      if (committed_) {
        update(entry, *committed_);
      }
    } else if (entry.operation == "commitPolicy" && entry.error.empty() && begun_) {
      committed_ = added_;
    }
  }
  // None: nothing was committed, or the journal does not know.
  [[nodiscard]] std::optional<Rules> committed() const { return committed_; }

 private:
  static RuleRecord* find(Rules& rules, PolicyMap::AclRuleKey const& key) {
    auto const found = std::find_if(rules.rbegin(), rules.rend(),
                                    [&](RuleRecord const& rule) { return rule.key == key; });
    return found == rules.rend() ? nullptr : &*found;
  }

  void add(JournalEntry const& entry) {
    // The sub-rules of a rule are added one after the other.
    bool const isLast = !added_.empty() && added_.back().key == *entry.rule;
    if (!isLast) {
      added_.push_back(
          {*entry.rule, *entry.match, entry.actions.value_or(JournalEntry::Actions()), {}});
    }
    added_.back().subRules.push_back(entry.subRule);
  }
  static void update(JournalEntry const& entry, Rules& rules) {
    RuleRecord* const rule = find(rules, *entry.rule);
    if (rule != nullptr && entry.actions) {
      rule->actions = *entry.actions;
    }
  }

  bool begun_ = false;
  Rules added_;
  std::optional<Rules> committed_;
};

}  // namespace

std::optional<Rules> committedRules(Journal const& journal, Record const& record) {
  PolicyMap::PolicyMapSmKey const policy(Kor::Name(record.policy), Kor::Name(record.direction));
  Replay replay;
  for (JournalEntry const& entry : journal) {
    bool const isOurs = entry.kind == JournalEntry::Kind::call && entry.policy == policy &&
                        (!entry.option || entry.option == record.option) && !entry.threw;
    if (isOurs) {
      replay.take(entry);
    }
  }
  auto committed = replay.committed();
  if (!committed && journal.dropped() == 0) {
    committed.emplace();  // created and never committed
  }
  return committed;
}

std::optional<Rules> committedRules(Lab const& lab, Record const& record) {
  auto const data = lab.helper()->testData(keyOf(record));
  if (!record.created || !data) {
    return std::nullopt;
  }
  if (record.dirty) {
    return committedRules(lab.journal(), record);
  }
  Rules rules = record.rules;
  for (RuleRecord& rule : rules) {
    dropFalseSubRules(*data, rule);
  }
  return rules;
}

}  // namespace PolicyMapPackets
