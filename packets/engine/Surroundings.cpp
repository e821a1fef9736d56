// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/Surroundings.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace PolicyMapPackets {

namespace {

std::vector<LineIndex> overlapping(Side const& side, Box const& region) {
  std::vector<LineIndex> lines;
  for (LineIndex line = 0; line != side.nothing(); ++line) {
    if (overlap(side.slice(), side.lines()[line].box, region)) {
      lines.push_back(line);
    }
  }
  return lines;
}

class Widening {
 public:
  Widening(Side const& one, Side const& other, Box const& packet)
      : one_(one),
        other_(other),
        slice_(one.slice()),
        packet_(packet),
        region_(packet),
        lineOne_(decide(one, packet).line),
        lineOther_(decide(other, packet).line) {}

  Box run() {
    Box widest = Box::all(slice_);
    for (auto const& [side, line] : {std::pair(&one_, lineOne_), std::pair(&other_, lineOther_)}) {
      if (line != side->nothing()) {
        widest = intersection(slice_, widest, side->lines()[line].box);
      }
    }
    // The fields that people look at last are widened first.
    for (std::size_t i = slice_.lanes(); i-- != 0;) {
      widen(slice_.order()[i], widest);
    }
    return region_;
  }

 private:
  void widen(std::size_t lane, Box const& widest) {
    Box const before = region_;
    region_[lane] = widest[lane];
    while (region_[lane] != before[lane]) {
      Box const* const along = obstacle();
      if (along == nullptr) {
        return;
      }
      narrow(lane, (*along)[lane]);
    }
  }

  // A line of which some packets of the region are and some are not; null if the same lines decide.
  [[nodiscard]] Box const* obstacle() const {
    for (auto const& [side, wanted] :
         {std::pair(&one_, lineOne_), std::pair(&other_, lineOther_)}) {
      Outcome const outcome = decide(*side, region_);
      if (outcome.undecided) {
        return &side->lines()[outcome.line].box;
      }
      if (outcome.line != wanted) {
        return &packet_;  // cannot be: the region has the packet
      }
    }
    return nullptr;
  }

  // Takes those values from a lane, or leaves those, that the packet is not, or is, among.
  void narrow(std::size_t lane, Lane const& by) {
    Lane& own = region_[lane];
    bool const isTernary = lane < slice_.ternaryLanes();
    bool const isIn = contains(by, packet_[lane], isTernary);
    if (isTernary) {
      // A prefix, which people can read, and not the largest set.
      std::uint32_t const different = std::bit_floor((by.a ^ packet_[lane].a) & by.b);
      std::uint32_t bits = own.b | (isIn ? by.b : ~(different - 1));
      bits = bits == own.b ? packet_[lane].b : bits;
      own = {packet_[lane].a & bits, bits};
      return;
    }
    Lane const before = own;
    std::uint32_t const value = packet_[lane].a;
    if (isIn) {
      own = {std::max(own.a, by.a), std::min(own.b, by.b)};
    } else if (by.b < value) {
      own.a = std::max(own.a, by.b + 1);
    } else {
      own.b = std::min(own.b, by.a - 1);
    }
    if (own == before) {
      own = packet_[lane];
    }
  }

  Side const& one_;
  Side const& other_;
  Slice const& slice_;
  Box const& packet_;
  Box region_;
  LineIndex lineOne_;
  LineIndex lineOther_;
};

}  // namespace

Outcome decide(Side const& side, Box const& region) {
  return side.decide(region, overlapping(side, region));
}

Box surroundings(Side const& one, Side const& other, Box const& packet) {
  return Widening(one, other, packet).run();
}

}  // namespace PolicyMapPackets
