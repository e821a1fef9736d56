// SPDX-License-Identifier: Apache-2.0
#include "packets/PacketGenerator.h"

#include <algorithm>

namespace PolicyMapPackets {

namespace {

constexpr double mostRepeated = 1000;

}  // namespace

PacketGenerator::PacketGenerator(std::vector<Subject> const& subjects,
                                 GeneratorOptions const& options)
    : random_(options.seed), repetition_(options.repetition) {
  Treatments treatments;
  for (Subject const& subject : subjects) {
    for (Slice const& slice : Slice::ofOption(subject.option)) {
      RecordedSide const side(slice, subject.recorded, options.deny, treatments);
      for (Line const& line : side.lines()) {
        for (Box const& all : possible(slice)) {
          if (overlap(slice, line.box, all)) {
            corners_.push_back({&slice, intersection(slice, line.box, all)});
          }
        }
      }
    }
  }
}

PacketGenerator::Repeated PacketGenerator::next() {
  Corners const& corners = corners_[below(static_cast<std::uint32_t>(corners_.size()))];
  Slice const& slice = *corners.slice;
  Box packet = corners.box;
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    bool const isHigh = (random_() & 1) != 0;
    if (lane < slice.ternaryLanes()) {
      packet[lane].a |= isHigh ? ~packet[lane].b : 0;
    } else if (isHigh) {
      packet[lane].a = packet[lane].b;
    }
  }
  // Not by std::uniform_real_distribution, which differs between libraries.
  double const uniform = (below(1U << 24) + 1) / double{1U << 24};
  double const times = std::min(repetition_ / uniform, mostRepeated);
  return {Packet(slice, packet), std::max(std::uint32_t{1}, static_cast<std::uint32_t>(times))};
}

}  // namespace PolicyMapPackets
