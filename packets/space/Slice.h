// SPDX-License-Identifier: Apache-2.0
#pragma once

// Slice: the layout of the packets of one kind of header. A field is kept in lanes of at most 32
// bits: an IPv4 address in one, an IPv6 address in four. Ternary lanes come before intervals.

#include "packets/Export.h"
#include "packets/space/Field.h"

#include <PolicyMap/ClassMapMatchOption.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace PolicyMapPackets {

inline constexpr std::size_t mostLanes = 16;
inline constexpr unsigned laneBits = 32;

class POLICYMAPPACKETS_API Slice {
 public:
  [[nodiscard]] static Slice const& of(SliceId id);
  // Those whose packets a table of rules sees, in order.
  [[nodiscard]] static std::span<Slice const> ofOption(PolicyMap::ClassMapMatchOption option);

  [[nodiscard]] SliceId id() const { return id_; }
  [[nodiscard]] bool in(SliceSet set) const { return (set & setOf(id_)) != 0; }
  // The protocol of all packets; none if they differ in it, or have none.
  [[nodiscard]] std::optional<std::uint8_t> protocol() const;

  [[nodiscard]] std::size_t lanes() const { return lanes_; }
  [[nodiscard]] std::size_t ternaryLanes() const { return ternaryLanes_; }
  // The number of bits of a lane, in its lowest bits.
  [[nodiscard]] unsigned bits(std::size_t lane) const { return bits_[lane]; }

  [[nodiscard]] bool has(FieldId field) const { return place(field).count != 0; }
  // The lanes of a field, the most significant first; none if the slice does not have it.
  struct Place {
    std::uint8_t first = 0;
    std::uint8_t count = 0;
  };
  [[nodiscard]] Place place(FieldId field) const {
    return places_[static_cast<std::size_t>(field)];
  }
  // The lanes in the order of the fields, in which packets are compared.
  [[nodiscard]] std::span<std::uint8_t const> order() const { return {order_.data(), lanes_}; }
  // The fields of the source and the destination.
  [[nodiscard]] FieldId source() const;
  [[nodiscard]] FieldId destination() const;

  // A field of which some values are impossible in this slice, and the intervals of the others.
  struct Allowed {
    FieldId field;
    std::vector<std::array<std::uint32_t, 2>> intervals;
  };
  [[nodiscard]] std::vector<Allowed> const& allowed() const { return allowed_; }

  // For the table of slices only.
  explicit Slice(SliceId id);

 private:
  void addLanes(FieldKind kind);
  void limitFields();

  SliceId id_;
  std::size_t lanes_ = 0;
  std::size_t ternaryLanes_ = 0;
  std::array<std::uint8_t, mostLanes> bits_{};
  std::array<std::uint8_t, mostLanes> order_{};
  std::array<Place, fields.size()> places_{};
  std::vector<Allowed> allowed_;
};

}  // namespace PolicyMapPackets
