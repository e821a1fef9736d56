// SPDX-License-Identifier: Apache-2.0
#include "Ip/Models.h"

#include "Ip/AddressModels.h"
#include "Ip/Status.h"

#include <array>

namespace Ip {
namespace {

constexpr std::array all{&ofAddress<Address>, &ofAddressStatus<Status>};

}  // namespace

std::span<Kor::TypeModel const* const> models() {
  return all;
}

}  // namespace Ip
