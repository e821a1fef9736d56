// SPDX-License-Identifier: Apache-2.0
#pragma once

// What two rules take together: field by field, from the table of fields that also gives a rule its
// hash, its text form and its attributes by name. How a field meets goes by its type (see
// FieldMeeting.h), except that a rule permits where both permit, and that ports have exact ranges
// beside the rule. A field that says nothing of this does not compile.

#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "PolicyMap/FieldMeeting.h"
#include "PolicyMapExport.h"

#include <compare>
#include <string_view>
#include <variant>

namespace PolicyMap {

// A rule whose ports may be more than one PortMatch can say. Then the rule's own port match is the
// smallest range around them, and these are the ranges, ascending and apart from each other.
template <class Rule>
struct ExactRule {
  Rule rule;
  PortRanges srcPorts = {};  // empty: as the rule says
  PortRanges dstPorts = {};

  friend auto operator<=>(ExactRule const&, ExactRule const&) = default;
};

// Nothing is taken by both.
struct Disjoint {};
// Both take something, but no rule can say what.
struct Inexpressible {
  std::string_view field;
};

template <class Rule>
using Intersection = std::variant<Disjoint, Inexpressible, ExactRule<Rule>>;

// Disjoint wherever one field is, whatever the others are.
POLICYMAP_API Intersection<Acl::IpRuleConfig> intersect(ExactRule<Acl::IpRuleConfig> const& a,
                                                        ExactRule<Acl::IpRuleConfig> const& b);
POLICYMAP_API Intersection<Acl::Ip6RuleConfig> intersect(ExactRule<Acl::Ip6RuleConfig> const& a,
                                                         ExactRule<Acl::Ip6RuleConfig> const& b);
POLICYMAP_API Intersection<Acl::MacRuleConfig> intersect(ExactRule<Acl::MacRuleConfig> const& a,
                                                         ExactRule<Acl::MacRuleConfig> const& b);

}  // namespace PolicyMap
