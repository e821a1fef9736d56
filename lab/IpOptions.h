// SPDX-License-Identifier: Apache-2.0
#pragma once

// The options of an IPv4 or IPv6 rule: what follows its addresses, in any order.

#include "lab/Lexer.h"

#include <Acl/IpFilterBase.h>

namespace lab {

// Reads options into `rule`, whose protocol is set, up to the end of the line. Raises
// SyntaxFailure.
void takeIpOptions(Lexer& lexer, Acl::IpFilterBase& rule);

}  // namespace lab
