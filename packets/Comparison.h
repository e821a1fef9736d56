// SPDX-License-Identifier: Apache-2.0
#pragma once

// compare(): which packets of a space two classifiers treat differently.
//
// A packet is decided at one place of each side, so the packets that fare differently are those of
// the pairs of places with different treatments. Of a pair, the packets that both places match are
// cut until each part is decided at both places, or elsewhere.

#include "packets/Classifier.h"
#include "packets/Count.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace PolicyMapPackets {

// The packets that one place of each side decides, with different treatments.
struct Difference {
  std::optional<Line> before;  // none: no class takes them
  std::optional<Line> after;
  Treatment treatmentBefore;
  Treatment treatmentAfter;
  Box where;      // the largest part of them that is a box
  Box smallest;   // the packet that is the lowest in the order of fields
  Count packets;  // in all parts
};

struct ComparisonLimits {
  std::uint64_t steps = 10000000;  // parts of boxes that are looked at
};

struct Comparison {
  std::vector<Difference> differences;  // by their smallest packets
  // False: the limit of steps was reached, and there may be more differences.
  bool complete = true;

  [[nodiscard]] bool equal() const { return complete && differences.empty(); }
};

// Both sides must be of the same space.
[[nodiscard]] POLICYMAPPACKETS_API Comparison compare(Classifier const& before,
                                                      Classifier const& after,
                                                      ComparisonLimits const& limits = {});

// How a packet, a box of one, fares on both sides.
struct Fate {
  Candidate candidate;
  Treatment treatment;
};
[[nodiscard]] POLICYMAPPACKETS_API Fate fateOf(Classifier const& classifier, Box const& packet);
// A box around the packet of which all packets are decided at the same places.
[[nodiscard]] POLICYMAPPACKETS_API Box alike(Classifier const& before, Classifier const& after,
                                             Box const& packet);

}  // namespace PolicyMapPackets
