// SPDX-License-Identifier: Apache-2.0
#pragma once

// The sub-rules of one recorded rule as ports.

#include "packets/Export.h"

#include <PolicyMap/SubRuleData.h>

#include <cstdint>
#include <vector>

namespace PolicyMapPackets {

struct PortBlock {
  std::uint32_t sourceLow = 0;
  std::uint32_t sourceHigh = 0;
  std::uint32_t destinationLow = 0;
  std::uint32_t destinationHigh = 0;

  bool operator==(PortBlock const&) const = default;

  [[nodiscard]] bool isEvery() const {
    return *this == PortBlock{0, PolicyMap::SubRuleData::highestPort, 0,
                              PolicyMap::SubRuleData::highestPort};
  }
};

// Disjoint sub-rules that are a product of source and destination ports, as they are made of a
// rule, become the fewest blocks. All others become one block each. A sub-rule without ports, whose
// bounds are the wrong way round, becomes none.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<PortBlock> portBlocksOf(
    std::vector<PolicyMap::SubRuleData> const& subRules);

}  // namespace PolicyMapPackets
