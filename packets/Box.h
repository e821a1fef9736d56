// SPDX-License-Identifier: Apache-2.0
#pragma once

// Box: the packets of a space that match in each field: addresses and flags by value and mask,
// which may have holes, other fields by an interval.

#include "packets/Count.h"
#include "packets/Export.h"
#include "packets/Space.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace PolicyMapPackets {

// Of a ternary field value and mask, with no value bit outside of the mask; of another one the
// lowest and the highest number.
struct Range {
  Bits first = 0;
  Bits second = 0;

  bool operator==(Range const&) const = default;
};

class POLICYMAPPACKETS_API Box {
 public:
  static constexpr std::size_t mostFields = 9;

  // All packets of the space, which must outlive this object; of `other`, with the first interval
  // of protocols.
  explicit Box(Space const& space);

  [[nodiscard]] Space const& space() const { return *space_; }
  [[nodiscard]] Range const& at(std::size_t place) const { return ranges_.at(place); }
  // The field must be one of the space.
  [[nodiscard]] Range const& of(Field field) const { return ranges_.at(space_->placeOf(field)); }
  void set(Field field, Range range) { ranges_.at(space_->placeOf(field)) = range; }

  // Of two boxes in one space.
  [[nodiscard]] bool overlaps(Box const& other) const;
  [[nodiscard]] bool contains(Box const& other) const;
  [[nodiscard]] std::optional<Box> intersection(Box const& other) const;
  // The packets of this box that are not in the other one, as boxes that do not overlap.
  [[nodiscard]] std::vector<Box> without(Box const& other) const;
  [[nodiscard]] Count packets() const;
  // The packet that is the lowest in each field.
  [[nodiscard]] Box lowest() const;
  // In the order of fields, by their lowest numbers.
  [[nodiscard]] bool startsBefore(Box const& other) const;

  bool operator==(Box const& other) const {
    return space_ == other.space_ && ranges_ == other.ranges_;
  }

 private:
  [[nodiscard]] bool isTernary(std::size_t place) const { return space_->isTernary(place); }

  Space const* space_;
  std::array<Range, mostFields> ranges_{};
};

// All packets of a space.
POLICYMAPPACKETS_API std::vector<Box> wholeOf(Space const& space);

}  // namespace PolicyMapPackets
