// SPDX-License-Identifier: Apache-2.0
#pragma once

// Explanation: what has become of an attached policy for one match option, and why. Values, taken
// at the time of the call.
//
//   for (Explanation const& explanation : explain(*machine)) {
//     if (explanation.state == ProgrammingState::noIntf) { ... explanation.intfs ... }
//   }

#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/IntfEligibility.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMap/PolicyProgress.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <string>
#include <vector>

namespace PolicyMap {

class ServicePolicySm;

struct Explanation : PolicyProgress {
  struct Intf {
    Vorel::IntfId intf;
    IntfObstacle obstacle = IntfObstacle::none;
    // The existing members of a port-channel that carry the rules in its place, ascending.
    std::vector<Vorel::IntfId> members = {};
  };
  // An object that a class refers to and that does not exist, e.g. "ip access-list a".
  struct Missing {
    Kor::Name className;
    std::string object;
  };

  PolicyMapSmKey policy;
  ClassMapMatchOption option{};
  // The interfaces to which the policy is attached, ascending.
  std::vector<Intf> intfs = {};
  // In the order of the classes. The same for all options.
  std::vector<Missing> missing = {};
};

// All attached policies by name and direction, each with its four options in their order. Calls no
// operation of the helper and changes nothing; it calls the overrides that decide about interfaces.
[[nodiscard]] POLICYMAP_API std::vector<Explanation> explain(ServicePolicySm& machine);
// The same for one policy; empty if it is not attached.
[[nodiscard]] POLICYMAP_API std::vector<Explanation> explain(ServicePolicySm& machine,
                                                             PolicyMapSmKey const& policy);

}  // namespace PolicyMap
