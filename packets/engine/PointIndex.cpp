// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/PointIndex.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <set>

namespace PolicyMapPackets {

namespace {

constexpr std::size_t fewLines = 8;
constexpr unsigned mostDepth = 40;

bool isLow(Lane const& lane, bool isTernary, std::uint32_t split) {
  return isTernary ? (lane.b & split) == 0 || (lane.a & split) == 0 : lane.a <= split;
}
bool isHigh(Lane const& lane, bool isTernary, std::uint32_t split) {
  return isTernary ? (lane.b & split) == 0 || (lane.a & split) != 0 : lane.b > split;
}

}  // namespace

PointIndex::PointIndex(Side const& side) : side_(&side) {
  std::vector<LineIndex> lines(side.lines().size());
  std::iota(lines.begin(), lines.end(), LineIndex{0});
  nodes_.emplace_back();
  build(0, Box::all(side.slice()), std::move(lines), 0);
}

// NOLINTNEXTLINE(misc-no-recursion): at most mostDepth calls deep
void PointIndex::build(std::uint32_t node, Box const& region, std::vector<LineIndex> lines,
                       unsigned depth) {
  dropUnreached(region, lines);
  Split const split =
      lines.size() <= fewLines || depth == mostDepth ? Split() : bestSplit(region, lines);
  if (split.largest == 0) {
    nodes_[node].first = static_cast<std::uint32_t>(members_.size());
    nodes_[node].count = static_cast<std::uint32_t>(lines.size());
    members_.insert(members_.end(), lines.begin(), lines.end());
    return;
  }
  auto const child = static_cast<std::uint32_t>(nodes_.size());
  nodes_[node] = {true, split.isTernary, split.lane, split.at, child, 0};
  nodes_.resize(nodes_.size() + 2);
  auto const linesOf = [&](auto const& isThere) {
    std::vector<LineIndex> some;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(some), [&](LineIndex line) {
      return isThere(side_->lines()[line].box[split.lane], split.isTernary, split.at);
    });
    return some;
  };
  std::vector<LineIndex> low = linesOf(isLow);
  std::vector<LineIndex> high = linesOf(isHigh);
  lines = {};
  Box below = region;
  Box above = region;
  if (split.isTernary) {
    below[split.lane].b |= split.at;
    above[split.lane].b |= split.at;
    above[split.lane].a |= split.at;
  } else {
    below[split.lane].b = split.at;
    above[split.lane].a = split.at + 1;
  }
  build(child, below, std::move(low), depth + 1);
  build(child + 1, above, std::move(high), depth + 1);
}

// Those after a line that decides all packets of the region that get so far.
void PointIndex::dropUnreached(Box const& region, std::vector<LineIndex>& lines) const {
  std::set<std::uint32_t> taken;
  for (std::size_t i = 0; i != lines.size(); ++i) {
    Line const& line = side_->lines()[lines[i]];
    if (!line.candidate) {
      taken.insert(line.list);
    } else if (line.plain && !taken.contains(line.list) &&
               contains(side_->slice(), line.box, region)) {
      lines.resize(i + 1);
      return;
    }
  }
}

PointIndex::Split PointIndex::bestSplit(Box const& region,
                                        std::vector<LineIndex> const& lines) const {
  Split best;
  Slice const& slice = side_->slice();
  for (std::size_t lane = 0; lane != slice.lanes(); ++lane) {
    if (lane < slice.ternaryLanes()) {
      tryTernary(lane, lines, best);
    } else {
      tryInterval(lane, region, lines, best);
    }
  }
  return best;
}

void PointIndex::tryTernary(std::size_t lane, std::vector<LineIndex> const& lines,
                            Split& best) const {
  std::array<std::size_t, laneBits> zeros{};
  std::array<std::size_t, laneBits> ones{};
  for (LineIndex const line : lines) {
    Lane const& its = side_->lines()[line].box[lane];
    for (std::uint32_t left = its.b; left != 0; left &= left - 1) {
      auto const bit = static_cast<std::size_t>(std::countr_zero(left));
      ++((its.a >> bit & 1) != 0 ? ones : zeros)[bit];
    }
  }
  for (std::size_t bit = 0; bit != laneBits; ++bit) {
    if (bit >= side_->slice().bits(lane)) {
      break;
    }
    std::size_t const low = lines.size() - ones[bit];
    std::size_t const high = lines.size() - zeros[bit];
    take({static_cast<std::uint8_t>(lane), true, std::uint32_t{1} << bit, std::max(low, high),
          low + high},
         lines.size(), best);
  }
}

void PointIndex::tryInterval(std::size_t lane, Box const& region,
                             std::vector<LineIndex> const& lines, Split& best) const {
  std::vector<std::uint32_t> ends;  // the highest numbers below a border
  for (LineIndex const line : lines) {
    Lane const& its = side_->lines()[line].box[lane];
    if (its.a > region[lane].a) {
      ends.push_back(its.a - 1);
    }
    if (its.b < region[lane].b) {
      ends.push_back(its.b);
    }
  }
  if (ends.empty()) {
    return;
  }
  auto const middle = ends.begin() + static_cast<std::ptrdiff_t>(ends.size() / 2);
  std::nth_element(ends.begin(), middle, ends.end());
  std::size_t low = 0;
  std::size_t high = 0;
  for (LineIndex const line : lines) {
    Lane const& its = side_->lines()[line].box[lane];
    low += isLow(its, false, *middle) ? 1 : 0;
    high += isHigh(its, false, *middle) ? 1 : 0;
  }
  take({static_cast<std::uint8_t>(lane), false, *middle, std::max(low, high), low + high},
       lines.size(), best);
}

void PointIndex::take(Split const& split, std::size_t lines, Split& best) {
  bool const isWorthIt = split.largest * 10 <= lines * 9 && split.sum * 2 <= lines * 3;
  if (isWorthIt && (best.largest == 0 || split.largest + split.sum < best.largest + best.sum)) {
    best = split;
  }
}

}  // namespace PolicyMapPackets
