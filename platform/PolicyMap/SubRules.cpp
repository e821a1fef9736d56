// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/SubRules.h"

#include <algorithm>
#include <bit>

namespace PolicyMap {

std::vector<PortBlock> alignedBlocks(std::uint16_t low, std::uint16_t high) {
  std::vector<PortBlock> blocks;
  std::uint32_t const end = std::uint32_t{high} + 1;
  for (std::uint32_t start = low; start < end;) {
    // The largest aligned block at `start` that does not pass the end.
    std::uint32_t const aligned = start == 0 ? 0x10000U : start & (~start + 1);
    std::uint32_t const size = std::min(aligned, std::bit_floor(end - start));
    blocks.push_back(
        {static_cast<std::uint16_t>(start), static_cast<std::uint16_t>(start + size - 1), false});
    start += size;
  }
  return blocks;
}

namespace {

void addBlocks(std::vector<PortBlock>& blocks, Acl::PortMatch::Range const& range,
               PortExpansion expansion) {
  if (expansion == PortExpansion::alignedBlocks) {
    std::vector<PortBlock> const parts = alignedBlocks(range.low, range.high);
    blocks.insert(blocks.end(), parts.begin(), parts.end());
    return;
  }
  bool const one = range.low == range.high;
  bool const all = range.low == 0 && range.high == SubRuleData::highestPort;
  blocks.push_back({range.low, range.high, !one && !all});
}

}  // namespace

std::vector<PortBlock> portBlocks(Acl::PortMatch const& match, PortExpansion expansion,
                                  PortRanges const& exact) {
  std::vector<PortBlock> blocks;
  if (!exact.empty()) {
    for (auto const& range : exact) {
      addBlocks(blocks, range, expansion);
    }
    return blocks;
  }
  for (auto const& range : match.ranges()) {
    addBlocks(blocks, range, expansion);
  }
  return blocks;
}

}  // namespace PolicyMap
