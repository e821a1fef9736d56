// SPDX-License-Identifier: Apache-2.0
#pragma once

// PointIndex: a tree that finds, for one packet after the other, the lines that may contain it.
//
// Each node halves the packets by a bit of an address or by a number. A line that is on both sides
// is kept on both, so a node is not halved if that would copy most of its lines.

#include "packets/Export.h"
#include "packets/engine/Side.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API PointIndex {
 public:
  // `side` must outlive it.
  explicit PointIndex(Side const& side);

  // In order. Lines that no packet there reaches are left out.
  [[nodiscard]] std::span<LineIndex const> near(Box const& packet) const {
    Node const* node = nodes_.data();
    while (node->isInner) {
      bool const isHigh = node->isTernary ? (packet[node->lane].a & node->split) != 0
                                          : packet[node->lane].a > node->split;
      node = &nodes_[node->first + (isHigh ? 1 : 0)];
    }
    return {members_.data() + node->first, node->count};
  }

 private:
  struct Node {
    bool isInner = false;
    bool isTernary = false;
    std::uint8_t lane = 0;
    std::uint32_t split = 0;  // a bit, or the highest of the lower numbers
    std::uint32_t first = 0;  // of an inner node its first child, of a leaf its first member
    std::uint32_t count = 0;  // of members
  };
  // A way to halve a node.
  struct Split {
    std::uint8_t lane = 0;
    bool isTernary = false;
    std::uint32_t at = 0;
    std::size_t largest = 0;  // the number of lines of the larger half
    std::size_t sum = 0;      // of both
  };

  void build(std::uint32_t node, Box const& region, std::vector<LineIndex> lines, unsigned depth);
  void dropUnreached(Box const& region, std::vector<LineIndex>& lines) const;
  [[nodiscard]] Split bestSplit(Box const& region, std::vector<LineIndex> const& lines) const;
  void tryTernary(std::size_t lane, std::vector<LineIndex> const& lines, Split& best) const;
  void tryInterval(std::size_t lane, Box const& region, std::vector<LineIndex> const& lines,
                   Split& best) const;
  static void take(Split const& split, std::size_t lines, Split& best);

  Side const* side_;
  std::vector<Node> nodes_;
  std::vector<LineIndex> members_;
};

}  // namespace PolicyMapPackets
