// SPDX-License-Identifier: Apache-2.0
#pragma once

// PacketGenerator: packets at the corners of recorded rules, which are where mistakes show, each
// repeated as often as packets of flows are.

#include "packets/Export.h"
#include "packets/Subject.h"
#include "packets/space/Packet.h"

#include <cstdint>
#include <random>
#include <vector>

namespace PolicyMapPackets {

struct GeneratorOptions {
  std::uint32_t seed = 1;
  DenyReading deny = DenyReading::nextClass;
  // Each packet is repeated by a Pareto law of this scale and shape 1: most once, some often. 0:
  // never.
  double repetition = 1;
};

class POLICYMAPPACKETS_API PacketGenerator {
 public:
  // About the rules of all subjects, which are not needed afterwards.
  explicit PacketGenerator(std::vector<Subject> const& subjects,
                           GeneratorOptions const& options = {});

  // False if no rule matches any packet.
  [[nodiscard]] bool hasPackets() const { return !corners_.empty(); }
  // A packet, and how often it comes in a row. Equal seeds give equal packets on every machine.
  struct Repeated {
    Packet packet;
    std::uint32_t times;
  };
  [[nodiscard]] Repeated next();

 private:
  // The packets of a rule in one slice.
  struct Corners {
    Slice const* slice;
    Box box;
  };

  // Below `end`.
  std::uint32_t below(std::uint32_t end) {
    return static_cast<std::uint32_t>(std::uint64_t{random_()} * end >> 32);
  }

  std::vector<Corners> corners_;
  std::mt19937 random_;
  double repetition_;
};

}  // namespace PolicyMapPackets
