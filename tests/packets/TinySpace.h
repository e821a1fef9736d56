// SPDX-License-Identifier: Apache-2.0
#pragma once

// A small part of the space of UDP over IPv4, of which all packets can be looked at: two bits of
// the source, two of the destination, ports 0 to 3; the other fields are 0.

#include "packets/Comparison.h"

#include <cstdint>
#include <random>
#include <vector>

namespace PolicyMapPackets::test {

inline Space const& tinySpace() {
  return spaceOf(PolicyMap::ClassMapMatchOption::ipv4, Header::udp);
}

inline constexpr std::uint64_t tinyNumbers = 4;  // of each of the four fields

// All of its packets.
inline Box tiny() {
  Box box(tinySpace());
  constexpr Bits others = 0xfffffffc;
  box.set(Field::source, {0, others});
  box.set(Field::destination, {0, others});
  for (Field const field : {Field::sourcePort, Field::destinationPort}) {
    box.set(field, {0, tinyNumbers - 1});
  }
  for (Field const field : {Field::dscp, Field::ttl, Field::tni, Field::vni}) {
    box.set(field, {0, 0});
  }
  return box;
}

inline std::vector<Box> tinyPackets() {
  std::vector<Box> all;
  for (Bits number = 0; number != tinyNumbers * tinyNumbers * tinyNumbers * tinyNumbers; ++number) {
    Box packet = tiny().lowest();
    Bits rest = number;
    for (Field const field :
         {Field::destinationPort, Field::sourcePort, Field::destination, Field::source}) {
      Range const range = packet.of(field);
      Bits const value = rest % tinyNumbers;
      bool const isPort = field == Field::destinationPort || field == Field::sourcePort;
      packet.set(field, {value, isPort ? value : range.second});
      rest /= tinyNumbers;
    }
    all.push_back(packet);
  }
  return all;  // in ascending order
}

class TinyBoxes {
 public:
  explicit TinyBoxes(std::uint32_t seed) : random_(seed) {}

  std::uint64_t below(std::uint64_t end) { return random_() % end; }
  // With masks that may have holes.
  Box next() {
    Box box = tiny();
    for (Field const field : {Field::source, Field::destination}) {
      Bits const mask = below(tinyNumbers);
      box.set(field, {Bits{below(tinyNumbers)} & mask, tiny().of(field).second | mask});
    }
    for (Field const field : {Field::sourcePort, Field::destinationPort}) {
      std::uint64_t const low = below(tinyNumbers);
      box.set(field, {low, low + below(tinyNumbers - low)});
    }
    return box;
  }

 private:
  std::mt19937 random_;
};

}  // namespace PolicyMapPackets::test
