// SPDX-License-Identifier: Apache-2.0
#pragma once

// The programmed state of a lab as text.

#include "lab/Kit.h"
#include "lab/TextLayout.h"
#include "testkit/Problems.h"
#include "testkit/Record.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace lab {

// How skipped lines are listed: counted by kind, or each with its file, line and kind.
enum class SkippedBy : std::uint8_t { kind, line };

// One table per policy and option, totals, what is attached and not programmed, problems, and
// skipped lines. Without rules, only the tables are omitted.
void printReport(std::ostream& out, TextStyle const& style, Lab const& lab, Outcome const& outcome,
                 WithRules withRules, SkippedBy skippedBy);

// Why each attached policy is or is not programmed; see Explanations::lines().
void printExplanations(std::ostream& out, TextStyle const& style, Lab const& lab,
                       Outcome const& outcome);

// One line per policy and option (state, time, failure), with its interfaces below.
void printStatuses(std::ostream& out, TextStyle const& style, Lab const& lab);

// What became of planned faults, and findings; nothing if there are none.
void printFaults(std::ostream& out, TextStyle const& style, Outcome const& outcome);

// What happened, an entry per line, or as a Mermaid diagram.
void printJournal(std::ostream& out, TextStyle const& style, Journal const& journal, bool mermaid);

// The sums of some records.
struct Totals {
  std::uint64_t policies = 0;
  std::uint64_t rules = 0;
  std::uint64_t subRules = 0;

  void add(Record const& record) {
    ++policies;
    rules += record.ruleCount;
    subRules += record.subRuleCount;
  }
};

// "policy-map EDGE, input, ipv4".
std::string titleOf(std::string const& policy, std::string const& direction,
                    PolicyMap::ClassMapMatchOption option);

}  // namespace lab
