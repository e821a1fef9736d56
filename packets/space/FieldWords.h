// SPDX-License-Identifier: Apache-2.0
#pragma once

// The words of fields in the texts of packets and of boxes.

#include "packets/space/Field.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace PolicyMapPackets {

// A field that is said as a word and a number.
struct FieldWord {
  FieldId field;
  std::string_view word;
  std::uint32_t highest;
};

// In the order in which they are written.
inline constexpr std::array fieldWords{
    FieldWord{FieldId::icmpType, "type", 255},
    FieldWord{FieldId::icmpCode, "code", 255},
    FieldWord{FieldId::dscp, "dscp", 63},
    FieldWord{FieldId::ttl, "ttl", 255},
    FieldWord{FieldId::tni, "tni", 0xffffff},
    FieldWord{FieldId::vni, "vni", 0xffffff},
    FieldWord{FieldId::ethertype, "ethertype", 0xffff},
    FieldWord{FieldId::vlan, "vlan", 4094},
    FieldWord{FieldId::cos, "cos", 7},
    FieldWord{FieldId::mplsLabel, "mpls-label", 0xfffff},
    FieldWord{FieldId::mplsExperimental, "mpls-experimental", 7},
    FieldWord{FieldId::mplsInnerLabel, "mpls-inner-label", 0xfffff},
};

// From bit 0 on.
inline constexpr std::array<std::string_view, 8> flagWords{"fin", "syn", "rst", "psh",
                                                           "ack", "urg", "ece", "cwr"};

// The word of later fragments.
inline constexpr std::string_view fragmentWord = "fragment";
// The word with which a packet begins that is described by its Ethernet header.
inline constexpr std::string_view macWord = "mac";

}  // namespace PolicyMapPackets
