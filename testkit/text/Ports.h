// SPDX-License-Identifier: Apache-2.0
#pragma once

// The ports of rules and services.

#include "testkit/Export.h"
#include "testkit/text/Lexer.h"

#include <Acl/NumberMatch.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace PolicyMapTestKit::Text {

// A port of this protocol, by number or name, if one comes next.
POLICYMAPTESTKIT_API std::optional<std::int64_t> acceptPort(Lexer& lexer, std::uint8_t protocol);

// Comparisons of ports of this protocol, e.g. `eq www`; any if there is none.
POLICYMAPTESTKIT_API Acl::PortMatch takePorts(Lexer& lexer, std::optional<std::uint8_t> protocol);

// The further ports of `eq P P...` or `neq P P...`, whose first is taken: what the rule matches
// instead; nothing if there are none.
std::vector<Acl::PortMatch> takeFurtherPorts(Lexer& lexer, std::uint8_t protocol,
                                             Acl::PortMatch const& first);

}  // namespace PolicyMapTestKit::Text
