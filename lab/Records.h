// SPDX-License-Identifier: Apache-2.0
#pragma once

// The helper's records as values, in a readable order that is the same in every run.

#include "lab/RuleConversion.h"
#include "lab/Session.h"

#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/SubRuleData.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace lab {

struct RuleRecord {
  PolicyMap::AclRuleKey key;
  ConfiguredRule match;
  // By kind.
  std::array<std::uint32_t, PolicyMapTest::testActionKinds> actions{};
  // Ordered by their ports.
  std::vector<PolicyMap::SubRuleData> subRules;

  bool operator==(RuleRecord const&) const = default;
};

// One policy for one match option.
struct PolicyRecord {
  std::string policy;
  std::string direction;
  PolicyMap::ClassMapMatchOption option{};
  bool created = false;
  bool dirty = false;
  std::uint32_t createCount = 0;
  std::uint32_t commitCount = 0;
  std::uint32_t beginUpdateActionCount = 0;
  std::uint32_t endUpdateActionCount = 0;
  // In ascending order.
  std::vector<Vorel::IntfId> interfaces;
  std::uint64_t ruleCount = 0;
  std::uint64_t subRuleCount = 0;
  // By class in the order of the policy-map, and within a class in the order of the machines. Empty
  // if left out. The order of programming is not recorded.
  std::vector<RuleRecord> rules;

  bool operator==(PolicyRecord const&) const = default;
};

enum class WithRules : std::uint8_t { no, yes };

// Calls `visit` for each record, ordered by policy-map, direction and option. Holds one record at a
// time.
void forEachRecord(Session const& session, WithRules withRules,
                   std::function<void(PolicyRecord const&)> const& visit);

// All records at once.
std::vector<PolicyRecord> readRecords(Session const& session, WithRules withRules = WithRules::yes);

// The ports of a sub-rule: "src 1024-2047, dst 80", or "any ports" for all. A range that needs a
// range checker is followed by " (range checker)".
std::string describe(PolicyMap::SubRuleData const& subRule);

// "ipv4", "ipv6", "mac" or "mpls".
std::string toText(PolicyMap::ClassMapMatchOption option);

}  // namespace lab
