// SPDX-License-Identifier: Apache-2.0
#pragma once

// Short names of what is programmed, as messages, the journal and look-ups use them.

#include "testkit/Export.h"

#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/PolicyMapSmKey.h>
#include <PolicyMap/SubRuleData.h>

#include <string>

namespace PolicyMapTestKit {

// "edge/input".
POLICYMAPTESTKIT_API std::string nameOf(PolicyMap::PolicyMapSmKey const& policy);

// "web 10": list and number; for a rule of the class-map itself its number.
POLICYMAPTESTKIT_API std::string nameInList(PolicyMap::AclRuleKey const& rule);

// The ports of a sub-rule: "src 1024-2047, dst 80", or "any ports" for all. A range that needs a
// range checker is followed by " (range checker)".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::SubRuleData const& subRule);

// "ipv4", "ipv6", "mac" or "mpls".
POLICYMAPTESTKIT_API std::string toText(PolicyMap::ClassMapMatchOption option);

}  // namespace PolicyMapTestKit
