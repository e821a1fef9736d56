// SPDX-License-Identifier: Apache-2.0
#pragma once

// AnyRule: a rule of any kind of access list. OptionalRule: such a rule or none, printed as None.

#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <optional>
#include <variant>

namespace Acl {

using AnyRule = std::variant<IpRuleConfig, Ip6RuleConfig, MacRuleConfig>;
using OptionalRule = std::optional<AnyRule>;

POLICYMAP_API Kor::String valueToStrep(OptionalRule const& rule);
// Raises RangeException "no such rule type: NAME at column N" for a value of another type.
POLICYMAP_API void sequenceToValue(Kor::TextIterator& it, Kor::TextIterator const& end,
                                   OptionalRule& rule);

}  // namespace Acl
