// SPDX-License-Identifier: Apache-2.0
#include "lab/Records.h"

#include <PolicyMap/ClassMapSm.h>
#include <PolicyMap/PerOption.h>
#include <PolicyMap/PolicyMapSm.h>

#include <algorithm>
#include <sstream>
#include <unordered_set>

namespace lab {

namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::SubRuleData;
using PolicyMapTest::AclPolicyData;

struct RuleKeyHash {
  std::size_t operator()(AclRuleKey const& key) const { return key.hash(); }
};

ConfiguredRule matchOf(AclPolicyData const& data, AclRuleKey const& key) {
  auto const mac = [&] { return ConfiguredRule(data.ruleMatchMac(key)); };
  return PolicyMap::forOption(
      key.matchOption(), [&] { return ConfiguredRule(data.ruleMatch(key)); },
      [&] { return ConfiguredRule(data.ruleMatch6(key)); }, mac, mac);
}

RuleRecord readRule(AclPolicyData const& data, AclRuleKey const& key) {
  RuleRecord rule{key, matchOf(data, key), {}, {}};
#define POLICYMAPTEST_ROW(kind) rule.actions[(kind)-1] = data.ruleAction##kind(key);
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
  if (auto const subRules = data.subRulesForKey(key)) {
    rule.subRules.reserve(subRules->subRules());
    for (auto const& entry : subRules->subRuleIteratorConst()) {
      rule.subRules.push_back(entry.key());
    }
    std::sort(rule.subRules.begin(), rule.subRules.end());
  }
  return rule;
}

// The keys of the recorded rules. Each key has one match.
std::vector<AclRuleKey> keysOf(AclPolicyData const& data) {
  std::vector<AclRuleKey> keys;
  auto const add = [&keys](auto matches) {
    for (auto const& entry : matches) {
      keys.push_back(entry.key());
    }
  };
  add(data.ruleMatchIteratorConst());
  add(data.ruleMatch6IteratorConst());
  add(data.ruleMatchMacIteratorConst());
  return keys;
}

// The keys in the order of the machines' rules. Unknown keys come last, in key order.
std::vector<AclRuleKey> keysInOrder(Session const& session, AclPolicyData const& data) {
  std::vector<AclRuleKey> all = keysOf(data);
  std::unordered_set<AclRuleKey, RuleKeyHash> left(all.begin(), all.end());
  std::vector<AclRuleKey> ordered;
  ordered.reserve(all.size());
  ClassMapMatchOption const option = data.key().option();
  if (auto const policy = session.machine()->policyMapSm(data.key().policyKey())) {
    for (auto const& classMap : policy->classesInOrder()) {
      classMap->rules(option)->forEach([&](auto const& rule) {
        AclRuleKey const key(classMap->name(), rule.aclName, rule.seqno, option);
        if (left.erase(key) != 0) {
          ordered.push_back(key);
        }
        return true;
      });
    }
  }
  std::size_t const known = ordered.size();
  ordered.insert(ordered.end(), left.begin(), left.end());
  std::sort(ordered.begin() + static_cast<std::ptrdiff_t>(known), ordered.end());
  return ordered;
}

PolicyRecord readRecord(Session const& session, AclPolicyData const& data, WithRules withRules) {
  PolicyRecord record;
  record.policy = data.key().policyKey().first().stdString();
  record.direction = data.key().policyKey().second().stdString();
  record.option = data.key().option();
  record.created = data.created();
  record.dirty = data.dirty();
  record.createCount = data.createCount();
  record.commitCount = data.commitCount();
  record.beginUpdateActionCount = data.beginUpdateActionCount();
  record.endUpdateActionCount = data.endUpdateActionCount();
  for (auto const& entry : data.intfIteratorConst()) {
    record.interfaces.push_back(entry.key());
  }
  std::sort(record.interfaces.begin(), record.interfaces.end());
  record.ruleCount = std::uint64_t{data.ruleMatchs()} + data.ruleMatch6s() + data.ruleMatchMacs();
  for (auto const& entry : data.subRulesForKeyIteratorConst()) {
    record.subRuleCount += entry.value()->subRules();
  }
  if (withRules == WithRules::yes) {
    record.rules.reserve(record.ruleCount);
    for (AclRuleKey const& key : keysInOrder(session, data)) {
      record.rules.push_back(readRule(data, key));
    }
  }
  return record;
}

void appendPorts(std::string& text, char const* side, std::uint16_t low, std::uint16_t high,
                 bool rangeChecker) {
  if (low == 0 && high == SubRuleData::highestPort) {
    return;
  }
  text += text.empty() ? "" : ", ";
  text += side + std::to_string(low);
  if (low != high) {
    text += "-" + std::to_string(high);
  }
  text += rangeChecker ? " (range checker)" : "";
}

}  // namespace

void forEachRecord(Session const& session, WithRules withRules,
                   std::function<void(PolicyRecord const&)> const& visit) {
  std::vector<Kor::Ptr<AclPolicyData>> records;
  for (auto const& entry : session.helper()->testDataIterator()) {
    records.push_back(entry.value());
  }
  std::sort(records.begin(), records.end(),
            [](auto const& a, auto const& b) { return a->key() < b->key(); });
  for (auto const& record : records) {
    visit(readRecord(session, *record, withRules));
  }
}

std::vector<PolicyRecord> readRecords(Session const& session, WithRules withRules) {
  std::vector<PolicyRecord> records;
  forEachRecord(session, withRules, [&](PolicyRecord const& record) { records.push_back(record); });
  return records;
}

std::string describe(SubRuleData const& subRule) {
  std::string text;
  appendPorts(text, "src ", subRule.srcPortLow(), subRule.srcPortHigh(), subRule.srcPortRange());
  appendPorts(text, "dst ", subRule.dstPortLow(), subRule.dstPortHigh(), subRule.dstPortRange());
  return text.empty() ? "any ports" : text;
}

std::string toText(ClassMapMatchOption option) {
  std::ostringstream text;
  text << option;
  return text.str();
}

}  // namespace lab
