// SPDX-License-Identifier: Apache-2.0
#pragma once

// The words that policy text accepts in place of numbers, in any case.

#include "testkit/Export.h"
#include "testkit/text/Address.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace PolicyMapTestKit::Text {

// Protocol numbers with special treatment in the rule syntax.
namespace protocol {
constexpr std::uint8_t icmp = 1;
constexpr std::uint8_t tcp = 6;
constexpr std::uint8_t udp = 17;
constexpr std::uint8_t icmp6 = 58;
constexpr std::uint8_t sctp = 132;
}  // namespace protocol

// True for the protocols with ports: TCP, UDP and SCTP.
constexpr bool hasPorts(std::uint8_t number) noexcept {
  return number == protocol::tcp || number == protocol::udp || number == protocol::sctp;
}

// The number of a protocol. "icmp" is ICMPv6 in an IPv6 list. "ip" and "ipv6" have none, because
// they denote every protocol.
POLICYMAPTESTKIT_API std::optional<std::uint8_t> protocolNumber(Family family,
                                                                std::string_view name) noexcept;

// The well-known port of this name. SCTP uses the names of TCP.
POLICYMAPTESTKIT_API std::optional<std::uint16_t> portNumber(std::uint8_t protocol,
                                                             std::string_view name) noexcept;

// The DSCP of a per-hop behaviour: "default", "af11" to "af43", "cs0" to "cs7", "ef", "va".
POLICYMAPTESTKIT_API std::optional<std::uint8_t> dscpNumber(std::string_view name) noexcept;

// The precedence of this name: "routine", "priority", ... "network".
POLICYMAPTESTKIT_API std::optional<std::uint8_t> precedenceNumber(std::string_view name) noexcept;

// An ICMP or ICMPv6 message: a type and, if the name implies it, a code.
struct IcmpMessage {
  std::uint8_t type = 0;
  std::optional<std::uint8_t> code;

  bool operator==(IcmpMessage const&) const = default;
};

// The message of this name. `protocol` must be ICMP or ICMPv6.
POLICYMAPTESTKIT_API std::optional<IcmpMessage> icmpMessage(std::uint8_t protocol,
                                                            std::string_view name) noexcept;

// The Ethernet type of this name: "ip", "arp", "ipv6" and a few more.
POLICYMAPTESTKIT_API std::optional<std::uint16_t> etherTypeNumber(std::string_view name) noexcept;

}  // namespace PolicyMapTestKit::Text
