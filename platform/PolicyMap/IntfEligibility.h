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

namespace PolicyMap {

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

  // True if the interface is of an allowed kind. A management interface is neither layer 2 nor
  // layer 3 here.
  [[nodiscard]] bool isAllowed(Vorel::IntfId intf, AllowedKinds const& kinds) const;
  // True if an interface of an allowed kind may carry rules of an option.
  [[nodiscard]] bool allowsOption(Vorel::IntfId intf, ClassMapMatchOption option) const;

 private:
  IntfStatuses statuses_;
};

}  // namespace PolicyMap
