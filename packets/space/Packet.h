// SPDX-License-Identifier: Apache-2.0
#pragma once

// Packet: the headers of one packet that rules look at, as a value.
//
//   Packet const packet = readPacket("tcp 10.0.0.1:4000 > 192.0.2.80:80 syn dscp ef");
//   packet[FieldId::destinationPort];  // 80
//
// What the text does not say is zero. docs/packets.md has the whole syntax.

#include "packets/Export.h"
#include "packets/space/Box.h"
#include "packets/space/Slice.h"
#include "testkit/text/SourceText.h"

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace PolicyMapPackets {

// A text that is no packet, or one that cannot exist. what() is "packet:1:COLUMN: expected X, found
// 'WORD'".
using PolicyMapTestKit::Text::InputError;

class POLICYMAPPACKETS_API Packet {
 public:
  // All fields are zero, but those that cannot be: they have their lowest possible value.
  explicit Packet(SliceId slice);
  // The one packet of a box, or the smallest of several.
  Packet(Slice const& slice, Box const& box);

  [[nodiscard]] Slice const& slice() const { return *slice_; }
  // The set of this packet alone.
  [[nodiscard]] Box const& box() const { return box_; }

  // Of a field that the slice has and that has at most 32 bits.
  [[nodiscard]] std::uint32_t operator[](FieldId field) const {
    return box_[slice_->place(field).first].a;
  }
  void fieldIs(FieldId field, std::uint32_t value);

  // An address in network order; the bytes after it are zero.
  using Address = std::array<std::uint8_t, 16>;
  [[nodiscard]] Address address(FieldId field) const;
  void addressIs(FieldId field, Address const& address);

  bool operator==(Packet const& other) const {
    return slice_ == other.slice_ && box_ == other.box_;
  }
  // By slice, then by the fields in their order.
  bool operator<(Packet const& other) const;

 private:
  Slice const* slice_;
  Box box_;
};

// Throws InputError.
[[nodiscard]] POLICYMAPPACKETS_API Packet readPacket(std::string_view text);
// The packets of a text, one in each line but empty ones and those that begin with '#' or '!'.
[[nodiscard]] POLICYMAPPACKETS_API std::vector<Packet> readPackets(
    PolicyMapTestKit::Text::SourceText const& text);
// As readPacket() reads it, without fields that are zero.
[[nodiscard]] POLICYMAPPACKETS_API std::string toText(Packet const& packet);
POLICYMAPPACKETS_API std::ostream& operator<<(std::ostream& out, Packet const& packet);

// The packets of a box as the match of a rule: "tcp any any eq 80". Fields with all values are left
// out.
[[nodiscard]] POLICYMAPPACKETS_API std::string toText(Slice const& slice, Box const& box);

}  // namespace PolicyMapPackets
