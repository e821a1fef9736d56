// SPDX-License-Identifier: Apache-2.0
#pragma once

// PairSearch: the packets that one line of one side and one line of the other side decide.
//
// A part of the region that an earlier plain line contains is not theirs. Where such a line covers
// a part only, the region is cut along it. What is left is asked of both sides, and cut where they
// cannot say.

#include "packets/Export.h"
#include "packets/engine/Side.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace PolicyMapPackets {

// The work that a question may take, in steps of the search.
class Budget {
 public:
  static constexpr std::uint64_t usual = 10000000;

  explicit Budget(std::uint64_t steps = usual) : left_(steps) {}

  // False if nothing is left.
  bool take() {
    if (left_ == 0) {
      isSpent_ = true;
      return false;
    }
    --left_;
    return true;
  }
  // A step was refused: what is not found need not be absent.
  [[nodiscard]] bool isSpent() const { return isSpent_; }

 private:
  std::uint64_t left_;
  bool isSpent_ = false;
};

class POLICYMAPPACKETS_API PairSearch {
 public:
  // A part of the region that both lines decide. The parts are disjoint. False ends the search.
  using Visit = std::function<bool(Box const& part)>;

  PairSearch(Side const& one, Side const& other, Budget& budget);

  // `one` and `other` are lines, or nothing() of their sides. The others are the lines that overlap
  // the region, in order.
  void search(Box const& region, LineIndex one, LineIndex other,
              std::vector<LineIndex> const& besideOne, std::vector<LineIndex> const& besideOther,
              Visit const& visit);

 private:
  // One of the two sides during a search.
  struct Half {
    explicit Half(Side const& its) : side(&its), takers(its.lists()) {}

    Side const* side;
    LineIndex wanted = 0;
    std::vector<std::uint64_t> takers;  // by list: the step in which one was met
  };
  // Along what a region is cut.
  struct Blocker {
    Box const* box = nullptr;
    unsigned lanes = ~0U;  // in which the region sticks out
  };

  void step(Box const& region, std::vector<LineIndex> const& one,
            std::vector<LineIndex> const& other);
  [[nodiscard]] std::vector<LineIndex> relevantOf(Half const& half, Box const& region,
                                                  std::vector<LineIndex> const& lines) const;
  // True if an earlier line contains the region.
  bool isCovered(Half& half, Box const& region, std::vector<LineIndex> const& lines,
                 Blocker& blocker);
  // What the side says, if it is not that the wanted line decides: a line to cut along, or nothing
  // more to search.
  enum class Answer : std::uint8_t { wanted, other, undecided };
  [[nodiscard]] static Answer ask(Half const& half, Box const& region,
                                  std::vector<LineIndex> const& lines, Box const*& cutAlong);

  Slice const* slice_;
  Budget* budget_;
  Half one_;
  Half other_;
  Visit const* visit_ = nullptr;
  std::uint64_t steps_ = 0;
  bool ended_ = false;
};

}  // namespace PolicyMapPackets
