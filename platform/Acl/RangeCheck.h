// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/OptionalNumber.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <string_view>

namespace Acl {

/// Answers `value`; raises RangeException "ATTRIBUTE < LOWEST or > HIGHEST not allowed" when it is
/// outside.
POLICYMAP_API std::int64_t inRange(std::string_view attribute, std::int64_t value,
                                   std::int64_t lowest, std::int64_t highest);

/// The same for a number that there need not be.
inline OptionalNumber checked(std::string_view attribute, OptionalNumber number,
                              std::int64_t lowest, std::int64_t highest) {
  return number ? inRange(attribute, *number, lowest, highest) : number;
}

}  // namespace Acl
