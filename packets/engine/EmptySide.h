// SPDX-License-Identifier: Apache-2.0
#pragma once

// EmptySide: no line; every packet gets nothing. What differs from it is what a side decides.

#include "packets/engine/Side.h"

#include <span>

namespace PolicyMapPackets {

class EmptySide final : public Side {
 public:
  explicit EmptySide(Slice const& slice) : Side(slice) { linesAre({}, 0); }

  [[nodiscard]] Outcome decide(Box const& /*region*/,
                               std::span<LineIndex const> /*relevant*/) const override {
    return {nothing(), false};
  }
};

}  // namespace PolicyMapPackets
