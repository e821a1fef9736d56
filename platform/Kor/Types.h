// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace Kor {

// Identifies one attribute of a type: 128 x inheritance level + 2 + its place among the type's own
// attributes.
using AttributeId = std::uint32_t;

}  // namespace Kor
