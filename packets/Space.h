// SPDX-License-Identifier: Apache-2.0
#pragma once

// Space: all packets with one kind of header, as a product of fields. A field that a header does
// not have is in none of its spaces, so that no impossible packet is counted or shown.

#include "packets/Export.h"

#include <PolicyMap/ClassMapMatchOption.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace PolicyMapPackets {

__extension__ using Bits = unsigned __int128;

enum class Field : std::uint8_t {
  protocol,
  source,
  destination,
  sourcePort,
  destinationPort,
  tcpFlags,
  icmpType,
  icmpCode,
  dscp,
  ttl,
  tni,
  vni,
};

// A ternary field is matched by value and mask, another one by an interval.
struct FieldTraits {
  std::string_view name;
  std::uint8_t bits;  // of an address: of IPv4
  bool isTernary;
};
POLICYMAPPACKETS_API FieldTraits const& traitsOf(Field field);

// Of IP packets. A fragment is any but the first, and has no header of its protocol.
enum class Header : std::uint8_t { tcp, udp, sctp, icmp, other, fragment };

struct POLICYMAPPACKETS_API Space {
  PolicyMap::ClassMapMatchOption option{};
  Header header{};
  // In the order in which packets are compared and printed.
  std::span<Field const> fields;
  // The protocols that belong to it, as intervals; for `other`, those that no other space has.
  std::vector<std::pair<std::uint8_t, std::uint8_t>> protocols;
  unsigned ternary = 0;  // a bit for each field, by its place

  [[nodiscard]] bool isTernary(std::size_t place) const { return (ternary >> place & 1U) != 0; }
  [[nodiscard]] unsigned bitsOf(Field field) const;
  // The place of a field; fields.size() if the space does not have it.
  [[nodiscard]] std::size_t placeOf(Field field) const;
};

// Those of an option, ipv4 or ipv6; none for another one.
POLICYMAPPACKETS_API std::span<Space const> spacesOf(PolicyMap::ClassMapMatchOption option);
POLICYMAPPACKETS_API Space const& spaceOf(PolicyMap::ClassMapMatchOption option, Header header);

}  // namespace PolicyMapPackets
