// SPDX-License-Identifier: Apache-2.0
#include "packets/Recorded.h"

#include "packets/RuleBoxes.h"
#include "testkit/text/RuleConversion.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace PolicyMapPackets {

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyMapSmKey;
using PolicyMapTestKit::JournalEntry;
using PolicyMapTestKit::Lab;
using PolicyMapTestKit::Record;
using PolicyMapTestKit::RuleRecord;

std::optional<Record> recordOf(Lab const& lab, PolicyMapSmKey const& policy,
                               ClassMapMatchOption option) {
  for (Record const& record : lab.snapshot()) {
    if (record.policy == policy.first().view() && record.direction == policy.second().view() &&
        record.option == option) {
      return record;
    }
  }
  return std::nullopt;
}

bool isCreation(JournalEntry const& entry) {
  return entry.operation == "createPolicy" || entry.operation == "recreatePolicy";
}

// In the order in which they were first added since the policy was created.
std::vector<AclRuleKey> addedRules(Lab const& lab, PolicyMapSmKey const& policy,
                                   ClassMapMatchOption option) {
  std::vector<AclRuleKey> added;
  std::map<AclRuleKey, bool> known;
  for (JournalEntry const& entry : lab.journal()) {
    bool const hasFailed = entry.threw || !entry.error.empty();
    if (entry.kind != JournalEntry::Kind::call || entry.policy != policy || hasFailed) {
      continue;
    }
    if (isCreation(entry) && entry.option == option) {
      added.clear();
      known.clear();
    } else if (entry.operation == "addRule" && entry.rule && entry.rule->matchOption() == option &&
               !std::exchange(known[*entry.rule], true)) {
      added.push_back(*entry.rule);
    }
  }
  return added;
}

RuleRecord const* ruleIn(Record const& record, AclRuleKey const& key) {
  auto const found = std::find_if(record.begin(), record.end(),
                                  [&](RuleRecord const& rule) { return rule.key == key; });
  return found == record.end() ? nullptr : &*found;
}

std::string nameOf(AclRuleKey const& key) {
  std::string const list = key.aclName().stdString();
  return (list.empty() ? list : list + " ") + std::to_string(key.seqno());
}

Line lineOf(RuleRecord const& rule, bool permits) {
  return {{rule.key.className().stdString(), {rule.actions.begin(), rule.actions.end()}},
          nameOf(rule.key),
          PolicyMapTestKit::Text::describe(rule.match),
          permits};
}

bool permits(RuleRecord const& rule) {
  return std::visit([](auto const& some) { return some.permit(); }, rule.match);
}

}  // namespace

RecordedPolicy recordedPolicy(Lab const& lab, PolicyMapSmKey const& policy,
                              ClassMapMatchOption option) {
  std::optional<Record> const record = recordOf(lab, policy, option);
  RecordedPolicy known{policy, option, record && record->created, {}};
  if (!known.created) {
    known.unknown = "not programmed";
  } else if (record->dirty) {
    known.unknown = "rules were added that are not committed";
  } else if (lab.journal().dropped() != 0) {
    known.unknown = "the order of the rules is in entries that the journal has dropped";
  } else {
    std::vector<AclRuleKey> const added = addedRules(lab, policy, option);
    for (RuleRecord const& rule : *record) {
      if (std::find(added.begin(), added.end(), rule.key) == added.end()) {
        known.unknown = "rule " + nameOf(rule.key) + " was added by no call of the journal";
      }
    }
  }
  return known;
}

Classifier recorded(Lab const& lab, RecordedPolicy const& policy, Space const& space, Deny deny) {
  Classifier classifier(space);
  std::optional<Record> const record = recordOf(lab, policy.policy, policy.option);
  if (!record) {
    return classifier;
  }
  std::string className;
  for (AclRuleKey const& key : addedRules(lab, policy.policy, policy.option)) {
    RuleRecord const* const rule = ruleIn(*record, key);
    if (rule == nullptr) {
      continue;
    }
    bool const isDeny = !permits(*rule);
    // Where a deny is the end for a packet, it is a class of its own that takes the packet, and
    // does nothing with it.
    Line line = lineOf(*rule, !isDeny || deny != Deny::nextClass);
    if (isDeny && deny == Deny::stop) {
      line.treatment = {};
    }
    if (classifier.classes.empty() || key.className().view() != className || deny == Deny::stop) {
      className = key.className().stdString();
      classifier.classes.emplace_back();
    }
    for (PolicyMap::SubRuleData const& subRule : rule->subRules) {
      for (Box const& box : boxesOf(rule->match, subRule, space)) {
        classifier.classes.back().entries.push_back({box, classifier.lines.size(), line.permits});
      }
    }
    classifier.lines.push_back(std::move(line));
  }
  return classifier;
}

}  // namespace PolicyMapPackets
