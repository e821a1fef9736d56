// SPDX-License-Identifier: Apache-2.0
#include "Routing6/Models.h"

#include "Routing/RoutingModel.h"
#include "Routing6/RoutingInfo.h"

#include <array>

namespace Routing6 {
namespace {

constexpr std::array all{&Routing::ofRoutingInfo<RoutingInfo>};

}  // namespace

std::span<Kor::TypeModel const* const> models() {
  return all;
}

}  // namespace Routing6
