// SPDX-License-Identifier: Apache-2.0
#include "Routing/Models.h"

#include "Routing/RoutingInfo.h"
#include "Routing/RoutingModel.h"

#include <array>

namespace Routing {
namespace {

constexpr std::array all{&ofRoutingInfo<RoutingInfo>};

}  // namespace

std::span<Kor::TypeModel const* const> models() {
  return all;
}

}  // namespace Routing
