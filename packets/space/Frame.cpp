// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Frame.h"

#include <algorithm>
#include <vector>

namespace PolicyMapPackets {

namespace {

using Bytes = std::span<std::uint8_t const>;

// Link types of capture files.
constexpr std::uint32_t ethernetLink = 1;
constexpr std::uint32_t rawLink = 101;
constexpr std::uint32_t cookedLink = 113;
constexpr std::uint32_t ip4Link = 228;
constexpr std::uint32_t ip6Link = 229;

constexpr std::uint32_t ip4Type = 0x0800;
constexpr std::uint32_t ip6Type = 0x86dd;
constexpr std::uint32_t vlanType = 0x8100;
constexpr std::uint32_t providerVlanType = 0x88a8;
constexpr std::uint32_t mplsUnicast = 0x8847;
constexpr std::uint32_t mplsMulticast = 0x8848;

// A header was cut off, or is none.
struct Unknown {};

// The bytes of a header from `at` on, most significant first. Throws Unknown past the end.
std::uint32_t number(Bytes bytes, std::size_t at, std::size_t size) {
  if (at + size > bytes.size()) {
    throw Unknown();
  }
  std::uint32_t value = 0;
  for (std::size_t i = 0; i != size; ++i) {
    value = value << 8 | bytes[at + i];
  }
  return value;
}

Bytes from(Bytes bytes, std::size_t at) {
  if (at > bytes.size()) {
    throw Unknown();
  }
  return bytes.subspan(at);
}

void takeAddress(Packet& packet, FieldId field, Bytes bytes, std::size_t at, std::size_t size) {
  static_cast<void>(from(bytes, at + size));
  Packet::Address address{};
  std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), size, address.begin());
  packet.addressIs(field, address);
}

// The slice of a protocol. `first` is that of TCP over this kind of IP.
SliceId sliceOf(std::uint32_t protocol, SliceId first) {
  for (unsigned i = 0; i != 4; ++i) {
    auto const id = static_cast<SliceId>(static_cast<unsigned>(first) + i);
    if (Slice::of(id).protocol() == protocol) {
      return id;
    }
  }
  return static_cast<SliceId>(static_cast<unsigned>(first) + 4);
}

// The header after the IP header.
void takePayload(Packet& packet, Bytes payload) {
  if (packet.slice().has(FieldId::sourcePort)) {
    packet.fieldIs(FieldId::sourcePort, number(payload, 0, 2));
    packet.fieldIs(FieldId::destinationPort, number(payload, 2, 2));
  }
  if (packet.slice().has(FieldId::tcpFlags)) {
    packet.fieldIs(FieldId::tcpFlags, number(payload, 13, 1));
  }
  if (packet.slice().has(FieldId::icmpType)) {
    packet.fieldIs(FieldId::icmpType, number(payload, 0, 1));
    packet.fieldIs(FieldId::icmpCode, number(payload, 1, 1));
  }
}

Packet readIp4(Bytes bytes) {
  constexpr std::uint32_t offsetBits = 0x1fff;
  std::uint32_t const first = number(bytes, 0, 1);
  std::uint32_t const protocol = number(bytes, 9, 1);
  std::size_t const length = std::size_t{first & 0xf} * 4;
  if (first >> 4 != 4 || length < 20) {
    throw Unknown();
  }
  bool const isLater = (number(bytes, 6, 2) & offsetBits) != 0;
  Packet packet(isLater ? SliceId::fragment4 : sliceOf(protocol, SliceId::tcp4));
  if (packet.slice().has(FieldId::protocol)) {
    packet.fieldIs(FieldId::protocol, protocol);
  }
  packet.fieldIs(FieldId::dscp, number(bytes, 1, 1) >> 2);
  packet.fieldIs(FieldId::ttl, number(bytes, 8, 1));
  takeAddress(packet, FieldId::source4, bytes, 12, 4);
  takeAddress(packet, FieldId::destination4, bytes, 16, 4);
  takePayload(packet, from(bytes, length));
  return packet;
}

// Where the extension headers of an IPv6 packet end.
struct Upper {
  std::uint32_t protocol;
  std::size_t at;
  bool isLater = false;  // a later fragment
};

Upper upperOf(Bytes bytes) {
  constexpr std::uint32_t hopByHop = 0;
  constexpr std::uint32_t routing = 43;
  constexpr std::uint32_t fragment = 44;
  constexpr std::uint32_t authentication = 51;
  constexpr std::uint32_t destinationOptions = 60;
  Upper upper{number(bytes, 6, 1), 40};
  while (!upper.isLater) {
    std::size_t const at = upper.at;
    switch (upper.protocol) {
    case hopByHop:
    case routing:
    case destinationOptions: upper.at += (std::size_t{number(bytes, at + 1, 1)} + 1) * 8; break;
    case authentication: upper.at += (std::size_t{number(bytes, at + 1, 1)} + 2) * 4; break;
    case fragment:
      upper.isLater = number(bytes, at + 2, 2) >> 3 != 0;
      upper.at += 8;
      break;
    default: return upper;
    }
    upper.protocol = number(bytes, at, 1);
  }
  return upper;
}

Packet readIp6(Bytes bytes) {
  if (number(bytes, 0, 1) >> 4 != 6) {
    throw Unknown();
  }
  Upper const upper = upperOf(bytes);
  Packet packet(upper.isLater ? SliceId::fragment6 : sliceOf(upper.protocol, SliceId::tcp6));
  if (packet.slice().has(FieldId::protocol)) {
    packet.fieldIs(FieldId::protocol, upper.protocol);
  }
  packet.fieldIs(FieldId::dscp, number(bytes, 0, 2) >> 6 & 0x3f);
  packet.fieldIs(FieldId::ttl, number(bytes, 7, 1));
  takeAddress(packet, FieldId::source6, bytes, 8, 16);
  takeAddress(packet, FieldId::destination6, bytes, 24, 16);
  takePayload(packet, from(bytes, upper.at));
  return packet;
}

std::optional<Packet> readIp(std::uint32_t type, Bytes bytes) {
  try {
    return type == ip4Type   ? std::optional(readIp4(bytes))
           : type == ip6Type ? std::optional(readIp6(bytes))
                             : std::nullopt;
  } catch (Unknown const&) {
    return std::nullopt;
  }
}

std::uint32_t typeOfIp(Bytes bytes) {
  return !bytes.empty() && bytes[0] >> 4 == 6 ? ip6Type : ip4Type;
}

// The labels of a packet, and where they end.
struct Labels {
  std::vector<std::uint32_t> words;
  std::size_t end;
};

Labels labelsOf(Bytes bytes, std::size_t at) {
  constexpr std::uint32_t lastBit = 0x100;
  Labels labels{{}, at};
  bool isLast = false;
  while (!isLast) {
    labels.words.push_back(number(bytes, labels.end, 4));
    labels.end += 4;
    isLast = (labels.words.back() & lastBit) != 0;
  }
  return labels;
}

Frame readEthernet(Bytes bytes) {
  std::size_t at = 12;
  std::uint32_t type = number(bytes, at, 2);
  std::optional<std::uint32_t> tag;
  while (type == vlanType || type == providerVlanType) {
    tag = tag ? tag : number(bytes, at + 2, 2);
    at += 4;
    type = number(bytes, at, 2);
  }
  at += 2;
  bool const isMpls = type == mplsUnicast || type == mplsMulticast;
  Labels const labels = isMpls ? labelsOf(bytes, at) : Labels{{}, at};
  SliceId const plain = labels.words.empty()       ? SliceId::untagged
                        : labels.words.size() == 1 ? SliceId::label
                                                   : SliceId::labels;
  Packet mac(tag ? static_cast<SliceId>(static_cast<unsigned>(plain) + 1) : plain);
  takeAddress(mac, FieldId::destinationMac, bytes, 0, 6);
  takeAddress(mac, FieldId::sourceMac, bytes, 6, 6);
  mac.fieldIs(FieldId::ethertype, type);
  if (tag) {
    mac.fieldIs(FieldId::vlan, std::min(*tag & 0xfff, std::uint32_t{4094}));
    mac.fieldIs(FieldId::cos, *tag >> 13);
  }
  if (isMpls) {
    mac.fieldIs(FieldId::mplsLabel, labels.words[0] >> 12);
    mac.fieldIs(FieldId::mplsExperimental, labels.words[0] >> 9 & 7);
  }
  if (labels.words.size() > 1) {
    mac.fieldIs(FieldId::mplsInnerLabel, labels.words[1] >> 12);
  }
  return {isMpls ? std::nullopt : readIp(type, from(bytes, at)), mac};
}

}  // namespace

Frame readFrame(std::uint32_t linkType, Bytes bytes) {
  try {
    switch (linkType) {
    case ethernetLink: return readEthernet(bytes);
    case rawLink:
    case ip4Link:
    case ip6Link: return {readIp(typeOfIp(bytes), bytes), std::nullopt};
    case cookedLink: return {readIp(number(bytes, 14, 2), from(bytes, 16)), std::nullopt};
    default: return {};
    }
  } catch (Unknown const&) {
    return {};
  }
}

}  // namespace PolicyMapPackets
