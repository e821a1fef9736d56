// SPDX-License-Identifier: Apache-2.0
#include "packets/Differences.h"

#include "packets/engine/Comparison.h"
#include "packets/engine/ExceptSide.h"
#include "packets/engine/Surroundings.h"

namespace PolicyMapPackets {

namespace {

class Searching {
 public:
  Searching(Compared const& one, Compared const& other, SearchOptions const& options)
      : one_(one), other_(other), options_(options), budget_(options.budget) {}

  Differences run() {
    for (Slice const& slice : Slice::ofOption(one_.subject.option)) {
      compareSlice(slice);
    }
    found_.isSpent = budget_.isSpent() || isTooLarge(one_) || isTooLarge(other_);
    return std::move(found_);
  }

 private:
  static bool isTooLarge(Compared const& side) {
    return side.said == Said::byConfiguration && side.subject.configured.tooLarge;
  }

  void compareSlice(Slice const& slice) {
    SubjectSide const one(one_.subject, one_.said, slice, options_.deny, treatments_);
    SubjectSide const other(other_.subject, other_.said, slice, options_.deny, treatments_);
    std::vector<Box> const excepted = exceptedBoxes(slice);
    if (excepted.empty()) {
      take(slice, one, other, compare(one.side(), other.side(), budget_));
    } else {
      take(slice, one, other,
           compare(ExceptSide(one.side(), excepted), ExceptSide(other.side(), excepted), budget_));
    }
  }

  [[nodiscard]] std::vector<Box> exceptedBoxes(Slice const& slice) const {
    std::vector<Box> boxes;
    for (PacketSet const& set : options_.except) {
      std::vector<Box> const some = set.boxes(slice);
      boxes.insert(boxes.end(), some.begin(), some.end());
    }
    return boxes;
  }

  void take(Slice const& slice, SubjectSide const& one, SubjectSide const& other,
            SliceDifference const& difference) {
    for (PairDifference const& pair : difference.pairs) {
      ++found_.pairs;
      found_.packets += pair.packets;
      found_.moved[{treatments_.of(pair.one).className, treatments_.of(pair.other).className}] +=
          pair.packets;
      if (found_.differences.size() < options_.first) {
        Box const around = surroundings(one.side(), other.side(), pair.lowest);
        found_.differences.push_back({Packet(slice, pair.lowest), toText(slice, around),
                                      pair.packets, one.rule(pair.oneRule),
                                      other.rule(pair.otherRule), treatments_.of(pair.one),
                                      treatments_.of(pair.other)});
      }
    }
  }

  Compared one_;
  Compared other_;
  SearchOptions const& options_;
  Treatments treatments_;
  Budget budget_;
  Differences found_;
};

}  // namespace

std::string_view toText(Verdict verdict) {
  switch (verdict) {
  case Verdict::same: return "the same";
  case Verdict::different: return "different";
  case Verdict::undecided: return "undecided";
  case Verdict::notProgrammed: break;
  }
  return "not programmed";
}

Verdict Differences::verdictOfSearch() const {
  return pairs != 0 ? Verdict::different : isSpent ? Verdict::undecided : Verdict::same;
}

Differences differencesOf(Compared const& one, Compared const& other,
                          SearchOptions const& options) {
  return Searching(one, other, options).run();
}

}  // namespace PolicyMapPackets
