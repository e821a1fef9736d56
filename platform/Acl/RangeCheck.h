// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/OptionalNumber.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <string_view>

namespace Acl {

// Returns `value`. Raises RangeException "ATTRIBUTE < LOWEST or > HIGHEST not allowed" if it is out
// of range.
POLICYMAP_API std::int64_t inRange(std::string_view attribute, std::int64_t value,
                                   std::int64_t lowest, std::int64_t highest);

// The same for an optional number; none is always valid.
inline OptionalNumber checked(std::string_view attribute, OptionalNumber number,
                              std::int64_t lowest, std::int64_t highest) {
  return number ? inRange(attribute, *number, lowest, highest) : number;
}

}  // namespace Acl
