// SPDX-License-Identifier: Apache-2.0
#pragma once

// Packet: the header of one IP packet, read and printed as people write it:
//
//   tcp 10.0.0.1:4000 > 192.0.2.80:80 syn dscp 46
//   udp [2001:db8::1]:4000 > [2001:db8::2]:53 ttl 1
//   icmp 10.0.0.1 > 10.0.0.2 type 8
//   ip 10.0.0.1 > 10.0.0.2 protocol 47
//   fragment 10.0.0.1 > 10.0.0.2 protocol 17
//
// A fragment is any but the first. What is not said is zero.

#include "packets/Box.h"
#include "packets/Export.h"

#include <string>
#include <string_view>

namespace PolicyMapPackets {

class POLICYMAPPACKETS_API Packet {
 public:
  // Throws Text::InputError, with the column, for a header that cannot be: a port of a protocol
  // without ports, addresses of two families, a number that does not fit.
  explicit Packet(std::string_view text);
  // The lowest packet of a box.
  explicit Packet(Box const& box) : box_(box.lowest()) {}

  // The box with this packet alone.
  [[nodiscard]] Box const& box() const { return box_; }
  [[nodiscard]] std::string text() const;

  bool operator==(Packet const&) const = default;

 private:
  Box box_;
};

// The packets of a box, as the line of a rule: "tcp any any eq 80". Fields in which all packets
// match are left out.
[[nodiscard]] POLICYMAPPACKETS_API std::string textOf(Box const& box);

}  // namespace PolicyMapPackets
