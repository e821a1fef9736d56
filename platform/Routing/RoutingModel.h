// SPDX-License-Identifier: Apache-2.0
#pragma once

// The table of routing information, for IPv4 and IPv6.

#include "Kor/Model.h"

#include <array>

namespace Routing {

template <class Info>
inline constexpr std::array routingInfoAttrs{
    Kor::Model<Info>::template data<&Info::routing, &Info::routingIs>("routing").says(
        "global switch; default False"),
    Kor::Model<Info>::template collection<typename Info::RoutedIntfAttribute>("routedIntf")
        .says("interfaces with routing enabled, if the value is true"),
};
template <class Info>
inline constexpr Kor::TypeModel ofRoutingInfo = Kor::Model<Info>::entity(
    routingInfoAttrs<Info>,
    Kor::Model<Info>::template constructor<&Kor::makeObject<Info, Kor::Name>>("name"));

}  // namespace Routing
