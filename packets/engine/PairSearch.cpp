// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/PairSearch.h"

namespace PolicyMapPackets {

PairSearch::PairSearch(Side const& one, Side const& other, Budget& budget)
    : slice_(&one.slice()), budget_(&budget), one_(one), other_(other) {}

void PairSearch::search(Box const& region, LineIndex one, LineIndex other,
                        std::vector<LineIndex> const& besideOne,
                        std::vector<LineIndex> const& besideOther, Visit const& visit) {
  one_.wanted = one;
  other_.wanted = other;
  visit_ = &visit;
  ended_ = false;
  step(region, besideOne, besideOther);
}

// NOLINTNEXTLINE(misc-no-recursion): each call has fewer lines that overlap its region in part
void PairSearch::step(Box const& region, std::vector<LineIndex> const& one,
                      std::vector<LineIndex> const& other) {
  if (!budget_->take()) {
    return;
  }
  std::vector<LineIndex> const besideOne = relevantOf(one_, region, one);
  std::vector<LineIndex> const besideOther = relevantOf(other_, region, other);
  ++steps_;
  Blocker blocker;
  if (isCovered(one_, region, besideOne, blocker) ||
      isCovered(other_, region, besideOther, blocker)) {
    return;
  }
  std::vector<Box> pieces;
  if (blocker.box != nullptr) {
    cut(*slice_, region, *blocker.box, pieces);  // what is inside is covered
  } else {
    Box const* along = nullptr;
    Answer answer = ask(one_, region, besideOne, along);
    if (answer == Answer::wanted) {
      answer = ask(other_, region, besideOther, along);
    }
    if (answer == Answer::wanted) {
      ended_ = !(*visit_)(region);
    } else if (answer == Answer::undecided) {
      Box const inside = cut(*slice_, region, *along, pieces);
      pieces.push_back(inside);
    }
  }
  for (Box const& piece : pieces) {
    if (ended_) {
      return;
    }
    step(piece, besideOne, besideOther);
  }
}

std::vector<LineIndex> PairSearch::relevantOf(Half const& half, Box const& region,
                                              std::vector<LineIndex> const& lines) const {
  std::vector<LineIndex> relevant;
  for (LineIndex const line : lines) {
    if (half.side->isList() && line >= half.wanted) {
      break;  // nothing after it matters
    }
    if (overlap(*slice_, half.side->lines()[line].box, region)) {
      relevant.push_back(line);
    }
  }
  return relevant;
}

bool PairSearch::isCovered(Half& half, Box const& region, std::vector<LineIndex> const& lines,
                           Blocker& blocker) {
  for (LineIndex const index : lines) {
    if (index >= half.wanted) {
      break;
    }
    Line const& line = half.side->lines()[index];
    if (!line.candidate) {
      half.takers[line.list] = steps_;
      continue;
    }
    if (!line.plain || half.takers[line.list] == steps_) {
      continue;
    }
    unsigned const lanes = lanesOutside(*slice_, region, line.box);
    if (lanes == 0) {
      return true;
    }
    if (lanes < blocker.lanes) {
      blocker = {&line.box, lanes};
    }
  }
  return false;
}

PairSearch::Answer PairSearch::ask(Half const& half, Box const& region,
                                   std::vector<LineIndex> const& lines, Box const*& cutAlong) {
  if (half.side->isList()) {
    return Answer::wanted;  // no earlier line is left
  }
  Outcome const outcome = half.side->decide(region, lines);
  if (!outcome.undecided) {
    return outcome.line == half.wanted ? Answer::wanted : Answer::other;
  }
  cutAlong = &half.side->lines()[outcome.line].box;
  return Answer::undecided;
}

}  // namespace PolicyMapPackets
