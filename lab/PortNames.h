// SPDX-License-Identifier: Apache-2.0
// The words that policy text accepts in place of numbers. Words are compared without regard to
// case.
#pragma once

#include "lab/Address.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace lab {

/// Numbers of the protocols that the rule syntax treats specially.
namespace protocol {
constexpr std::uint8_t icmp = 1;
constexpr std::uint8_t tcp = 6;
constexpr std::uint8_t udp = 17;
constexpr std::uint8_t icmp6 = 58;
constexpr std::uint8_t sctp = 132;
}  // namespace protocol

/// Do packets of this protocol carry ports: TCP, UDP, SCTP.
constexpr bool hasPorts(std::uint8_t number) noexcept {
  return number == protocol::tcp || number == protocol::udp || number == protocol::sctp;
}

/// The number of a protocol; "icmp" is ICMPv6 in an IPv6 list. Not "ip" and "ipv6", which are no
/// one protocol.
std::optional<std::uint8_t> protocolNumber(Family family, std::string_view name) noexcept;

/// The well-known port of this name. SCTP knows the names of TCP.
std::optional<std::uint16_t> portNumber(std::uint8_t protocol, std::string_view name) noexcept;

/// The DSCP of a per-hop behaviour: "default", "af11" to "af43", "cs0" to "cs7", "ef", "va".
std::optional<std::uint8_t> dscpNumber(std::string_view name) noexcept;

/// An ICMP or ICMPv6 message: a type and, where the name says it, a code.
struct IcmpMessage {
  std::uint8_t type = 0;
  std::optional<std::uint8_t> code;

  bool operator==(IcmpMessage const&) const = default;
};

/// The message of this name; `protocol` is ICMP or ICMPv6.
std::optional<IcmpMessage> icmpMessage(std::uint8_t protocol, std::string_view name) noexcept;

/// The Ethernet type of this name: "ip", "arp", "ipv6" and a few more.
std::optional<std::uint16_t> etherTypeNumber(std::string_view name) noexcept;

}  // namespace lab
