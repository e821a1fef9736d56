// SPDX-License-Identifier: Apache-2.0
#pragma once

// The expected content of the helper when everything has settled, derived from configuration and
// statuses alone: no history, no increments, no caches. Slow, but short enough to verify by
// reading.

#include "support/NormalForm.h"

#include <Acl/Config.h>
#include <Ip/Status.h>
#include <Ip6/Status.h>
#include <Lag/Config.h>
#include <PolicyMap/ClassMapTypeConfig.h>
#include <PolicyMap/PolicyMapAclHelper.h>
#include <PolicyMap/PolicyMapTypeConfig.h>
#include <Routing/RoutingInfo.h>
#include <Routing6/RoutingInfo.h>

#include <map>
#include <set>
#include <vector>

namespace Model {

// All inputs of the records.
struct Inputs {
  Acl::Config const& acls;
  PolicyMap::ClassMapTypeConfig const& classMaps;
  PolicyMap::PolicyMapTypeConfig const& policies;
  Lag::Input::Config const& lag;
  Ip::Status const& ip;
  Ip6::Status const& ip6;
  Routing::RoutingInfo const& routing;
  Routing6::RoutingInfo const& routing6;
  PolicyMap::PolicyMapAclHelper const& helper;  // its capabilities
  std::set<Vorel::IntfId> nonexistent;
  bool allowL2 = true;
  bool allowL3 = true;
  bool allowMgmt = true;
  std::set<PolicyMap::ClassMapMatchOption> forbiddenOptions;
};

struct Expected {
  TestSupport::NormalForm records;
  // The rules of each record, in the order in which they take effect.
  std::map<PolicyMapTest::AclPolicyType, std::vector<PolicyMap::AclRuleKey>> order;
  // The policies that have a status, whether or not anything of them is programmed.
  std::set<PolicyMap::PolicyMapSmKey> policies;
  // The records that cannot be programmed, each with the class that is the cause.
  std::map<PolicyMapTest::AclPolicyType, Kor::Name> refused;
};

[[nodiscard]] Expected expected(Inputs const& inputs);

}  // namespace Model
