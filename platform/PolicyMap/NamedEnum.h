// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/RangeCheck.h"
#include "Kor/Strep.h"

#include <cstdint>

namespace PolicyMap {

// Parses a value of an enumeration whose values all have names, by name or by number. Throws
// Kor::RangeException for any other text or number.
template <class Enum>
void readNamed(Kor::TextIterator& it, Kor::TextIterator const& end, Kor::EnumNames const& names,
               Enum& value) {
  std::int32_t const number = Kor::sequenceToEnum(it, end, names);
  value = static_cast<Enum>(
      Acl::inRange(names.type, number, 0, static_cast<std::int64_t>(names.count) - 1));
}

}  // namespace PolicyMap
