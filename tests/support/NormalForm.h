// SPDX-License-Identifier: Apache-2.0
#pragma once

// normalForm(helper): what stands in a recording helper, in a form that two runs can be compared
// by. Left out is what tells of the way there: counters, and records that were given up. A record
// that is not created counts only when it is not as empty as it must be.

#include "helper/AclHelper.h"

#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <string>

namespace TestSupport {

struct NormalRule {
  std::string match;  // as it prints
  std::set<PolicyMap::SubRuleData> subRules;
  std::array<std::uint32_t, 3> actions{};  // of kinds 1, 2 and 3

  bool operator==(NormalRule const&) const = default;
};

struct NormalRecord {
  bool created = false;
  bool dirty = false;  // of a created record
  std::map<PolicyMap::AclRuleKey, NormalRule> rules;
  std::set<Vorel::IntfId> intfs;

  bool operator==(NormalRecord const&) const = default;
};

using NormalForm = std::map<PolicyMapTest::AclPolicyType, NormalRecord>;

[[nodiscard]] NormalForm normalForm(PolicyMapTest::AclHelper const& helper);
[[nodiscard]] NormalRecord normalRecord(PolicyMapTest::AclPolicyData const& data);

// Several lines, for messages.
[[nodiscard]] std::string describe(NormalForm const& form);

// How GoogleTest prints one.
inline void PrintTo(NormalRecord const& record, std::ostream* out) {
  *out << describe({{PolicyMapTest::AclPolicyType(), record}});
}

}  // namespace TestSupport
