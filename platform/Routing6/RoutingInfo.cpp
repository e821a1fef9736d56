// SPDX-License-Identifier: Apache-2.0
#include "Routing6/RoutingInfo.h"

#include <utility>

namespace Routing6 {

RoutingInfo::RoutingInfo(Kor::Name name) : RoutingInfoBase(std::move(name)) {}

RoutingInfo::~RoutingInfo() = default;

Kor::KorType const* RoutingInfo::fwkType() const {
  return _fwkType();
}

Kor::KorType* RoutingInfo::_fwkType() {
  static Kor::KorType type("Routing6::RoutingInfo", Kor::Entity::_fwkType());
  return &type;
}

}  // namespace Routing6
