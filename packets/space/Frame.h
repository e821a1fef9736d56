// SPDX-License-Identifier: Apache-2.0
#pragma once

// Frame: the packets that the bytes of one captured frame are. Link types: Ethernet, raw IP, and
// Linux "cooked".

#include "packets/Export.h"
#include "packets/space/Packet.h"

#include <cstdint>
#include <optional>
#include <span>

namespace PolicyMapPackets {

// What tables see of one frame.
struct Frame {
  std::optional<Packet> ip;   // its IPv4 or IPv6 header, if it has one
  std::optional<Packet> mac;  // its Ethernet header, if it has one
};

// Reads one frame that begins with this link header. Headers that were cut off are as if they were
// not there: of a packet with a part of its TCP header nothing is known, so it has no IP packet.
[[nodiscard]] POLICYMAPPACKETS_API Frame readFrame(std::uint32_t linkType,
                                                   std::span<std::uint8_t const> bytes);

}  // namespace PolicyMapPackets
