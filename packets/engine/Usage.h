// SPDX-License-Identifier: Apache-2.0
#pragma once

// Usage: which rules of a side decide packets, and which could be left out.
//
// A rule is reached if it decides some packet, and it matters if some packet would be treated
// otherwise without it. A rule that is no candidate, such as one that denies, cannot be reached in
// this sense; it may matter.

#include "packets/Export.h"
#include "packets/engine/PairSearch.h"
#include "packets/engine/Side.h"

#include <cstdint>
#include <set>
#include <vector>

namespace PolicyMapPackets {

struct RuleUsage {
  bool matches = false;      // some packet
  bool isCandidate = false;  // otherwise it only takes packets from others
  bool isReached = false;
  bool matters = false;
  // Of a candidate that is not reached: rules that together decide all its packets, none of which
  // can be left out.
  std::set<std::uint32_t> coveredBy = {};
  // Of a candidate that is reached and does not matter: the rules that take its packets without
  // it; of a line that one rule contains, that rule.
  std::set<std::uint32_t> replacedBy = {};
};

// Adds what the packets of one slice tell to `usage`, which is by rule and has a place for each. A
// rule that is known to be reached and to matter is not looked at again. When the budget is spent,
// the rest counts as reached and mattering.
POLICYMAPPACKETS_API void addUsage(Side const& side, std::vector<RuleUsage>& usage, Budget& budget);

}  // namespace PolicyMapPackets
