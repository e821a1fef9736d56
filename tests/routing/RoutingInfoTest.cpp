// SPDX-License-Identifier: Apache-2.0
#include "routing/RoutingInfoChecks.h"

#include <Routing/RoutingInfo.h>

namespace RoutingVersions {

struct RoutingVersion {
  using RoutingInfo = Routing::RoutingInfo;
  static constexpr char const* name = "routing";
  static constexpr char const* type = "Routing::RoutingInfo";
};

INSTANTIATE_TYPED_TEST_SUITE_P(Routing, RoutingInfoOf, RoutingVersion);

}  // namespace RoutingVersions
