// SPDX-License-Identifier: Apache-2.0
#include "Acl/RangeCheck.h"

#include "Kor/Exception.h"

#include <string>

namespace Acl {

std::int64_t inRange(std::string_view attribute, std::int64_t value, std::int64_t lowest,
                     std::int64_t highest) {
  if (value < lowest || value > highest) {
    throw Kor::RangeException(std::string(attribute) + " < " + std::to_string(lowest) + " or > " +
                              std::to_string(highest) + " not allowed");
  }
  return value;
}

}  // namespace Acl
