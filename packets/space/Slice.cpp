// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Slice.h"

#include <algorithm>

namespace PolicyMapPackets {

namespace {

using Option = PolicyMap::ClassMapMatchOption;

constexpr std::uint8_t icmp4Number = 1;
constexpr std::uint8_t tcpNumber = 6;
constexpr std::uint8_t udpNumber = 17;
constexpr std::uint8_t icmp6Number = 58;
constexpr std::uint8_t sctpNumber = 132;

std::array<Slice, sliceCount> const& allSlices() {
  static auto const all = []<std::size_t... i>(std::index_sequence<i...>) {
    return std::array<Slice, sliceCount>{Slice(static_cast<SliceId>(i))...};
  }
  (std::make_index_sequence<sliceCount>());
  return all;
}

// All numbers of 8 bits but these, which ascend.
template <std::size_t count>
std::vector<std::array<std::uint32_t, 2>> numbersBut(std::array<std::uint32_t, count> const& not_) {
  std::vector<std::array<std::uint32_t, 2>> intervals;
  std::uint32_t low = 0;
  for (std::uint32_t const number : not_) {
    if (number > low) {
      intervals.push_back({low, number - 1});
    }
    low = number + 1;
  }
  intervals.push_back({low, 255});
  return intervals;
}

}  // namespace

Slice const& Slice::of(SliceId id) {
  return allSlices()[static_cast<std::size_t>(id)];
}

std::span<Slice const> Slice::ofOption(Option option) {
  auto const from = [](SliceId first, SliceId last) {
    auto const begin = static_cast<std::size_t>(first);
    return std::span(allSlices()).subspan(begin, static_cast<std::size_t>(last) - begin + 1);
  };
  switch (option) {
  case Option::ipv4: return from(SliceId::tcp4, SliceId::fragment4);
  case Option::ipv6: return from(SliceId::tcp6, SliceId::fragment6);
  case Option::mac: return from(SliceId::untagged, SliceId::taggedLabels);
  case Option::mpls: break;
  }
  return from(SliceId::label, SliceId::taggedLabels);
}

Slice::Slice(SliceId id) : id_(id) {
  addLanes(FieldKind::ternary);
  ternaryLanes_ = lanes_;
  addLanes(FieldKind::interval);
  std::size_t next = 0;
  for (Place const& place : places_) {
    for (std::size_t i = 0; i != place.count; ++i) {
      order_[next++] = static_cast<std::uint8_t>(place.first + i);
    }
  }
  limitFields();
}

void Slice::addLanes(FieldKind kind) {
  for (Field const& field : fields) {
    if (field.kind != kind || !in(field.slices)) {
      continue;
    }
    unsigned const count = (field.bits + laneBits - 1) / laneBits;
    places_[static_cast<std::size_t>(field.id)] = {static_cast<std::uint8_t>(lanes_),
                                                   static_cast<std::uint8_t>(count)};
    for (unsigned i = 0; i != count; ++i) {
      unsigned const first = field.bits - (count - 1) * laneBits;
      bits_[lanes_++] = static_cast<std::uint8_t>(i == 0 ? first : laneBits);
    }
  }
}

void Slice::limitFields() {
  constexpr std::uint32_t mplsUnicast = 0x8847;
  constexpr std::uint32_t mplsMulticast = 0x8848;
  if (id_ == SliceId::other4) {
    allowed_.push_back({FieldId::protocol, numbersBut(std::array<std::uint32_t, 4>{
                                               icmp4Number, tcpNumber, udpNumber, sctpNumber})});
  } else if (id_ == SliceId::other6) {
    allowed_.push_back({FieldId::protocol, numbersBut(std::array<std::uint32_t, 4>{
                                               tcpNumber, udpNumber, icmp6Number, sctpNumber})});
  }
  if (in(slices::mpls)) {
    allowed_.push_back({FieldId::ethertype, {{mplsUnicast, mplsMulticast}}});
  } else if (in(slices::mac)) {
    allowed_.push_back({FieldId::ethertype, {{0, mplsUnicast - 1}, {mplsMulticast + 1, 0xffff}}});
  }
  if (in(slices::vlan)) {
    constexpr std::uint32_t highestVlan = 4094;  // 0: only a priority
    allowed_.push_back({FieldId::vlan, {{0, highestVlan}}});
  }
}

std::optional<std::uint8_t> Slice::protocol() const {
  switch (id_) {
  case SliceId::tcp4:
  case SliceId::tcp6: return tcpNumber;
  case SliceId::udp4:
  case SliceId::udp6: return udpNumber;
  case SliceId::sctp4:
  case SliceId::sctp6: return sctpNumber;
  case SliceId::icmp4: return icmp4Number;
  case SliceId::icmp6: return icmp6Number;
  default: return std::nullopt;
  }
}

FieldId Slice::source() const {
  return in(slices::ip4)   ? FieldId::source4
         : in(slices::ip6) ? FieldId::source6
                           : FieldId::sourceMac;
}

FieldId Slice::destination() const {
  return in(slices::ip4)   ? FieldId::destination4
         : in(slices::ip6) ? FieldId::destination6
                           : FieldId::destinationMac;
}

}  // namespace PolicyMapPackets
