// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/ExceptSide.h"

namespace PolicyMapPackets {

ExceptSide::ExceptSide(Side const& side, std::vector<Box> const& boxes)
    : Side(side.slice()), side_(side), boxes_(static_cast<LineIndex>(boxes.size())) {
  std::vector<Line> lines;
  lines.reserve(boxes.size() + side.lines().size());
  for (Box const& box : boxes) {
    Line line;
    line.box = box;
    line.rule = noRule;
    line.list = side.lists();
    line.candidate = true;
    line.plain = true;
    lines.push_back(line);
  }
  lines.insert(lines.end(), side.lines().begin(), side.lines().end());
  linesAre(std::move(lines), side.lists() + 1);
}

Outcome ExceptSide::decide(Box const& region, std::span<LineIndex const> relevant) const {
  if (!relevant.empty() && relevant.front() < boxes_) {
    LineIndex const first = relevant.front();
    return {first, !contains(slice(), lines()[first].box, region)};
  }
  std::vector<LineIndex> behind;
  behind.reserve(relevant.size());
  for (LineIndex const line : relevant) {
    behind.push_back(line - boxes_);
  }
  Outcome outcome = side_.decide(region, behind);
  outcome.line += boxes_;
  return outcome;
}

}  // namespace PolicyMapPackets
