// SPDX-License-Identifier: Apache-2.0
#pragma once

// Surroundings: the set of packets around one packet that are treated the same for the same reason.

#include "packets/Export.h"
#include "packets/engine/Side.h"

#include <vector>

namespace PolicyMapPackets {

// What a side says about a region, found without an index.
[[nodiscard]] POLICYMAPPACKETS_API Outcome decide(Side const& side, Box const& region);

// The box that is made of a packet by widening one field after the other while the same lines of
// both sides decide. Equal packets have equal boxes.
[[nodiscard]] POLICYMAPPACKETS_API Box surroundings(Side const& one, Side const& other,
                                                    Box const& packet);

}  // namespace PolicyMapPackets
