// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/IntfEligibility.h"

#include "PolicyMap/PerOption.h"

namespace PolicyMap {
namespace {

template <class Status>
bool hasAddress(Status const* status, Vorel::IntfId intf) {
  return status != nullptr && !!status->intfAddress(intf);
}

template <class Info>
bool isRouted(Info const* info, Vorel::IntfId intf) {
  return info != nullptr && info->routedIntf(intf);
}

}  // namespace

bool IntfEligibility::hasIp(Vorel::IntfId intf) const {
  return hasAddress(statuses_.ip, intf);
}

bool IntfEligibility::hasIp6(Vorel::IntfId intf) const {
  return hasAddress(statuses_.ip6, intf);
}

bool IntfEligibility::isLayer3(Vorel::IntfId intf) const {
  return hasIp(intf) || hasIp6(intf) || isRouted(statuses_.routing, intf) ||
         isRouted(statuses_.routing6, intf);
}

bool IntfEligibility::isLayer2(Vorel::IntfId intf) const {
  return (intf.isPhysical() || intf.isPortChannel()) && !isLayer3(intf);
}

bool IntfEligibility::isAllowed(Vorel::IntfId intf, AllowedKinds const& kinds) const {
  if (intf.isManagement()) {
    return kinds.management;
  }
  if (isLayer3(intf)) {
    return kinds.layer3;
  }
  return isLayer2(intf) && kinds.layer2;
}

bool IntfEligibility::allowsOption(Vorel::IntfId intf, ClassMapMatchOption option) const {
  return forOption(
      option, [&] { return isLayer2(intf) || hasIp(intf); },
      [&] { return isLayer2(intf) || hasIp6(intf); },
      [&] { return isLayer2(intf) || (isLayer3(intf) && intf.isPhysical()); },
      [&] { return statuses_.routing != nullptr && statuses_.routing->routing(); });
}

}  // namespace PolicyMap
