// SPDX-License-Identifier: Apache-2.0
#pragma once

// Subject: one policy, direction and match option of a lab, with what was recorded and what is
// configured.

#include "packets/Export.h"
#include "packets/configuration/ConfigurationSide.h"
#include "packets/configuration/ConfiguredPolicy.h"
#include "packets/hardware/RecordedSide.h"
#include "testkit/Lab.h"

#include <PolicyMap/Explanation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace PolicyMapPackets {

// Which policies are asked about; what is empty is not asked for.
struct Selection {
  std::string policyMap = {};
  std::string interface = {};
  std::string direction = {};
  std::optional<PolicyMap::ClassMapMatchOption> option = {};
};

struct POLICYMAPPACKETS_API Subject {
  PolicyMap::PolicyMapSmKey policy;
  PolicyMap::ClassMapMatchOption option{};
  // In the order of programming; empty if nothing is programmed.
  std::vector<PolicyMapTestKit::RuleRecord> recorded;
  ConfiguredPolicy configured;
  // Why packets need not be treated as configured: the policy is not programmed, or not at the
  // interface that is asked about. Empty: they must be.
  std::string obstacle;

  // "edge input ipv4".
  [[nodiscard]] std::string name() const;
  // Whether there is any rule on either side.
  [[nodiscard]] bool hasRules() const { return !recorded.empty() || configured.hasRules(); }
};

// By name, direction and option. Throws LookupError if the selection names a policy that is not
// attached, and Kor::RangeException if it names no interface.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Subject> subjectsOf(PolicyMapTestKit::Lab const& lab,
                                                                   Selection const& selection = {});

// A rule that decides a packet.
struct POLICYMAPPACKETS_API DecidingRule {
  std::string className;
  std::string list;  // empty for a rule of the class-map itself
  std::uint32_t seqno = 0;
  std::string match;

  bool operator==(DecidingRule const&) const = default;
  // "A 10", or "10" without a list.
  [[nodiscard]] std::string name() const;
};
[[nodiscard]] POLICYMAPPACKETS_API DecidingRule
decidingRule(PolicyMapTestKit::RuleRecord const& rule);
[[nodiscard]] POLICYMAPPACKETS_API DecidingRule decidingRule(ConfiguredRule const& rule);

// What is asked about the packets of a subject.
enum class Said : std::uint8_t {
  byRecords,
  byConfiguration,
};

// One side of a subject for the packets of one slice. The subject must outlive it.
class POLICYMAPPACKETS_API SubjectSide {
 public:
  SubjectSide(Subject const& subject, Said said, Slice const& slice, DenyReading deny,
              Treatments& treatments);

  [[nodiscard]] Side const& side() const;
  // A rule by its number in a line of the side; none for noRule.
  [[nodiscard]] std::optional<DecidingRule> rule(std::uint32_t number) const;

 private:
  Subject const* subject_;
  std::optional<RecordedSide> recorded_;  // one of the two
  std::optional<ConfigurationSide> configured_;
};

}  // namespace PolicyMapPackets
