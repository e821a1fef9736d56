// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Box.h"

namespace PolicyMapPackets {

namespace {

constexpr std::uint32_t allBits = ~std::uint32_t{0};

// The bits that a lane has.
constexpr std::uint32_t bitsOf(unsigned count) {
  return count == laneBits ? allBits : (std::uint32_t{1} << count) - 1;
}

std::vector<Box> possibleOf(Slice const& slice) {
  std::vector<Box> boxes{Box::all(slice)};
  for (Slice::Allowed const& allowed : slice.allowed()) {
    std::vector<Box> narrower;
    for (Box const& box : boxes) {
      for (auto const& [low, high] : allowed.intervals) {
        Box part = box;
        part.takeInterval(slice, allowed.field, low, high);
        narrower.push_back(part);
      }
    }
    boxes = std::move(narrower);
  }
  return boxes;
}

void cutInterval(std::size_t lane, Box& rest, Lane const& by, std::vector<Box>& pieces) {
  if (rest[lane].a < by.a) {
    Box& below = pieces.emplace_back(rest);
    below[lane].b = by.a - 1;
    rest[lane].a = by.a;
  }
  if (rest[lane].b > by.b) {
    Box& above = pieces.emplace_back(rest);
    above[lane].a = by.b + 1;
    rest[lane].b = by.b;
  }
}

void cutTernary(std::size_t lane, Box& rest, Lane const& by, std::vector<Box>& pieces) {
  for (std::uint32_t left = by.b & ~rest[lane].b; left != 0;) {
    std::uint32_t const bit = std::bit_floor(left);
    left &= ~bit;
    rest[lane].b |= bit;
    Box& other = pieces.emplace_back(rest);
    other[lane].a |= ~by.a & bit;
    rest[lane].a |= by.a & bit;
  }
}

}  // namespace

Box Box::all(Slice const& slice) {
  Box box;
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    std::uint32_t const bits = bitsOf(slice.bits(lane));
    // Bits that a ternary lane does not have are fixed, so that they are not counted.
    box[lane] = lane < slice.ternaryLanes() ? Lane{0, ~bits} : Lane{0, bits};
  }
  return box;
}

bool Box::takeTernary(Slice const& slice, FieldId field, std::size_t part, std::uint32_t value,
                      std::uint32_t mask) {
  Lane& lane = lanes_[slice.place(field).first + part];
  bool const left = ((lane.a ^ value) & lane.b & mask) == 0;
  lane.a |= value & mask;
  lane.b |= mask;
  return left;
}

bool Box::takeBytes(Slice const& slice, FieldId field, std::span<std::uint8_t const> value,
                    std::span<std::uint8_t const> mask) {
  bool left = true;
  std::size_t at = 0;
  Slice::Place const place = slice.place(field);
  for (std::size_t part = 0; part != place.count; ++part) {
    std::uint32_t laneValue = 0;
    std::uint32_t laneMask = 0;
    for (unsigned bytes = slice.bits(place.first + part) / 8; bytes-- != 0; ++at) {
      laneValue = laneValue << 8 | value[at];
      laneMask = laneMask << 8 | mask[at];
    }
    left = takeTernary(slice, field, part, laneValue, laneMask) && left;
  }
  return left;
}

bool Box::takeInterval(Slice const& slice, FieldId field, std::uint32_t low, std::uint32_t high) {
  Lane& lane = lanes_[slice.place(field).first];
  lane.a = std::max(lane.a, low);
  lane.b = std::min(lane.b, high);
  return lane.a <= lane.b;
}

unsigned lanesOutside(Slice const& slice, Box const& region, Box const& box) {
  unsigned count = 0;
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    count += contains(box[lane], region[lane], lane < slice.ternaryLanes()) ? 0 : 1;
  }
  return count;
}

Box intersection(Slice const& slice, Box const& a, Box const& b) {
  Box both = a;
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    if (lane < slice.ternaryLanes()) {
      both[lane] = {a[lane].a | b[lane].a, a[lane].b | b[lane].b};
    } else {
      both[lane] = {std::max(a[lane].a, b[lane].a), std::min(a[lane].b, b[lane].b)};
    }
  }
  return both;
}

Box cut(Slice const& slice, Box const& region, Box const& box, std::vector<Box>& pieces) {
  Box rest = region;
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    if (lane < slice.ternaryLanes()) {
      cutTernary(lane, rest, box[lane], pieces);
    } else {
      cutInterval(lane, rest, box[lane], pieces);
    }
  }
  return rest;
}

Count volume(Slice const& slice, Box const& box) {
  unsigned exponent = 0;
  Count count(1);
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    if (lane < slice.ternaryLanes()) {
      exponent += laneBits - static_cast<unsigned>(std::popcount(box[lane].b));
    } else {
      count *= std::uint64_t{box[lane].b} - box[lane].a + 1;
    }
  }
  return count.shifted(exponent);
}

std::vector<Box> const& possible(Slice const& slice) {
  static auto const all = [] {
    std::array<std::vector<Box>, sliceCount> boxes;
    for (std::size_t i = 0; i != sliceCount; ++i) {
      boxes[i] = possibleOf(Slice::of(static_cast<SliceId>(i)));
    }
    return boxes;
  }();
  return all[static_cast<std::size_t>(slice.id())];
}

Box lowestOf(Slice const& slice, Box const& box) {
  Box lowest = box;
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    lowest[lane].b = lane < slice.ternaryLanes() ? allBits : box[lane].a;
  }
  return lowest;
}

bool isLower(Slice const& slice, Box const& a, Box const& b) {
  for (std::size_t const lane : slice.order()) {
    if (a[lane].a != b[lane].a) {
      return a[lane].a < b[lane].a;
    }
  }
  return false;
}

}  // namespace PolicyMapPackets
