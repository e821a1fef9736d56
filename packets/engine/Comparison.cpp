// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/Comparison.h"

#include "packets/engine/AddressIndex.h"
#include "packets/engine/Bounds.h"

#include <algorithm>
#include <map>

namespace PolicyMapPackets {

namespace {

// Intersects a line, which may be nothing(), with a box.
Box meet(Side const& side, LineIndex line, Box const& box) {
  return line == side.nothing() ? box : intersection(side.slice(), side.lines()[line].box, box);
}

std::uint32_t ruleOf(Side const& side, LineIndex line) {
  return line == side.nothing() ? noRule : side.lines()[line].rule;
}

class Comparing {
 public:
  Comparing(Side const& one, Side const& other, Budget& budget)
      : one_(one),
        other_(other),
        budget_(budget),
        findOne_(one),
        findOther_(other),
        boundOne_(one, findOne_),
        boundOther_(other, findOther_),
        search_(one, other, budget) {}

  SliceDifference run() {
    limits_.resize(other_.lines().size(), one_.nothing());
    for (LineIndex line = 0; line != other_.nothing(); ++line) {
      if (other_.lines()[line].candidate) {
        limits_[line] = boundOne_.of(other_.lines()[line].box);
        compareWithNothing(line);
      }
    }
    for (LineIndex line = 0; line != one_.nothing() && !budget_.isSpent(); ++line) {
      if (one_.lines()[line].candidate) {
        compareLine(line);
      }
    }
    return result();
  }

 private:
  // The packets of a line of `other` that no line of `one` decides.
  void compareWithNothing(LineIndex line) {
    if (limits_[line] == one_.nothing() && other_.treatment(line) != noTreatment) {
      Box const& box = other_.lines()[line].box;
      searchPair(one_.nothing(), line, findOne_.overlapping(box), findOther_.overlapping(box));
    }
  }

  void compareLine(LineIndex line) {
    Box const& box = one_.lines()[line].box;
    LineIndex const limit = boundOther_.of(box);
    std::vector<LineIndex> others = differing(line, boundOther_.overlapping(), limit);
    if (limit == other_.nothing() && one_.treatment(line) != noTreatment) {
      others.push_back(limit);
    }
    if (others.empty()) {
      return;
    }
    std::vector<LineIndex> const besideOne = findOne_.overlapping(box);
    std::vector<LineIndex> besideOther = boundOther_.overlapping();
    std::sort(besideOther.begin(), besideOther.end());
    for (LineIndex const other : others) {
      searchPair(line, other, besideOne, besideOther);
    }
  }

  // The lines of the other side that a packet of the line may be decided by, with another
  // treatment.
  [[nodiscard]] std::vector<LineIndex> differing(LineIndex line,
                                                 std::vector<LineIndex> const& overlapping,
                                                 LineIndex limit) const {
    std::vector<LineIndex> lines;
    TreatmentId const treatment = one_.treatment(line);
    for (LineIndex const other : overlapping) {
      Line const& its = other_.lines()[other];
      if (other <= limit && its.candidate && its.treatment != treatment && limits_[other] >= line) {
        lines.push_back(other);
      }
    }
    return lines;
  }

  void searchPair(LineIndex one, LineIndex other, std::vector<LineIndex> const& besideOne,
                  std::vector<LineIndex> const& besideOther) {
    Slice const& slice = one_.slice();
    for (Box const& all : possible(slice)) {
      if ((one != one_.nothing() && !overlap(slice, one_.lines()[one].box, all)) ||
          (other != other_.nothing() && !overlap(slice, other_.lines()[other].box, all))) {
        continue;
      }
      Box const region = meet(one_, one, meet(other_, other, all));
      search_.search(region, one, other, besideOne, besideOther, [&](Box const& part) {
        add(one, other, part);
        return true;
      });
    }
  }

  void add(LineIndex one, LineIndex other, Box const& part) {
    Slice const& slice = one_.slice();
    Box const lowest = lowestOf(slice, part);
    auto const [place, isNew] = pairs_.try_emplace({ruleOf(one_, one), ruleOf(other_, other)});
    PairDifference& pair = place->second;
    if (isNew) {
      pair = {place->first.first,
              place->first.second,
              one_.treatment(one),
              other_.treatment(other),
              {},
              lowest};
    } else if (isLower(slice, lowest, pair.lowest)) {
      pair.lowest = lowest;
    }
    pair.packets += volume(slice, part);
  }

  SliceDifference result() {
    SliceDifference difference{&one_.slice(), {}, budget_.isSpent()};
    for (auto const& [rules, pair] : pairs_) {
      difference.pairs.push_back(pair);
    }
    std::sort(difference.pairs.begin(), difference.pairs.end(),
              [this](PairDifference const& a, PairDifference const& b) {
                return isLower(one_.slice(), a.lowest, b.lowest);
              });
    return difference;
  }

  Side const& one_;
  Side const& other_;
  Budget& budget_;
  LineFinder findOne_;
  LineFinder findOther_;
  Bounds boundOne_;
  Bounds boundOther_;
  PairSearch search_;
  std::vector<LineIndex> limits_;  // by line of `other`: the last of `one` that may decide it
  std::map<std::pair<std::uint32_t, std::uint32_t>, PairDifference> pairs_;
};

}  // namespace

SliceDifference compare(Side const& one, Side const& other, Budget& budget) {
  return Comparing(one, other, budget).run();
}

}  // namespace PolicyMapPackets
