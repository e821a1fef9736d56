// SPDX-License-Identifier: Apache-2.0
#pragma once

// The packets that the entries of a recorded rule take, as forwarding hardware compares them: the
// fields of its match, with the ports of its sub-rules.

#include "packets/Export.h"
#include "packets/space/Box.h"
#include "testkit/Record.h"

#include <vector>

namespace PolicyMapPackets {

// Disjoint, if the sub-rules are. Empty if no packet of the slice is taken.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Box> recordedBoxes(
    Slice const& slice, PolicyMapTestKit::RuleRecord const& rule);

}  // namespace PolicyMapPackets
