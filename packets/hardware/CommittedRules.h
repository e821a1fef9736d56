// SPDX-License-Identifier: Apache-2.0
#pragma once

// The rules by which hardware treats packets: those of the last commit. A record has those of the
// last addRule, so while it is dirty they are taken from the journal.

#include "packets/Export.h"
#include "testkit/Journal.h"
#include "testkit/Lab.h"
#include "testkit/Record.h"

#include <optional>
#include <vector>

namespace PolicyMapPackets {

// In the order of programming, without sub-rules whose flag is false. None if the policy is not
// created, or if the journal dropped what would tell.
[[nodiscard]] POLICYMAPPACKETS_API std::optional<std::vector<PolicyMapTestKit::RuleRecord>>
committedRules(PolicyMapTestKit::Lab const& lab, PolicyMapTestKit::Record const& record);

// The rules of the last commit, by the calls of the helper.
[[nodiscard]] POLICYMAPPACKETS_API std::optional<std::vector<PolicyMapTestKit::RuleRecord>>
committedRules(PolicyMapTestKit::Journal const& journal, PolicyMapTestKit::Record const& record);

}  // namespace PolicyMapPackets
