// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <ostream>

namespace PolicyMap {

// The kind of an action. The set of kinds is open: each action class chooses its own number.
enum class ActionType : std::int32_t {};

POLICYMAP_API Kor::KorType* korEnumType(ActionType /*any*/);
// Always a decimal number.
POLICYMAP_API Kor::String8 valueToStrep(ActionType type);
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   ActionType& type);
POLICYMAP_API std::ostream& operator<<(std::ostream& out, ActionType type);

}  // namespace PolicyMap
