// SPDX-License-Identifier: Apache-2.0
#pragma once

// RecordedSide: the rules of a record as forwarding hardware treats packets by them: the first
// entry that takes a packet decides.

#include "packets/Export.h"
#include "packets/engine/Side.h"
#include "packets/engine/Treatments.h"
#include "testkit/Record.h"

#include <string>
#include <vector>

namespace PolicyMapPackets {

// What an entry that denies does with its packets.
enum class DenyReading : std::uint8_t {
  nextClass,  // they leave the class: no later rule of it takes them
  stop,       // nothing becomes of them
  entry,      // they get the class, as with an entry that permits
};

class POLICYMAPPACKETS_API RecordedSide final : public Side {
 public:
  // `rules` in the order of programming; the lines have their indexes.
  RecordedSide(Slice const& slice, std::vector<PolicyMapTestKit::RuleRecord> const& rules,
               DenyReading deny, Treatments& treatments);

  [[nodiscard]] Outcome decide(Box const& region,
                               std::span<LineIndex const> relevant) const override;
};

}  // namespace PolicyMapPackets
