// SPDX-License-Identifier: Apache-2.0
#pragma once

// AddressIndex: finds the lines that may overlap a box, by the leading bits of one address.
//
// Prefixes are nested or disjoint. So the lines whose prefix is inside that of the box are
// consecutive when sorted, and those whose prefix is around it are its ancestors. A mask with holes
// counts with its leading bits alone. LineFinder has an index for each of the two addresses, asks
// the one with fewer lines, and tests these.

#include "packets/Export.h"
#include "packets/engine/Side.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API AddressIndex {
 public:
  AddressIndex(Side const& side, FieldId field);

  // The lines that may overlap a box.
  struct Found {
    std::size_t begin = 0;  // consecutive members
    std::size_t end = 0;
    std::uint32_t around = 0;  // the innermost node around the box; no node: noNode
    std::size_t count = 0;
  };
  [[nodiscard]] Found find(Box const& box) const;
  template <class Visit>
  void forEach(Found const& found, Visit const& visit) const {
    for (std::size_t i = found.begin; i != found.end; ++i) {
      visit(members_[i]);
    }
    for (std::uint32_t node = found.around; node != noNode; node = nodes_[node].parent) {
      for (std::size_t i = nodes_[node].begin; i != nodes_[node].end; ++i) {
        visit(members_[i]);
      }
    }
  }

 private:
  static constexpr std::uint32_t noNode = ~std::uint32_t{0};

  // The leading bits of an address, left-aligned, at most 64.
  struct Prefix {
    std::uint64_t low = 0;
    unsigned length = 0;

    auto operator<=>(Prefix const&) const = default;
    [[nodiscard]] std::uint64_t high() const;
    [[nodiscard]] bool contains(Prefix const& other) const {
      return length <= other.length && low <= other.low && other.low <= high();
    }
  };
  // The lines with one prefix.
  struct Node {
    Prefix prefix;
    std::uint32_t parent = noNode;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t withAncestors = 0;  // the number of lines here and around
  };

  [[nodiscard]] Prefix prefixOf(Box const& box) const;
  void linkNodes();

  std::size_t lane_;
  unsigned bits_;            // of the first lane
  unsigned nextBits_;        // of the second one; 0 if there is none
  std::vector<Node> nodes_;  // ascending
  std::vector<LineIndex> members_;
};

class POLICYMAPPACKETS_API LineFinder {
 public:
  explicit LineFinder(Side const& side)
      : side_(&side),
        bySource_(side, side.slice().source()),
        byDestination_(side, side.slice().destination()) {}

  // Calls visit(line) for each line that overlaps the box, in no order.
  template <class Visit>
  void forEachOverlapping(Box const& box, Visit const& visit) const {
    auto const source = bySource_.find(box);
    auto const destination = byDestination_.find(box);
    bool const isSource = source.count <= destination.count;
    AddressIndex const& index = isSource ? bySource_ : byDestination_;
    index.forEach(isSource ? source : destination, [&](LineIndex line) {
      if (overlap(side_->slice(), side_->lines()[line].box, box)) {
        visit(line);
      }
    });
  }

  // The lines that overlap the box, in order.
  [[nodiscard]] std::vector<LineIndex> overlapping(Box const& box) const;

 private:
  Side const* side_;
  AddressIndex bySource_;
  AddressIndex byDestination_;
};

}  // namespace PolicyMapPackets
