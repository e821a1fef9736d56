// SPDX-License-Identifier: Apache-2.0
#pragma once

// normalForm(helper): the content of a recording helper in a form that can be compared between two
// runs. It leaves out everything that depends on history: counters, and records of deleted
// policies. A record that is not created is included only if it is not as empty as it must be.

#include "helper/AclHelper.h"

#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <string>

namespace TestSupport {

struct NormalRule {
  std::string match;  // in text form
  std::set<PolicyMap::SubRuleData> subRules;
  std::array<std::uint32_t, 3> actions{};  // by kind, starting with kind 1

  bool operator==(NormalRule const&) const = default;
};

struct NormalRecord {
  bool created = false;
  bool dirty = false;  // only for a created record
  std::map<PolicyMap::AclRuleKey, NormalRule> rules;
  std::set<Vorel::IntfId> intfs;

  bool operator==(NormalRecord const&) const = default;
};

using NormalForm = std::map<PolicyMapTest::AclPolicyType, NormalRecord>;

[[nodiscard]] NormalForm normalForm(PolicyMapTest::AclHelper const& helper);
[[nodiscard]] NormalRecord normalRecord(PolicyMapTest::AclPolicyData const& data);

// Returns several lines, for failure messages.
[[nodiscard]] std::string describe(NormalForm const& form);

// Used by GoogleTest to print a record.
inline void PrintTo(NormalRecord const& record, std::ostream* out) {
  *out << describe({{PolicyMapTest::AclPolicyType(), record}});
}

}  // namespace TestSupport
