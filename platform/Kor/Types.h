// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace Kor {

// Identifies one attribute of a type: 128 x inheritance level + 2 + its place among the type's own
// attributes.
using AttributeId = std::uint32_t;

// The first of a type's own attributes. A root type has level 0.
constexpr AttributeId firstAttributeId(std::uint32_t level) {
  return 128 * level + 2;
}

}  // namespace Kor
