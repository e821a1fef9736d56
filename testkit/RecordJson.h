// SPDX-License-Identifier: Apache-2.0
#pragma once

// Records and faults as JSON objects, as `policymap-lab run --json` prints them.

#include "testkit/Export.h"
#include "testkit/Record.h"
#include "testkit/faults/ActivePlan.h"
#include "testkit/text/Json.h"

#include <string>
#include <vector>

namespace PolicyMapTestKit {

// "class", "acl", "seq", "match", the actions and "subRules". Rules are many, so they are written
// without a tree of values.
POLICYMAPTESTKIT_API void appendJson(std::string& out, RuleRecord const& rule);
// Without the rules.
[[nodiscard]] POLICYMAPTESTKIT_API Text::Json jsonOf(Record const& record);
// With the member "rules", an array.
POLICYMAPTESTKIT_API void appendJson(std::string& out, Record const& record);
// The names.
[[nodiscard]] POLICYMAPTESTKIT_API Text::Json jsonOf(std::vector<Vorel::IntfId> const& intfs);
// "fault", "selected" and "met", the calls that were hit.
[[nodiscard]] POLICYMAPTESTKIT_API Text::Json jsonOf(FaultState const& state);

}  // namespace PolicyMapTestKit
