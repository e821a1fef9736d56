// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/Bounds.h"

#include <algorithm>

namespace PolicyMapPackets {

Bounds::Bounds(Side const& side, LineFinder const& finder)
    : side_(&side), finder_(&finder), takers_(side.lists(), side.nothing()) {}

LineIndex Bounds::of(Box const& box) {
  overlapping_.clear();
  finder_->forEachOverlapping(box, [this](LineIndex line) { overlapping_.push_back(line); });
  if (!side_->isList()) {
    findTakers();
  }
  Slice const& slice = side_->slice();
  LineIndex bound = side_->nothing();
  for (LineIndex const index : overlapping_) {
    Line const& line = side_->lines()[index];
    bool const mayBound = index < bound && line.candidate && line.plain &&
                          (side_->isList() || index < takers_[line.list]);
    if (mayBound && contains(slice, line.box, box)) {
      bound = index;
    }
  }
  if (!side_->isList()) {
    for (LineIndex const index : overlapping_) {
      takers_[side_->lines()[index].list] = side_->nothing();
    }
  }
  return bound;
}

void Bounds::findTakers() {
  for (LineIndex const index : overlapping_) {
    Line const& line = side_->lines()[index];
    if (!line.candidate) {
      takers_[line.list] = std::min(takers_[line.list], index);
    }
  }
}

}  // namespace PolicyMapPackets
