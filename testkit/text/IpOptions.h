// SPDX-License-Identifier: Apache-2.0
#pragma once

// The options of an IPv4 or IPv6 rule: what follows its addresses, in any order.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"
#include "testkit/text/Statement.h"

#include <Acl/IpFilterBase.h>

#include <cstdint>
#include <vector>

namespace PolicyMapTestKit::Text {

// Reads options into `rule`, whose protocol is set, up to the end of the line. Options that one
// rule cannot say, such as a precedence, go to `alternatives`; null: they are not allowed. Raises
// SyntaxFailure.
POLICYMAPTESTKIT_API void takeIpOptions(Lexer& lexer, Acl::IpFilterBase& rule,
                                        RuleAlternatives* alternatives = nullptr);

// A DSCP or a precedence, as a number or a name.
POLICYMAPTESTKIT_API std::uint64_t takeDscpValue(Lexer& lexer);
POLICYMAPTESTKIT_API std::uint64_t takePrecedenceValue(Lexer& lexer);
// The eight DSCPs whose first three bits are the precedence.
POLICYMAPTESTKIT_API std::vector<std::uint8_t> dscpsOf(std::uint64_t precedence);

}  // namespace PolicyMapTestKit::Text
