// SPDX-License-Identifier: Apache-2.0
#pragma once

// Comparison: all packets of a slice that two sides treat differently.
//
// Each packet has one line that decides it on each side. So the sides differ exactly where two
// lines of different treatment overlap and no earlier line takes their packets, and the packets of
// the pairs add up. Nearly all pairs have an earlier line that contains the whole of one of them,
// which is found once per line; PairSearch decides about the rest.

#include "packets/Export.h"
#include "packets/engine/PairSearch.h"
#include "packets/engine/Side.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace PolicyMapPackets {

// The packets that two rules decide.
struct PairDifference {
  std::uint32_t oneRule = noRule;
  std::uint32_t otherRule = noRule;
  TreatmentId one = noTreatment;
  TreatmentId other = noTreatment;
  Count packets;
  Box lowest;  // the smallest packet
};

struct SliceDifference {
  Slice const* slice = nullptr;
  // By their smallest packets, ascending.
  std::vector<PairDifference> pairs;
  // The budget was spent: there may be more differences.
  bool undecided = false;
};

// The sides are of the same slice.
[[nodiscard]] POLICYMAPPACKETS_API SliceDifference compare(Side const& one, Side const& other,
                                                           Budget& budget);

}  // namespace PolicyMapPackets
