// SPDX-License-Identifier: Apache-2.0
#pragma once

// IntfEligibility: decides which interfaces may carry policies, from the statuses at the time of
// the call. Short-lived: it does not keep the statuses alive.

#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMapExport.h"
#include "Routing/RoutingInfo.h"
#include "Routing6/RoutingInfo.h"
#include "Vorel/IntfId.h"

#include <cstdint>

namespace PolicyMap {

// Why an interface does not carry the rules of a policy.
enum class IntfObstacle : std::uint8_t {
  none,         // it may carry them
  absent,       // the interface does not exist or is shut down
  excluded,     // the service-policy machine rejects it for a reason of its own
  noLayer,      // neither layer 2 nor layer 3
  notServed,    // policies on interfaces of its kind are not served
  noAddress,    // layer 3 without an address of the option
  notPhysical,  // layer 3, but not physical
  notRouting,   // routing is off
  noMembers,    // a port-channel without existing members
};

// Null: the status does not exist, so no interface has an address or is routed.
struct IntfStatuses {
  Ip::Status const* ip = nullptr;
  Ip6::Status const* ip6 = nullptr;
  Routing::RoutingInfo const* routing = nullptr;
  Routing6::RoutingInfo const* routing6 = nullptr;
};

// The kinds of interfaces that may carry policies.
struct AllowedKinds {
  bool layer2 = false;
  bool layer3 = false;
  bool management = false;
};

class POLICYMAP_API IntfEligibility {
 public:
  explicit IntfEligibility(IntfStatuses const& statuses) : statuses_(statuses) {}

  [[nodiscard]] bool hasIp(Vorel::IntfId intf) const;
  [[nodiscard]] bool hasIp6(Vorel::IntfId intf) const;
  // An interface is layer 3 if it has an address or is routed. Any other interface is layer 2 if it
  // is physical or a port-channel, and otherwise neither.
  [[nodiscard]] bool isLayer3(Vorel::IntfId intf) const;
  [[nodiscard]] bool isLayer2(Vorel::IntfId intf) const;

  // noLayer, notServed, or none if the interface is of an allowed kind. A management interface is
  // neither layer 2 nor layer 3 here.
  [[nodiscard]] IntfObstacle obstacle(Vorel::IntfId intf, AllowedKinds const& kinds) const;
  // Why an interface of an allowed kind may not carry rules of an option: noAddress, notPhysical,
  // notRouting, or none if it may.
  [[nodiscard]] IntfObstacle obstacle(Vorel::IntfId intf, ClassMapMatchOption option) const;

  [[nodiscard]] bool isAllowed(Vorel::IntfId intf, AllowedKinds const& kinds) const {
    return obstacle(intf, kinds) == IntfObstacle::none;
  }
  [[nodiscard]] bool allowsOption(Vorel::IntfId intf, ClassMapMatchOption option) const {
    return obstacle(intf, option) == IntfObstacle::none;
  }

 private:
  IntfStatuses statuses_;
};

}  // namespace PolicyMap
