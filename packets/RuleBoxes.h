// SPDX-License-Identifier: Apache-2.0
#pragma once

// The packets that a rule matches, whether it permits or denies them, as boxes of a space.

#include "packets/Box.h"

#include <Acl/OptionalRule.h>
#include <PolicyMap/SubRuleData.h>

#include <vector>

namespace PolicyMapPackets {

// As the rule is configured. Only packets that have a field match a condition on it: ports and
// flags are in no fragment but the first, and in no other protocol. The boxes may overlap.
POLICYMAPPACKETS_API std::vector<Box> boxesOf(Acl::AnyRule const& rule, Space const& space);
// As it is programmed with a sub-rule, whose bounds count in place of the ports of the rule. A rule
// that does not ask for ports, with a sub-rule of all ports, also matches packets without ports.
POLICYMAPPACKETS_API std::vector<Box> boxesOf(Acl::AnyRule const& rule,
                                              PolicyMap::SubRuleData const& subRule,
                                              Space const& space);

}  // namespace PolicyMapPackets
