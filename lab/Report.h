// SPDX-License-Identifier: Apache-2.0
#pragma once

// The programmed state of a lab, as text and as JSON.

#include "lab/Kit.h"
#include "lab/TextLayout.h"
#include "testkit/Problems.h"
#include "testkit/Record.h"

#include <ostream>
#include <vector>

namespace lab {

// One table per policy and option, totals, what is attached and not programmed, problems, and
// skipped lines. Without rules, only the tables are omitted.
void printReport(std::ostream& out, TextStyle const& style, Lab const& lab,
                 std::vector<Problem> const& problems, WithRules withRules);

// Why each attached policy is or is not programmed; see Explanations::lines().
void printExplanations(std::ostream& out, TextStyle const& style, Lab const& lab);

// One line per policy and option (state, time, failure), with its interfaces below.
void printStatuses(std::ostream& out, TextStyle const& style, Lab const& lab);

// One object: "policies", "totals", "skipped" (lines by kind) and "status", as described in
// docs/lab.md. One line per rule. Holds one policy in memory at a time. Without rules, each policy
// omits "rules".
void printJson(std::ostream& out, Lab const& lab, WithRules withRules);

// "policy-map EDGE, input, ipv4".
std::string titleOf(std::string const& policy, std::string const& direction,
                    PolicyMap::ClassMapMatchOption option);

}  // namespace lab
