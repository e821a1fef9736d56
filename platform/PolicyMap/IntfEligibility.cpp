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

IntfObstacle IntfEligibility::obstacle(Vorel::IntfId intf, AllowedKinds const& kinds) const {
  auto const servedIf = [](bool allowed) {
    return allowed ? IntfObstacle::none : IntfObstacle::notServed;
  };
  if (intf.isManagement()) {
    return servedIf(kinds.management);
  }
  if (isLayer3(intf)) {
    return servedIf(kinds.layer3);
  }
  return isLayer2(intf) ? servedIf(kinds.layer2) : IntfObstacle::noLayer;
}

IntfObstacle IntfEligibility::obstacle(Vorel::IntfId intf, ClassMapMatchOption option) const {
  auto const unless = [](bool allowed, IntfObstacle obstacle) {
    return allowed ? IntfObstacle::none : obstacle;
  };
  return forOption(
      option, [&] { return unless(isLayer2(intf) || hasIp(intf), IntfObstacle::noAddress); },
      [&] { return unless(isLayer2(intf) || hasIp6(intf), IntfObstacle::noAddress); },
      [&] {
        return unless(isLayer2(intf) || (isLayer3(intf) && intf.isPhysical()),
                      IntfObstacle::notPhysical);
      },
      [&] {
        return unless(statuses_.routing != nullptr && statuses_.routing->routing(),
                      IntfObstacle::notRouting);
      });
}

}  // namespace PolicyMap
