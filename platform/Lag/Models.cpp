// SPDX-License-Identifier: Apache-2.0
#include "Lag/Models.h"

#include "Lag/Config.h"

#include <array>

namespace Lag::Input {
namespace {

using M = Kor::Model<Config>;

constexpr std::array attrs{M::collection<Config::MemberOfAttribute>("memberOf")
                               .says("port-channel of each member interface")};

constexpr Kor::TypeModel ofConfig =
    M::entity(attrs, M::constructor<&Kor::makeObject<Config, Kor::Name>>("name"));

constexpr std::array all{&ofConfig};

}  // namespace

std::span<Kor::TypeModel const* const> models() {
  return all;
}

}  // namespace Lag::Input
