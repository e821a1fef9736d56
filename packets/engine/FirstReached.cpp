// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/FirstReached.h"

#include "packets/engine/AddressIndex.h"
#include "packets/engine/EmptySide.h"

#include <vector>

namespace PolicyMapPackets {

std::optional<FirstReached> firstReached(Side const& side, Box const& region,
                                         std::function<bool(TreatmentId)> const& isWanted,
                                         Budget& budget) {
  Slice const& slice = side.slice();
  EmptySide const empty(slice);
  LineFinder const finder(side);
  PairSearch search(side, empty, budget);
  std::optional<FirstReached> found;
  for (LineIndex line = 0; line != side.nothing(); ++line) {
    Line const& its = side.lines()[line];
    if (found && found->rule != its.rule) {
      break;
    }
    if (!its.candidate || !isWanted(its.treatment) || !overlap(slice, its.box, region)) {
      continue;
    }
    Box const wanted = intersection(slice, its.box, region);
    std::vector<LineIndex> const beside = finder.overlapping(wanted);
    for (Box const& all : possible(slice)) {
      if (!overlap(slice, wanted, all)) {
        continue;
      }
      search.search(intersection(slice, wanted, all), line, empty.nothing(), beside, {},
                    [&](Box const& part) {
                      Box const lowest = lowestOf(slice, part);
                      if (!found || isLower(slice, lowest, found->lowest)) {
                        found = {its.rule, its.treatment, lowest};
                      }
                      return true;
                    });
    }
  }
  return budget.isSpent() ? std::nullopt : found;
}

}  // namespace PolicyMapPackets
