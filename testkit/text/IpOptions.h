// SPDX-License-Identifier: Apache-2.0
#pragma once

// The options of an IPv4 or IPv6 rule: what follows its addresses, in any order.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"

#include <Acl/IpFilterBase.h>

#include <cstdint>
#include <optional>

namespace PolicyMapTestKit::Text {

// Reads options into `rule`, whose protocol is set, up to the end of the line. A precedence, which
// is no field of a rule, goes to `precedence`; null: it is not allowed. Raises SyntaxFailure.
POLICYMAPTESTKIT_API void takeIpOptions(Lexer& lexer, Acl::IpFilterBase& rule,
                                        std::optional<std::uint8_t>* precedence = nullptr);

// A DSCP or a precedence, as a number or a name.
POLICYMAPTESTKIT_API std::uint64_t takeDscpValue(Lexer& lexer);
POLICYMAPTESTKIT_API std::uint64_t takePrecedenceValue(Lexer& lexer);

}  // namespace PolicyMapTestKit::Text
