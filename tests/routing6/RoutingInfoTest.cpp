// SPDX-License-Identifier: Apache-2.0
#include "routing/RoutingInfoChecks.h"

#include <Routing6/RoutingInfo.h>

namespace RoutingVersions {

struct Routing6Version {
  using RoutingInfo = Routing6::RoutingInfo;
  static constexpr char const* name = "routing6";
  static constexpr char const* type = "Routing6::RoutingInfo";
};

INSTANTIATE_TYPED_TEST_SUITE_P(Routing6, RoutingInfoOf, Routing6Version);

}  // namespace RoutingVersions
