// SPDX-License-Identifier: Apache-2.0
#pragma once

// The conditions of class-maps besides lists, class-maps and whole rules: `match dscp ef`,
// `match protocol https`, `match not vlan 10`.
//
// A condition is the set of packets that its rules match, one list of rules per family. A condition
// that no rule can express has no rules, and a reason.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/Statement.h"

#include <optional>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

// Parses a condition up to the end of the line; none, without consuming a word, if the line begins
// with none of them. Raises SyntaxFailure for a bad value.
POLICYMAPTESTKIT_API std::optional<MatchCondition> takeCondition(Lexer& lexer);

// The rest of the line as an unknown condition, which has no rules.
POLICYMAPTESTKIT_API MatchCondition unknownCondition(Lexer& lexer);

// The name of the class-map that has the rules of a condition such as "dscp 10 12". It does not
// exist if no rule can express the condition.
POLICYMAPTESTKIT_API std::string conditionName(std::string_view condition);
// True for the name of the class-map of a condition.
POLICYMAPTESTKIT_API bool isConditionName(std::string_view classMap);
// The words that begin a condition, for messages.
POLICYMAPTESTKIT_API std::string_view conditionWords();

}  // namespace PolicyMapTestKit::Text
