// SPDX-License-Identifier: Apache-2.0
#include "packets/space/FieldWords.h"
#include "packets/space/Packet.h"
#include "testkit/text/PortNames.h"

#include <Acl/AddressMatch.h>
#include <Acl/Protocols.h>
#include <Ip/AddressText.h>

#include <algorithm>
#include <span>
#include <string>

namespace PolicyMapPackets {

namespace {

using PolicyMapTestKit::Text::Family;

// Words with single blanks between them.
class Words {
 public:
  void add(std::string const& word) {
    if (!word.empty()) {
      text_ += (text_.empty() ? "" : " ") + word;
    }
  }
  [[nodiscard]] std::string const& text() const { return text_; }

 private:
  std::string text_;
};

Family familyOf(Slice const& slice) {
  return slice.in(slices::ip4) ? Family::ip4 : slice.in(slices::ip6) ? Family::ip6 : Family::mac;
}

// Its name, if that is read as the same number.
std::string protocolText(Slice const& slice, std::uint32_t number) {
  for (Acl::Protocol const& known : Acl::protocols) {
    auto const read = PolicyMapTestKit::Text::protocolNumber(familyOf(slice), known.name);
    if (read == number) {
      return std::string(known.name);
    }
  }
  return std::to_string(number);
}

std::string addressText(Slice const& slice, Packet::Address const& address) {
  return Ip::addressText(
      std::span(address).first(PolicyMapTestKit::Text::addressSize(familyOf(slice))));
}

std::string endpointText(Packet const& packet, FieldId address, FieldId port) {
  Slice const& slice = packet.slice();
  std::string const text = addressText(slice, packet.address(address));
  if (!slice.has(port) || packet[port] == 0) {
    return text;
  }
  bool const hasColons = slice.in(slices::ip6);
  return (hasColons ? "[" + text + "]" : text) + ":" + std::to_string(packet[port]);
}

// Fields that choose the slice are said even if they are zero.
bool isSaid(Packet const& packet, FieldId field) {
  Slice const& slice = packet.slice();
  if (field == FieldId::ethertype && slice.in(slices::mpls)) {
    return packet[field] != Packet(slice.id())[field];
  }
  return packet[field] != 0 || field == FieldId::vlan || field == FieldId::mplsLabel ||
         field == FieldId::mplsInnerLabel;
}

// "eq 80", "range 20 21", "lt 5", "gt 1023"; nothing for all numbers.
std::string intervalText(Lane const& lane, std::uint32_t highest) {
  if (lane.a == lane.b) {
    return "eq " + std::to_string(lane.a);
  }
  if (lane.a == 0) {
    return lane.b == highest ? "" : "lt " + std::to_string(lane.b + 1);
  }
  return lane.b == highest ? "gt " + std::to_string(lane.a - 1)
                           : "range " + std::to_string(lane.a) + " " + std::to_string(lane.b);
}

std::uint32_t highestOf(Slice const& slice, std::size_t lane) {
  return Box::all(slice)[lane].b;
}

template <class Match>
std::string addressMatchText(Slice const& slice, Box const& box, FieldId field) {
  typename Match::Bytes value{};
  typename Match::Bytes mask{};
  std::size_t at = 0;
  Slice::Place const place = slice.place(field);
  for (std::size_t lane = place.first; lane != std::size_t{place.first} + place.count; ++lane) {
    for (unsigned left = slice.bits(lane) / 8; left-- != 0;) {
      value[at] = static_cast<std::uint8_t>(box[lane].a >> 8 * left);
      mask[at++] = static_cast<std::uint8_t>(box[lane].b >> 8 * left);
    }
  }
  return Match(value, mask).describe();
}

std::string addressMatchText(Slice const& slice, Box const& box, FieldId field) {
  switch (familyOf(slice)) {
  case Family::ip4: return addressMatchText<Acl::IpAddressMatch>(slice, box, field);
  case Family::ip6: return addressMatchText<Acl::Ip6AddressMatch>(slice, box, field);
  case Family::mac: break;
  }
  return addressMatchText<Acl::MacAddressMatch>(slice, box, field);
}

std::string portsText(Slice const& slice, Box const& box, FieldId field) {
  if (!slice.has(field)) {
    return {};
  }
  std::size_t const lane = slice.place(field).first;
  return intervalText(box[lane], highestOf(slice, lane));
}

std::string protocolsText(Slice const& slice, Box const& box) {
  if (auto const only = slice.protocol()) {
    return protocolText(slice, *only);
  }
  if (!slice.has(FieldId::protocol)) {
    return std::string(macWord);
  }
  Lane const& lane = box[slice.place(FieldId::protocol).first];
  if (lane.a == lane.b) {
    return protocolText(slice, lane.a);
  }
  std::string const text = slice.in(slices::ip4) ? "ip" : "ipv6";
  bool const isEvery = lane == Lane{0, 255};
  return isEvery ? text
                 : text + " protocols " + std::to_string(lane.a) + "-" + std::to_string(lane.b);
}

std::string flagsText(Lane const& lane) {
  Words words;
  for (std::size_t bit = 0; bit != flagWords.size(); ++bit) {
    std::uint32_t const mask = std::uint32_t{1} << bit;
    if ((lane.b & mask) != 0) {
      words.add((lane.a & mask) != 0 ? "+" + std::string(flagWords[bit])
                                     : "-" + std::string(flagWords[bit]));
    }
  }
  return words.text();
}

// The numbers that a packet of the slice may have are all numbers.
bool isEvery(Slice const& slice, Box const& box, std::size_t lane) {
  return std::all_of(possible(slice).begin(), possible(slice).end(), [&](Box const& possible) {
    return contains(box[lane], possible[lane], false);
  });
}

}  // namespace

std::string toText(Packet const& packet) {
  Slice const& slice = packet.slice();
  Words words;
  if (slice.in(slices::mac)) {
    words.add(std::string(macWord));
  } else {
    words.add(protocolText(slice, slice.protocol() ? std::uint32_t{*slice.protocol()}
                                                   : packet[FieldId::protocol]));
  }
  words.add(endpointText(packet, slice.source(), FieldId::sourcePort));
  words.add(">");
  words.add(endpointText(packet, slice.destination(), FieldId::destinationPort));
  for (std::size_t bit = 0; slice.in(slices::tcp) && bit != flagWords.size(); ++bit) {
    if ((packet[FieldId::tcpFlags] >> bit & 1U) != 0) {
      words.add(std::string(flagWords[bit]));
    }
  }
  for (FieldWord const& each : fieldWords) {
    if (slice.has(each.field) && isSaid(packet, each.field)) {
      words.add(std::string(each.word));
      words.add(std::to_string(packet[each.field]));
    }
  }
  if (slice.in(slices::fragments)) {
    words.add(std::string(fragmentWord));
  }
  return words.text();
}

std::string toText(Slice const& slice, Box const& box) {
  Words words;
  words.add(protocolsText(slice, box));
  words.add(addressMatchText(slice, box, slice.source()));
  words.add(portsText(slice, box, FieldId::sourcePort));
  words.add(addressMatchText(slice, box, slice.destination()));
  words.add(portsText(slice, box, FieldId::destinationPort));
  if (slice.has(FieldId::tcpFlags)) {
    words.add(flagsText(box[slice.place(FieldId::tcpFlags).first]));
  }
  for (FieldWord const& each : fieldWords) {
    std::size_t const lane = slice.place(each.field).first;
    if (slice.has(each.field) && !isEvery(slice, box, lane)) {
      words.add(std::string(each.word));
      words.add(intervalText(box[lane], highestOf(slice, lane)));
    }
  }
  if (slice.in(slices::fragments)) {
    words.add("fragments");
  }
  return words.text();
}

}  // namespace PolicyMapPackets
