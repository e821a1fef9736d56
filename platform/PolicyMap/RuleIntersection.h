// SPDX-License-Identifier: Apache-2.0
#pragma once

// The intersection of two rules, field by field. The fields come from the table that also gives a
// rule its hash, its text form and its attributes by name. Each field is intersected by its type
// (see FieldMeeting.h), with two exceptions: the result permits if both rules permit, and ports
// have exact ranges beside the rule. A field of an unknown type does not compile.

#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "PolicyMap/FieldMeeting.h"
#include "PolicyMapExport.h"

#include <compare>
#include <string_view>
#include <variant>

namespace PolicyMap {

// A rule whose ports may exceed what one PortMatch can express. In that case the rule's own port
// match is the smallest enclosing range, and these are the exact ranges, ascending and disjoint.
template <class Rule>
struct ExactRule {
  Rule rule;
  PortRanges srcPorts = {};  // empty: as in `rule`
  PortRanges dstPorts = {};

  friend auto operator<=>(ExactRule const&, ExactRule const&) = default;
};

// No packet matches both rules.
struct Disjoint {};
// The intersection is not empty but cannot be expressed as one rule.
struct Inexpressible {
  std::string_view field;
};

template <class Rule>
using Intersection = std::variant<Disjoint, Inexpressible, ExactRule<Rule>>;

// Disjoint if any field is disjoint, whatever the other fields are.
POLICYMAP_API Intersection<Acl::IpRuleConfig> intersect(ExactRule<Acl::IpRuleConfig> const& a,
                                                        ExactRule<Acl::IpRuleConfig> const& b);
POLICYMAP_API Intersection<Acl::Ip6RuleConfig> intersect(ExactRule<Acl::Ip6RuleConfig> const& a,
                                                         ExactRule<Acl::Ip6RuleConfig> const& b);
POLICYMAP_API Intersection<Acl::MacRuleConfig> intersect(ExactRule<Acl::MacRuleConfig> const& a,
                                                         ExactRule<Acl::MacRuleConfig> const& b);

}  // namespace PolicyMap
