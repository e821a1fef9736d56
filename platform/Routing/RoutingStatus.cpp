// SPDX-License-Identifier: Apache-2.0
#include "Routing/RoutingStatus.h"

namespace Routing {

RoutingStatus::~RoutingStatus() = default;

Kor::String8 RoutingStatus::attributeString(Kor::AttributeId id) const {
  switch (id) {
  case routingId: return "routing";
  case routedIntfId: return "routedIntf";
  default: return Entity::attributeString(id);
  }
}

}  // namespace Routing
