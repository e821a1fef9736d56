// SPDX-License-Identifier: Apache-2.0
#include "packets/HeaderNames.h"
#include "packets/Packet.h"

#include <Acl/AddressMatch.h>

#include <algorithm>
#include <utility>

namespace PolicyMapPackets {

namespace {

using PolicyMap::ClassMapMatchOption;

constexpr unsigned byteBits = 8;

template <class Bytes>
Bytes bytesOf(Bits number) {
  Bytes bytes{};
  for (auto byte = bytes.rbegin(); byte != bytes.rend(); ++byte) {
    *byte = static_cast<std::uint8_t>(number);
    number >>= byteBits;
  }
  return bytes;
}

template <class Match>
Match matchOf(Range const& range) {
  using Bytes = typename Match::Bytes;
  return Match(bytesOf<Bytes>(range.first), bytesOf<Bytes>(range.second));
}

std::string described(Box const& box, Field field) {
  return box.space().option == ClassMapMatchOption::ipv6
             ? matchOf<Acl::Ip6AddressMatch>(box.of(field)).describe()
             : matchOf<Acl::IpAddressMatch>(box.of(field)).describe();
}

std::string textOf(Bits number) {
  return std::to_string(static_cast<std::uint64_t>(number));
}

bool has(Box const& box, Field field) {
  return box.space().placeOf(field) != box.space().fields.size();
}

std::string_view headerOf(Box const& box) {
  return headerNames.at(static_cast<std::size_t>(box.space().header)).name;
}

bool isNamed(Field field) {
  return !traitsOf(field).isTernary && field != Field::sourcePort &&
         field != Field::destinationPort;
}

// " eq 80", " range 20 21"; empty for all.
std::string portsOf(Box const& box, Field field) {
  Range const& range = box.of(field);
  if (range == Box(box.space()).of(field)) {
    return "";
  }
  return range.first == range.second ? " eq " + textOf(range.first)
                                     : " range " + textOf(range.first) + " " + textOf(range.second);
}

std::string addressOf(Box const& packet, Field address, Field port) {
  bool const isIp6 = packet.space().option == ClassMapMatchOption::ipv6;
  std::string text = isIp6 ? matchOf<Acl::Ip6AddressMatch>(packet.of(address)).text()
                           : matchOf<Acl::IpAddressMatch>(packet.of(address)).text();
  if (!has(packet, port)) {
    return text;
  }
  if (isIp6) {
    text.insert(0, "[").append("]");
  }
  return text.append(":").append(textOf(packet.of(port).first));
}

// The numbers of a field that not all packets of the space have.
bool isWhole(Box const& box, Field field) {
  std::vector<Box> const all = wholeOf(box.space());
  return std::any_of(all.begin(), all.end(),
                     [&](Box const& each) { return each.of(field) == box.of(field); });
}

}  // namespace

std::string Packet::text() const {
  std::string text(headerOf(box_));
  text.append(" ").append(addressOf(box_, Field::source, Field::sourcePort));
  text.append(" > ").append(addressOf(box_, Field::destination, Field::destinationPort));
  for (FlagName const& flag : flagNames) {
    if (has(box_, Field::tcpFlags) && (box_.of(Field::tcpFlags).first & flag.bit) != 0) {
      text.append(" ").append(flag.name);
    }
  }
  for (Field const field : box_.space().fields) {
    if (isNamed(field) && box_.of(field).first != 0) {
      text.append(" ").append(traitsOf(field).name);
      text.append(" ").append(textOf(box_.of(field).first));
    }
  }
  return text;
}

std::string textOf(Box const& box) {
  std::string text(headerOf(box));
  text.append(" ").append(described(box, Field::source));
  if (has(box, Field::sourcePort)) {
    text.append(portsOf(box, Field::sourcePort));
  }
  text.append(" ").append(described(box, Field::destination));
  if (has(box, Field::destinationPort)) {
    text.append(portsOf(box, Field::destinationPort));
  }
  for (FlagName const& flag : flagNames) {
    if (has(box, Field::tcpFlags) && (box.of(Field::tcpFlags).second & flag.bit) != 0) {
      text.append((box.of(Field::tcpFlags).first & flag.bit) != 0 ? " +" : " -").append(flag.name);
    }
  }
  for (Field const field : box.space().fields) {
    if (!isNamed(field) || isWhole(box, field)) {
      continue;
    }
    Range const& range = box.of(field);
    text.append(" ").append(traitsOf(field).name).append(" ").append(textOf(range.first));
    if (range.first != range.second) {
      text.append("-").append(textOf(range.second));
    }
  }
  return text;
}

}  // namespace PolicyMapPackets
