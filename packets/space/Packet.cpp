// SPDX-License-Identifier: Apache-2.0
#include "packets/space/Packet.h"

#include <ostream>

namespace PolicyMapPackets {

namespace {

unsigned bytesOf(Slice const& slice, std::size_t lane) {
  return slice.bits(lane) / 8;
}

}  // namespace

Packet::Packet(SliceId slice) : Packet(Slice::of(slice), possible(Slice::of(slice)).front()) {}

Packet::Packet(Slice const& slice, Box const& box) : slice_(&slice), box_(lowestOf(slice, box)) {}

void Packet::fieldIs(FieldId field, std::uint32_t value) {
  std::size_t const lane = slice_->place(field).first;
  box_[lane].a = value;
  if (lane >= slice_->ternaryLanes()) {
    box_[lane].b = value;
  }
}

Packet::Address Packet::address(FieldId field) const {
  Address address{};
  std::size_t at = 0;
  Slice::Place const place = slice_->place(field);
  for (std::size_t lane = place.first; lane != std::size_t{place.first} + place.count; ++lane) {
    for (unsigned left = bytesOf(*slice_, lane); left-- != 0;) {
      address[at++] = static_cast<std::uint8_t>(box_[lane].a >> 8 * left);
    }
  }
  return address;
}

void Packet::addressIs(FieldId field, Address const& address) {
  std::size_t at = 0;
  Slice::Place const place = slice_->place(field);
  for (std::size_t lane = place.first; lane != std::size_t{place.first} + place.count; ++lane) {
    box_[lane].a = 0;
    for (unsigned left = bytesOf(*slice_, lane); left-- != 0;) {
      box_[lane].a = box_[lane].a << 8 | address[at++];
    }
  }
}

bool Packet::operator<(Packet const& other) const {
  return slice_ == other.slice_ ? isLower(*slice_, box_, other.box_)
                                : slice_->id() < other.slice_->id();
}

std::ostream& operator<<(std::ostream& out, Packet const& packet) {
  return out << toText(packet);
}

}  // namespace PolicyMapPackets
