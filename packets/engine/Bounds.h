// SPDX-License-Identifier: Apache-2.0
#pragma once

// Bounds: the last line of a side that may decide a packet of a box, because it contains all of the
// box and no earlier line takes packets from it.

#include "packets/Export.h"
#include "packets/engine/AddressIndex.h"
#include "packets/engine/Side.h"

#include <vector>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API Bounds {
 public:
  Bounds(Side const& side, LineFinder const& finder);

  // nothing() of the side if there is no such line.
  [[nodiscard]] LineIndex of(Box const& box);
  // The lines that overlap the last box, in no order.
  [[nodiscard]] std::vector<LineIndex> const& overlapping() const { return overlapping_; }

 private:
  void findTakers();

  Side const* side_;
  LineFinder const* finder_;
  std::vector<LineIndex> overlapping_;
  std::vector<LineIndex> takers_;  // by list: the first of its lines that is no candidate
};

}  // namespace PolicyMapPackets
