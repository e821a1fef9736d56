// SPDX-License-Identifier: Apache-2.0
#pragma once

// Why rules cannot express a condition of a class.

#include "testkit/Export.h"

#include <string_view>

namespace PolicyMapTestKit::Text {

// The condition that replaces those of a match-all class if no kind of rule has all of their
// fields.
inline constexpr std::string_view contradiction = "all of its conditions";

// Why no rule expresses a condition that begins with these words; empty for other conditions.
std::string_view knownReason(std::string_view condition);

// Why no rule expresses a condition without rules, from its text: "a header does not tell it".
POLICYMAPTESTKIT_API std::string_view reasonAgainst(std::string_view condition);

}  // namespace PolicyMapTestKit::Text
