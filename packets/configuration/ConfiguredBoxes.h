// SPDX-License-Identifier: Apache-2.0
#pragma once

// The packets that a configured rule is about, whether it permits or denies.

#include "packets/Export.h"
#include "packets/space/Box.h"
#include "testkit/text/Statement.h"

#include <vector>

namespace PolicyMapPackets {

// Disjoint. Empty if the rule is about no packet of the slice.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Box> configuredBoxes(
    Slice const& slice, PolicyMapTestKit::Text::ConfiguredRule const& rule);

}  // namespace PolicyMapPackets
