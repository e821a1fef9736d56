// SPDX-License-Identifier: Apache-2.0
#pragma once

// Box: a set of packets of one slice, the product of a set per lane. A ternary lane holds the
// values that equal `a` in the bits of `b`, an interval those from `a` to `b`. A box is never
// empty; one packet is the smallest box.
//
// The functions of two boxes take boxes of the same slice.

#include "packets/Export.h"
#include "packets/space/Count.h"
#include "packets/space/Slice.h"

#include <algorithm>
#include <array>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace PolicyMapPackets {

struct Lane {
  std::uint32_t a = 0;
  std::uint32_t b = 0;

  bool operator==(Lane const&) const = default;
};

class POLICYMAPPACKETS_API Box {
 public:
  // Every value of every field, also the impossible ones.
  [[nodiscard]] static Box all(Slice const& slice);

  Lane& operator[](std::size_t lane) { return lanes_[lane]; }
  Lane const& operator[](std::size_t lane) const { return lanes_[lane]; }
  bool operator==(Box const&) const = default;

  // Narrow a field that the slice has. False, and the box is unspecified, if nothing is left.
  bool takeTernary(Slice const& slice, FieldId field, std::size_t part, std::uint32_t value,
                   std::uint32_t mask);
  // An address in network order, of as many bytes as the field has.
  bool takeBytes(Slice const& slice, FieldId field, std::span<std::uint8_t const> value,
                 std::span<std::uint8_t const> mask);
  bool takeInterval(Slice const& slice, FieldId field, std::uint32_t low, std::uint32_t high);

 private:
  std::array<Lane, mostLanes> lanes_{};
};

[[nodiscard]] constexpr bool overlaps(Lane const& a, Lane const& b, bool ternary) {
  return ternary ? ((a.a ^ b.a) & a.b & b.b) == 0 : a.a <= b.b && b.a <= a.b;
}
[[nodiscard]] constexpr bool contains(Lane const& outer, Lane const& inner, bool ternary) {
  return ternary ? (outer.b & ~inner.b) == 0 && ((outer.a ^ inner.a) & outer.b) == 0
                 : outer.a <= inner.a && inner.b <= outer.b;
}

[[nodiscard]] inline bool overlap(Slice const& slice, Box const& a, Box const& b) {
  std::size_t lane = 0;
  for (; lane != slice.ternaryLanes(); ++lane) {
    if (!overlaps(a[lane], b[lane], true)) {
      return false;
    }
  }
  for (; lane != slice.lanes(); ++lane) {
    if (!overlaps(a[lane], b[lane], false)) {
      return false;
    }
  }
  return true;
}

[[nodiscard]] inline bool contains(Slice const& slice, Box const& outer, Box const& inner) {
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    if (!contains(outer[lane], inner[lane], lane < slice.ternaryLanes())) {
      return false;
    }
  }
  return true;
}

// The number of lanes in which `region` sticks out of `box`.
[[nodiscard]] POLICYMAPPACKETS_API unsigned lanesOutside(Slice const& slice, Box const& region,
                                                         Box const& box);

// Boxes that overlap.
[[nodiscard]] POLICYMAPPACKETS_API Box intersection(Slice const& slice, Box const& a, Box const& b);

// The parts of `region` that are not in `box`, disjoint, which are added to `pieces`. Returns the
// part that is in it. The two overlap.
POLICYMAPPACKETS_API Box cut(Slice const& slice, Box const& region, Box const& box,
                             std::vector<Box>& pieces);

[[nodiscard]] POLICYMAPPACKETS_API Count volume(Slice const& slice, Box const& box);

// The packets of a slice that can exist, as disjoint boxes.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Box> const& possible(Slice const& slice);

// The smallest packet of a box.
[[nodiscard]] POLICYMAPPACKETS_API Box lowestOf(Slice const& slice, Box const& box);
// Of boxes that are one packet each: by the fields in their order.
[[nodiscard]] POLICYMAPPACKETS_API bool isLower(Slice const& slice, Box const& a, Box const& b);

}  // namespace PolicyMapPackets
