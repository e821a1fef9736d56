// SPDX-License-Identifier: Apache-2.0
#pragma once

// The options of an IPv4 or IPv6 rule: what follows its addresses, in any order.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"

#include <Acl/IpFilterBase.h>

namespace PolicyMapTestKit::Text {

// Reads options into `rule`, whose protocol is set, up to the end of the line. Raises
// SyntaxFailure.
POLICYMAPTESTKIT_API void takeIpOptions(Lexer& lexer, Acl::IpFilterBase& rule);

}  // namespace PolicyMapTestKit::Text
