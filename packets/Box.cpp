// SPDX-License-Identifier: Apache-2.0
#include "packets/Box.h"

#include <algorithm>
#include <bit>

namespace PolicyMapPackets {

namespace {

bool overlap(Range const& a, Range const& b, bool isTernary) {
  return isTernary ? ((a.first ^ b.first) & a.second & b.second) == 0
                   : a.first <= b.second && b.first <= a.second;
}

bool contain(Range const& a, Range const& b, bool isTernary) {
  return isTernary ? (a.second & ~b.second) == 0 && (b.first & a.second) == a.first
                   : a.first <= b.first && b.second <= a.second;
}

// Of ranges that overlap.
Range common(Range const& a, Range const& b, bool isTernary) {
  return isTernary ? Range{a.first | b.first, a.second | b.second}
                   : Range{std::max(a.first, b.first), std::min(a.second, b.second)};
}

unsigned ones(Bits bits) {
  constexpr unsigned half = 64;
  return static_cast<unsigned>(std::popcount(static_cast<std::uint64_t>(bits)) +
                               std::popcount(static_cast<std::uint64_t>(bits >> half)));
}

// The parts of `a` that are not in `b`, which overlaps it.
std::vector<Range> outside(Range const& a, Range const& b, bool isTernary) {
  std::vector<Range> parts;
  if (!isTernary) {
    if (a.first < b.first) {
      parts.push_back({a.first, b.first - 1});
    }
    if (b.second < a.second) {
      parts.push_back({b.second + 1, a.second});
    }
    return parts;
  }
  // One for each bit that `b` asks for and `a` does not, the highest first.
  Range inside = a;
  for (Bits left = b.second & ~a.second; left != 0;) {
    Bits bit = left;
    while ((bit & (bit - 1)) != 0) {
      bit &= bit - 1;
    }
    left &= ~bit;
    parts.push_back({inside.first | (~b.first & bit), inside.second | bit});
    inside = {inside.first | (b.first & bit), inside.second | bit};
  }
  return parts;
}

}  // namespace

Box::Box(Space const& space) : space_(&space) {
  for (std::size_t i = 0; i != space.fields.size(); ++i) {
    if (!isTernary(i)) {
      ranges_.at(i).second = (Bits{1} << space.bitsOf(space.fields[i])) - 1;
    }
  }
  if (std::size_t const place = space.placeOf(Field::protocol); place != space.fields.size()) {
    ranges_.at(place) = {space.protocols.front().first, space.protocols.front().second};
  }
}

std::vector<Box> wholeOf(Space const& space) {
  std::vector<Box> boxes;
  for (auto const& [low, high] : space.protocols) {
    boxes.emplace_back(space);
    if (space.placeOf(Field::protocol) == space.fields.size()) {
      break;
    }
    boxes.back().set(Field::protocol, {low, high});
  }
  return boxes;
}

bool Box::overlaps(Box const& other) const {
  for (std::size_t i = 0; i != space_->fields.size(); ++i) {
    if (!overlap(ranges_[i], other.ranges_[i], isTernary(i))) {
      return false;
    }
  }
  return true;
}

bool Box::contains(Box const& other) const {
  for (std::size_t i = 0; i != space_->fields.size(); ++i) {
    if (!contain(ranges_[i], other.ranges_[i], isTernary(i))) {
      return false;
    }
  }
  return true;
}

std::optional<Box> Box::intersection(Box const& other) const {
  if (!overlaps(other)) {
    return std::nullopt;
  }
  Box both = *this;
  for (std::size_t i = 0; i != space_->fields.size(); ++i) {
    both.ranges_[i] = common(ranges_[i], other.ranges_[i], isTernary(i));
  }
  return both;
}

std::vector<Box> Box::without(Box const& other) const {
  if (!overlaps(other)) {
    return {*this};
  }
  std::vector<Box> parts;
  Box inside = *this;
  for (std::size_t i = 0; i != space_->fields.size(); ++i) {
    for (Range const& range : outside(inside.ranges_[i], other.ranges_[i], isTernary(i))) {
      parts.push_back(inside);
      parts.back().ranges_[i] = range;
    }
    inside.ranges_[i] = common(inside.ranges_[i], other.ranges_[i], isTernary(i));
  }
  return parts;
}

Count Box::packets() const {
  Count count(1);
  for (std::size_t i = 0; i != space_->fields.size(); ++i) {
    if (isTernary(i)) {
      count <<= space_->bitsOf(space_->fields[i]) - ones(ranges_[i].second);
    } else {
      count *= static_cast<std::uint64_t>(ranges_[i].second - ranges_[i].first + 1);
    }
  }
  return count;
}

Box Box::lowest() const {
  Box packet = *this;
  for (std::size_t i = 0; i != space_->fields.size(); ++i) {
    unsigned const bits = space_->bitsOf(space_->fields[i]);
    constexpr unsigned most = 128;
    Bits const all = bits == most ? ~Bits{0} : (Bits{1} << bits) - 1;
    packet.ranges_[i].second = isTernary(i) ? all : ranges_[i].first;
  }
  return packet;
}

bool Box::startsBefore(Box const& other) const {
  return std::lexicographical_compare(
      ranges_.begin(), ranges_.end(), other.ranges_.begin(), other.ranges_.end(),
      [](Range const& a, Range const& b) { return a.first < b.first; });
}

}  // namespace PolicyMapPackets
