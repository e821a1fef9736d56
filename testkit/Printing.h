// SPDX-License-Identifier: Apache-2.0
#pragma once

// Short names of what is programmed, as messages, the journal and look-ups use them.

#include "records/AclPolicyType.h"
#include "testkit/Export.h"

#include <Kor/PtrInterface.h>
#include <PolicyMap/AclRuleKey.h>
#include <PolicyMap/AsyncOperationResult.h>
#include <PolicyMap/ClassMapMatch.h>
#include <PolicyMap/OptionIntf.h>
#include <PolicyMap/PolicyFailure.h>
#include <PolicyMap/PolicyMapSmKey.h>
#include <PolicyMap/ServicePolicyKey.h>
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

// "edge/input".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::PolicyMapSmKey const& policy);
// "edge/input ipv4".
POLICYMAPTESTKIT_API std::string describe(PolicyMapTest::AclPolicyType const& type);
// "web 10 of class web, ipv4".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::AclRuleKey const& rule);
// "commitPolicy: table full", "addRule: no room, at web 10 of class web, ipv4"; the error alone if
// the core refused the policy; "no failure".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::PolicyFailure const& failure);
// "Ethernet1 input".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::ServicePolicyKey const& place);
// "Ethernet1, ipv4".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::OptionIntf const& where);
// "success at 2 s", "table full at 2 s".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::AsyncOperationResult const& result);
// As policy text after `match`: "access-group web", "class-map inner", "permit tcp any any eq 80".
POLICYMAPTESTKIT_API std::string describe(PolicyMap::ClassMapMatch const& match);

// An object by its kind and its name or key, with what matters in a message:
//
//   record edge/input ipv4: created, 2 rules, at Ethernet1
//   status of edge/input: programmed for ipv4; ipv6 failed: commitPolicy: table full
//   status of class web: programmed
//   PolicyMap::PolicyMapConfig edge
POLICYMAPTESTKIT_API std::string describe(Kor::PtrInterface const& object);

}  // namespace PolicyMapTestKit
