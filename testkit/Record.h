// SPDX-License-Identifier: Apache-2.0
#pragma once

// Record: what is recorded of one policy for one match option, as a value.
//
//   Record const record = lab.record("edge");
//   record.rule("web 10").action(1);

#include "records/TestActionKinds.h"
#include "testkit/Export.h"
#include "testkit/Lookup.h"
#include "testkit/text/Statement.h"

#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/ClassMapMatchOption.h>
#include <PolicyMap/PolicyMapSmKey.h>
#include <PolicyMap/SubRuleData.h>
#include <Vorel/IntfId.h>

#include <array>
#include <cstdint>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapTestKit {

struct POLICYMAPTESTKIT_API RuleRecord {
  PolicyMap::AclRuleKey key;
  Text::ConfiguredRule match;
  // By kind.
  std::array<std::uint32_t, PolicyMapTest::testActionKinds> actions{};
  // Ordered by their ports.
  std::vector<PolicyMap::SubRuleData> subRules;

  bool operator==(RuleRecord const&) const = default;

  // The value of an action by its kind, 1 or more. Throws LookupError if there is no such kind.
  [[nodiscard]] std::uint32_t action(std::size_t kind) const;
  // The match as policy text: "permit tcp any any eq 80".
  [[nodiscard]] std::string matchText() const;
  // "web 10 permit tcp any any eq 80, action1 7, 2 sub-rules": list, number and match, then what is
  // not as usual: actions other than 0, sub-rules other than one without range checker.
  [[nodiscard]] std::string describe() const;
};

class POLICYMAPTESTKIT_API Record {
 public:
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
  // In the order in which they were programmed. Empty if left out.
  std::vector<RuleRecord> rules;

  bool operator==(Record const&) const = default;

  // "edge/input ipv4".
  [[nodiscard]] std::string name() const;

  [[nodiscard]] auto begin() const { return rules.begin(); }
  [[nodiscard]] auto end() const { return rules.end(); }
  // The rule named "LIST NUMBER", or "NUMBER" for a rule of the class-map itself; with several such
  // rules of different classes, "CLASS LIST NUMBER". Throws LookupError if there is none or more
  // than one.
  [[nodiscard]] RuleRecord const& rule(std::string_view name) const;
  [[nodiscard]] RuleRecord const& rule(PolicyMap::AclRuleKey const& key) const;

 private:
  [[nodiscard]] std::vector<RuleRecord const*> rulesNamed(
      std::string_view name, std::string (*nameOfRule)(PolicyMap::AclRuleKey const&)) const;
};

// The match as policy text, name and values; one line.
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, RuleRecord const& rule);
// A head line, and a line per rule. The head has the counters unless they are as after one creation
// and one commit.
POLICYMAPTESTKIT_API std::ostream& operator<<(std::ostream& out, Record const& record);

}  // namespace PolicyMapTestKit
