// SPDX-License-Identifier: Apache-2.0
#pragma once

// The protocols that rules name. Other protocols are numbers.

#include <array>
#include <cstdint>
#include <string_view>

namespace Acl {

struct Protocol {
  std::string_view name;
  std::uint8_t number;
};

inline constexpr std::array protocols{
    Protocol{"icmp", 1},   Protocol{"igmp", 2},  Protocol{"tcp", 6},   Protocol{"udp", 17},
    Protocol{"gre", 47},   Protocol{"esp", 50},  Protocol{"ahp", 51},  Protocol{"icmp6", 58},
    Protocol{"eigrp", 88}, Protocol{"ospf", 89}, Protocol{"pim", 103}, Protocol{"sctp", 132},
};

}  // namespace Acl
