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

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace PolicyMapTestKit::Text {

// Parses a condition up to the end of the line; none, without consuming a word, if the line begins
// with none of them. Raises SyntaxFailure for a bad value.
POLICYMAPTESTKIT_API std::optional<MatchCondition> takeCondition(Lexer& lexer);

// The rest of the line as a condition that nobody knows.
POLICYMAPTESTKIT_API MatchCondition unknownCondition(Lexer& lexer);

// The name of the class-map that has the rules of a condition such as "dscp 10 12". It does not
// exist if no rule can express the condition.
POLICYMAPTESTKIT_API std::string conditionName(std::string_view condition);
POLICYMAPTESTKIT_API bool isCondition(std::string_view classMap);
// Stands for conditions of a match-all class that no kind of rule has together.
inline constexpr std::string_view contradiction = "all of its conditions";

// Why no rule expresses a condition without rules, from its text: "a header does not tell it".
POLICYMAPTESTKIT_API std::string_view reasonAgainst(std::string_view condition);

// A DSCP or a precedence, as a number or a name.
POLICYMAPTESTKIT_API std::uint64_t takeDscpNumber(Lexer& lexer);
POLICYMAPTESTKIT_API std::uint64_t takePrecedenceNumber(Lexer& lexer);

// The words that begin a condition, for messages.
POLICYMAPTESTKIT_API std::string_view conditionWords();

}  // namespace PolicyMapTestKit::Text
