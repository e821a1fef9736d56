// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/AddressIndex.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace PolicyMapPackets {

namespace {

constexpr unsigned keyBits = 64;

}  // namespace

std::uint64_t AddressIndex::Prefix::high() const {
  return length == keyBits ? low : low | ~std::uint64_t{0} >> length;
}

AddressIndex::AddressIndex(Side const& side, FieldId field) {
  Slice const& slice = side.slice();
  Slice::Place const place = slice.place(field);
  lane_ = place.first;
  bits_ = slice.bits(lane_);
  nextBits_ = place.count > 1 ? slice.bits(lane_ + 1) : 0;

  std::vector<Prefix> prefixes;
  prefixes.reserve(side.lines().size());
  for (Line const& line : side.lines()) {
    prefixes.push_back(prefixOf(line.box));
  }
  members_.resize(prefixes.size());
  std::iota(members_.begin(), members_.end(), LineIndex{0});
  std::stable_sort(members_.begin(), members_.end(),
                   [&](LineIndex a, LineIndex b) { return prefixes[a] < prefixes[b]; });
  for (std::size_t i = 0; i != members_.size(); ++i) {
    Prefix const& prefix = prefixes[members_[i]];
    if (nodes_.empty() || nodes_.back().prefix != prefix) {
      nodes_.push_back({prefix, noNode, i, i, 0});
    }
    nodes_.back().end = i + 1;
  }
  linkNodes();
}

void AddressIndex::linkNodes() {
  for (std::uint32_t i = 0; i != nodes_.size(); ++i) {
    Node& node = nodes_[i];
    std::uint32_t parent = i == 0 ? noNode : i - 1;
    while (parent != noNode && !nodes_[parent].prefix.contains(node.prefix)) {
      parent = nodes_[parent].parent;
    }
    node.parent = parent;
    node.withAncestors =
        node.end - node.begin + (parent == noNode ? 0 : nodes_[parent].withAncestors);
  }
}

AddressIndex::Prefix AddressIndex::prefixOf(Box const& box) const {
  auto const aligned = [this, &box](std::uint32_t Lane::*part) {
    std::uint64_t key = std::uint64_t{box[lane_].*part} << (keyBits - bits_);
    if (nextBits_ != 0) {
      key |= std::uint64_t{box[lane_ + 1].*part} << (keyBits - bits_ - nextBits_);
    }
    return key;
  };
  std::uint64_t const mask = aligned(&Lane::b);
  auto const length = static_cast<unsigned>(std::countl_one(mask));
  std::uint64_t const leading = length == 0 ? 0 : ~std::uint64_t{0} << (keyBits - length);
  return {aligned(&Lane::a) & leading, length};
}

AddressIndex::Found AddressIndex::find(Box const& box) const {
  Prefix const prefix = prefixOf(box);
  auto const first =
      std::lower_bound(nodes_.begin(), nodes_.end(), prefix,
                       [](Node const& node, Prefix const& wanted) { return node.prefix < wanted; });
  auto const last = std::upper_bound(
      first, nodes_.end(), prefix.high(),
      [](std::uint64_t wanted, Node const& node) { return wanted < node.prefix.low; });
  Found found;
  found.begin = first == nodes_.end() ? members_.size() : first->begin;
  found.end = last == nodes_.end() ? members_.size() : last->begin;
  found.around =
      first == nodes_.begin() ? noNode : static_cast<std::uint32_t>(first - nodes_.begin()) - 1;
  while (found.around != noNode && !nodes_[found.around].prefix.contains(prefix)) {
    found.around = nodes_[found.around].parent;
  }
  found.count =
      found.end - found.begin + (found.around == noNode ? 0 : nodes_[found.around].withAncestors);
  return found;
}

std::vector<LineIndex> LineFinder::overlapping(Box const& box) const {
  std::vector<LineIndex> lines;
  forEachOverlapping(box, [&](LineIndex line) { lines.push_back(line); });
  std::sort(lines.begin(), lines.end());
  return lines;
}

}  // namespace PolicyMapPackets
