// SPDX-License-Identifier: Apache-2.0
#include "packets/Space.h"

#include <algorithm>
#include <array>

namespace PolicyMapPackets {

namespace {

using PolicyMap::ClassMapMatchOption;

// In the order of Field.
constexpr std::array<FieldTraits, 12> fieldTraits{{
    {"protocol", 8, false},
    {"source", 32, true},
    {"destination", 32, true},
    {"source port", 16, false},
    {"destination port", 16, false},
    {"flags", 8, true},
    {"type", 8, false},
    {"code", 8, false},
    {"dscp", 6, false},
    {"ttl", 8, false},
    {"tni", 24, false},
    {"vni", 24, false},
}};

using F = Field;
constexpr std::array tcpFields{F::source,   F::destination, F::sourcePort, F::destinationPort,
                               F::tcpFlags, F::dscp,        F::ttl,        F::tni,
                               F::vni};
constexpr std::array portFields{F::source, F::destination, F::sourcePort, F::destinationPort,
                                F::dscp,   F::ttl,         F::tni,        F::vni};
constexpr std::array icmpFields{F::source, F::destination, F::icmpType, F::icmpCode,
                                F::dscp,   F::ttl,         F::tni,      F::vni};
constexpr std::array otherFields{F::protocol, F::source, F::destination, F::dscp,
                                 F::ttl,      F::tni,    F::vni};

std::vector<Space> spaces(ClassMapMatchOption option, std::uint8_t icmp) {
  std::vector<Space> all{
      {option, Header::tcp, tcpFields, {{6, 6}}, 0},
      {option, Header::udp, portFields, {{17, 17}}, 0},
      {option, Header::sctp, portFields, {{132, 132}}, 0},
      {option, Header::icmp, icmpFields, {{icmp, icmp}}, 0},
  };
  std::vector<std::uint8_t> own;
  for (Space const& space : all) {
    own.push_back(space.protocols.front().first);
  }
  std::sort(own.begin(), own.end());
  Space other{option, Header::other, otherFields, {}, 0};
  unsigned next = 0;
  for (std::uint8_t const protocol : own) {
    if (next < protocol) {
      other.protocols.emplace_back(next, protocol - 1);
    }
    next = protocol + 1U;
  }
  other.protocols.emplace_back(next, 255);
  all.push_back(std::move(other));
  all.push_back({option, Header::fragment, otherFields, {{0, 255}}, 0});
  for (Space& space : all) {
    for (std::size_t place = 0; place != space.fields.size(); ++place) {
      space.ternary |= traitsOf(space.fields[place]).isTernary ? 1U << place : 0U;
    }
  }
  return all;
}

}  // namespace

FieldTraits const& traitsOf(Field field) {
  return fieldTraits.at(static_cast<std::size_t>(field));
}

unsigned Space::bitsOf(Field field) const {
  bool const isAddress = field == Field::source || field == Field::destination;
  constexpr unsigned ip6Bits = 128;
  return isAddress && option == ClassMapMatchOption::ipv6 ? ip6Bits : traitsOf(field).bits;
}

std::size_t Space::placeOf(Field field) const {
  return static_cast<std::size_t>(std::find(fields.begin(), fields.end(), field) - fields.begin());
}

std::span<Space const> spacesOf(ClassMapMatchOption option) {
  constexpr std::uint8_t icmp = 1;
  constexpr std::uint8_t icmp6 = 58;
  static std::vector<Space> const ip4 = spaces(ClassMapMatchOption::ipv4, icmp);
  static std::vector<Space> const ip6 = spaces(ClassMapMatchOption::ipv6, icmp6);
  if (option == ClassMapMatchOption::ipv4) {
    return ip4;
  }
  return option == ClassMapMatchOption::ipv6 ? std::span<Space const>(ip6)
                                             : std::span<Space const>();
}

Space const& spaceOf(ClassMapMatchOption option, Header header) {
  return spacesOf(option)[static_cast<std::size_t>(header)];
}

}  // namespace PolicyMapPackets
