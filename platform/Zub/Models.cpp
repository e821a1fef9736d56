// SPDX-License-Identifier: Apache-2.0
#include "Zub/Models.h"

#include "Zub/UniqueId.h"

#include <array>

namespace Zub {
namespace {

constexpr Kor::TypeModel ofUniqueId = Kor::fieldsModel<UniqueId>();

constexpr std::array all{&ofUniqueId};

}  // namespace

std::span<Kor::TypeModel const* const> models() {
  return all;
}

}  // namespace Zub
