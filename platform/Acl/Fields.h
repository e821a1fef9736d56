// SPDX-License-Identifier: Apache-2.0
#pragma once

// Operations derived from the field table of a value type (see Kor/Strep.h).

#include "Kor/Hash.h"
#include "Kor/Strep.h"

#include <cstdint>
#include <tuple>

namespace Acl {

// The hash over all fields, in their order.
template <Kor::ValueWithFields T>
[[nodiscard]] std::uint32_t hashOfFields(T const& value) {
  std::uint32_t hash = 0;
  auto const take = [&](auto const& field) {
    hash = Kor::hashCombine(hash, Kor::hashOf((value.*field.get)()));
  };
  std::apply([&](auto const&... fields) { (take(fields), ...); }, T::korFields());
  return hash;
}

using Kor::operator<<;
using Kor::valueToStrep;

}  // namespace Acl
