// SPDX-License-Identifier: Apache-2.0
#pragma once

// FirstReached: the first rule of a side that decides some packet of a region.

#include "packets/Export.h"
#include "packets/engine/PairSearch.h"
#include "packets/engine/Side.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace PolicyMapPackets {

struct FirstReached {
  std::uint32_t rule = 0;
  TreatmentId treatment = noTreatment;
  Box lowest;  // of its packets in the region
};

// Of the rules whose treatment is wanted. None if there is none, or if the budget is spent.
[[nodiscard]] POLICYMAPPACKETS_API std::optional<FirstReached> firstReached(
    Side const& side, Box const& region, std::function<bool(TreatmentId)> const& isWanted,
    Budget& budget);

}  // namespace PolicyMapPackets
