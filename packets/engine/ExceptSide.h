// SPDX-License-Identifier: Apache-2.0
#pragma once

// ExceptSide: a side about all packets but those of some boxes, which get nothing. Two sides that
// leave out the same packets differ only in others.

#include "packets/Export.h"
#include "packets/engine/Side.h"

#include <span>
#include <vector>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API ExceptSide final : public Side {
 public:
  // `side` must outlive it. Its lines follow those of the boxes, which are lines of `noRule`.
  ExceptSide(Side const& side, std::vector<Box> const& boxes);

  [[nodiscard]] Outcome decide(Box const& region,
                               std::span<LineIndex const> relevant) const override;

 private:
  Side const& side_;
  LineIndex boxes_;
};

}  // namespace PolicyMapPackets
