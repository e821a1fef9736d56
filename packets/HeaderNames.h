// SPDX-License-Identifier: Apache-2.0
#pragma once

// The words of headers and TCP flags.

#include "packets/Space.h"

#include <Acl/TcpFlags.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace PolicyMapPackets {

struct HeaderName {
  std::string_view name;
  Header header;
};
// In the order of Header.
inline constexpr std::array<HeaderName, 6> headerNames{{
    {"tcp", Header::tcp},
    {"udp", Header::udp},
    {"sctp", Header::sctp},
    {"icmp", Header::icmp},
    {"ip", Header::other},
    {"fragment", Header::fragment},
}};

struct FlagName {
  std::string_view name;
  std::uint8_t bit;
};
inline constexpr std::array<FlagName, 8> flagNames{{
    {"fin", Acl::TcpFlags::fin},
    {"syn", Acl::TcpFlags::syn},
    {"rst", Acl::TcpFlags::rst},
    {"psh", Acl::TcpFlags::psh},
    {"ack", Acl::TcpFlags::ack},
    {"urg", Acl::TcpFlags::urg},
    {"ece", Acl::TcpFlags::ece},
    {"cwr", Acl::TcpFlags::cwr},
}};

}  // namespace PolicyMapPackets
