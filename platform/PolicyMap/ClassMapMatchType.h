// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <ostream>

namespace PolicyMap {

enum class ClassMapMatchType : std::uint8_t {
  matchAny,  // traffic that at least one match statement matches
  matchAll,  // traffic that all match statements match
};

POLICYMAP_API Kor::KorType* korEnumType(ClassMapMatchType /*any*/);
// 'matchAny', 'matchAll'.
POLICYMAP_API Kor::String8 valueToStrep(ClassMapMatchType type);
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   ClassMapMatchType& type);
POLICYMAP_API std::ostream& operator<<(std::ostream& out, ClassMapMatchType type);

}  // namespace PolicyMap
