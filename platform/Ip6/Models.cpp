// SPDX-License-Identifier: Apache-2.0
#include "Ip6/Models.h"

#include "Ip/AddressModels.h"
#include "Ip6/Status.h"

#include <array>

namespace Ip6 {
namespace {

constexpr std::array all{&Ip::ofAddress<Address>, &Ip::ofAddressStatus<Status>};

}  // namespace

std::span<Kor::TypeModel const* const> models() {
  return all;
}

}  // namespace Ip6
