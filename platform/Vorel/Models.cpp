// SPDX-License-Identifier: Apache-2.0
#include "Vorel/Models.h"

#include "Vorel/IntfId.h"

#include <array>

namespace Vorel {
namespace {

using M = Kor::Model<IntfId>;

constexpr std::array attrs{M::key<&IntfId::name>("name").says(
    "canonical name, such as Ethernet3/1; empty for no interface")};

IntfId make(Kor::String const& name) {
  return name.empty() ? IntfId() : IntfId(name);
}

constexpr Kor::TypeModel ofIntfId = M::value(attrs, M::constructor<&make>("name"));

constexpr std::array all{&ofIntfId};

}  // namespace

std::span<Kor::TypeModel const* const> models() {
  return all;
}

}  // namespace Vorel
