// SPDX-License-Identifier: Apache-2.0
#include "Routing/RoutingStatus.h"

namespace Routing {

RoutingStatus::~RoutingStatus() = default;

}  // namespace Routing
