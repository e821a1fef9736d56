// SPDX-License-Identifier: Apache-2.0
#pragma once

// The fields of headers that rules look at. POLICYMAPPACKETS_FIELDS is the one list: a row gives a
// field its name, its size, how sets of its values are kept, and the slices that have it.
//
// A slice is a kind of header, e.g. TCP over IPv4: the packets of one slice have the same fields.
// So no packet is ever shown or counted that cannot exist, such as one of UDP with TCP flags.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace PolicyMapPackets {

// In the order in which the smallest packet is looked for.
enum class SliceId : std::uint8_t {
  tcp4,
  udp4,
  sctp4,
  icmp4,
  other4,     // all other protocols
  fragment4,  // later fragments, which have no ports, flags or messages
  tcp6,
  udp6,
  sctp6,
  icmp6,
  other6,
  fragment6,
  untagged,
  tagged,
  label,  // one MPLS label
  taggedLabel,
  labels,  // more than one MPLS label
  taggedLabels,
};
inline constexpr std::size_t sliceCount = 18;

using SliceSet = std::uint32_t;
template <class... Id>
constexpr SliceSet setOf(Id... id) {
  return ((SliceSet{1} << static_cast<unsigned>(id)) | ... | 0U);
}

namespace slices {

using enum SliceId;
inline constexpr SliceSet ports = setOf(tcp4, udp4, sctp4, tcp6, udp6, sctp6);
inline constexpr SliceSet tcp = setOf(tcp4, tcp6);
inline constexpr SliceSet icmp = setOf(icmp4, icmp6);
// Those whose packets differ in their protocol.
inline constexpr SliceSet protocols = setOf(other4, fragment4, other6, fragment6);
inline constexpr SliceSet ip4 = setOf(tcp4, udp4, sctp4, icmp4, other4, fragment4);
inline constexpr SliceSet ip6 = setOf(tcp6, udp6, sctp6, icmp6, other6, fragment6);
inline constexpr SliceSet ip = ip4 | ip6;
inline constexpr SliceSet fragments = setOf(fragment4, fragment6);
inline constexpr SliceSet vlan = setOf(tagged, taggedLabel, taggedLabels);
inline constexpr SliceSet twoLabels = setOf(labels, taggedLabels);
inline constexpr SliceSet mpls = setOf(label, taggedLabel) | twoLabels;
inline constexpr SliceSet mac = setOf(untagged, tagged) | mpls;

}  // namespace slices

// How a set of values is kept: as those that equal a value in the bits of a mask, or as those from
// a lowest to a highest one.
enum class FieldKind : std::uint8_t { ternary, interval };

// ROW(name, bits, kind, slices), in the order in which packets are compared.
#define POLICYMAPPACKETS_FIELDS(ROW)                \
  ROW(protocol, 8, interval, slices::protocols)     \
  ROW(source4, 32, ternary, slices::ip4)            \
  ROW(destination4, 32, ternary, slices::ip4)       \
  ROW(source6, 128, ternary, slices::ip6)           \
  ROW(destination6, 128, ternary, slices::ip6)      \
  ROW(sourcePort, 16, interval, slices::ports)      \
  ROW(destinationPort, 16, interval, slices::ports) \
  ROW(tcpFlags, 8, ternary, slices::tcp)            \
  ROW(icmpType, 8, interval, slices::icmp)          \
  ROW(icmpCode, 8, interval, slices::icmp)          \
  ROW(dscp, 6, interval, slices::ip)                \
  ROW(ttl, 8, interval, slices::ip)                 \
  ROW(tni, 24, interval, slices::ip)                \
  ROW(vni, 24, interval, slices::ip)                \
  ROW(sourceMac, 48, ternary, slices::mac)          \
  ROW(destinationMac, 48, ternary, slices::mac)     \
  ROW(ethertype, 16, interval, slices::mac)         \
  ROW(vlan, 12, interval, slices::vlan)             \
  ROW(cos, 3, interval, slices::vlan)               \
  ROW(mplsLabel, 20, interval, slices::mpls)        \
  ROW(mplsExperimental, 3, interval, slices::mpls)  \
  ROW(mplsInnerLabel, 20, interval, slices::twoLabels)

enum class FieldId : std::uint8_t {
#define POLICYMAPPACKETS_ROW(name, bits, kind, slices) name,
  POLICYMAPPACKETS_FIELDS(POLICYMAPPACKETS_ROW)
#undef POLICYMAPPACKETS_ROW
};

struct Field {
  FieldId id;
  std::string_view name;
  unsigned bits;
  FieldKind kind;
  SliceSet slices;
};

inline constexpr std::array fields{
#define POLICYMAPPACKETS_ROW(name, bits, kind, slices) \
  Field{FieldId::name, #name, bits, FieldKind::kind, slices},
    POLICYMAPPACKETS_FIELDS(POLICYMAPPACKETS_ROW)
#undef POLICYMAPPACKETS_ROW
};

}  // namespace PolicyMapPackets
