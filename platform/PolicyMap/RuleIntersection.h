// SPDX-License-Identifier: Apache-2.0
#pragma once

// What two rules take together.

#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "PolicyMap/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace PolicyMap {

using PortRanges = std::vector<Acl::PortMatch::Range>;

// A rule whose ports may be more than one PortMatch can say. Then the rule's own port match is the
// smallest range around them, and these are the ranges, ascending and apart from each other.
template <class Rule>
struct ExactRule {
  Rule rule;
  PortRanges srcPorts = {};  // empty: as the rule says
  PortRanges dstPorts = {};

  bool operator==(ExactRule const&) const = default;
};

// Nothing is taken by both.
struct Disjoint {};
// Both take something, but no rule can say what.
struct Inexpressible {
  std::string field;
};

template <class Rule>
using Intersection = std::variant<Disjoint, Inexpressible, ExactRule<Rule>>;

// Permits where both permit.
POLICYMAP_API Intersection<Acl::IpRuleConfig> intersect(ExactRule<Acl::IpRuleConfig> const& a,
                                                        ExactRule<Acl::IpRuleConfig> const& b);
POLICYMAP_API Intersection<Acl::Ip6RuleConfig> intersect(ExactRule<Acl::Ip6RuleConfig> const& a,
                                                         ExactRule<Acl::Ip6RuleConfig> const& b);
POLICYMAP_API Intersection<Acl::MacRuleConfig> intersect(ExactRule<Acl::MacRuleConfig> const& a,
                                                         ExactRule<Acl::MacRuleConfig> const& b);

}  // namespace PolicyMap
