// SPDX-License-Identifier: Apache-2.0
// What a session has programmed, for a person and as JSON.
#pragma once

#include "lab/Problems.h"
#include "lab/Records.h"
#include "lab/TextLayout.h"

#include <ostream>
#include <vector>

namespace lab {

/// One table per policy and option, totals, problems, and the lines passed over. Without rules the
/// tables are left out, and all else stays.
void printReport(std::ostream& out, TextStyle const& style, Session const& session,
                 std::vector<Problem> const& problems, WithRules withRules);

/// One line per policy and option: whether it stands, since when as it is, and what went wrong; the
/// interfaces stand below.
void printStatuses(std::ostream& out, TextStyle const& style, Session const& session);

/// One object: "policies", "totals", "skipped" (lines by kind) and "status"; docs/lab.md describes
/// it. One line per rule. Holds no more than one policy in memory. Without rules, "rules" is left
/// out of each policy.
void printJson(std::ostream& out, Session const& session, WithRules withRules);

/// "policy-map EDGE, input, ipv4".
std::string titleOf(PolicyRecord const& record);

}  // namespace lab
