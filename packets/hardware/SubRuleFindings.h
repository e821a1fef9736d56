// SPDX-License-Identifier: Apache-2.0
#pragma once

// What is irregular about the sub-rules of a record, whether or not a packet cares.

#include "packets/Export.h"
#include "testkit/Record.h"

#include <string>
#include <vector>

namespace PolicyMapPackets {

// One line each: "rule web 10 of class web: sub-rules overlap". The rules in order.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<std::string> subRuleFindings(
    std::vector<PolicyMapTestKit::RuleRecord> const& rules);

}  // namespace PolicyMapPackets
