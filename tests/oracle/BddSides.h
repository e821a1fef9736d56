// SPDX-License-Identifier: Apache-2.0
#pragma once

// BddSpace: sets of the packets of one slice as binary decision diagrams of BuDDy, which has one
// space at a time. A side becomes one set of packets for each treatment.

#include "packets/Subject.h"
#include "packets/configuration/ConfiguredBoxes.h"
#include "packets/hardware/RecordedBoxes.h"
#include "packets/space/Count.h"
#include "packets/space/Packet.h"

#include <algorithm>
#include <bdd.h>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <variant>
#include <vector>

namespace PolicyMapPackets::test {

class BddSpace {
 public:
  // `nodes` is the size of the table to begin with.
  explicit BddSpace(Slice const& slice, int nodes = 100000) : slice_(slice) {
    bdd_init(nodes, nodes / 10);
    bdd_gbc_hook(nullptr);
    std::vector<std::size_t> lanes(slice.order().begin(), slice.order().end());
    // Numbers first, addresses last: the other way round there are many more nodes.
    std::stable_partition(lanes.begin(), lanes.end(),
                          [&](std::size_t lane) { return lane >= slice.ternaryLanes(); });
    int variables = 0;
    firsts_.resize(slice.lanes());
    for (std::size_t const lane : lanes) {
      firsts_[lane] = variables;
      variables += static_cast<int>(slice.bits(lane));
    }
    bdd_setvarnum(variables);
  }
  BddSpace(BddSpace const&) = delete;
  BddSpace& operator=(BddSpace const&) = delete;
  ~BddSpace() { bdd_done(); }

  [[nodiscard]] bdd of(Box const& box) const {
    bdd set = bddtrue;
    for (std::size_t lane = 0; lane != slice_.lanes(); ++lane) {
      set &= lane < slice_.ternaryLanes() ? ternary(lane, box[lane]) : interval(lane, box[lane]);
    }
    return set;
  }
  [[nodiscard]] bdd of(std::vector<Box> const& boxes) const {
    bdd set = bddfalse;
    for (Box const& box : boxes) {
      set |= of(box);
    }
    return set;
  }

  // The packets of each class with its actions; what is in none is not there.
  using Sets = std::map<Treatment, bdd>;

  [[nodiscard]] Sets recorded(Subject const& subject, DenyReading deny) const {
    Sets sets;
    bdd open = of(possible(slice_));
    std::map<Kor::Name, bdd> left;
    for (PolicyMapTestKit::RuleRecord const& rule : subject.recorded) {
      Kor::Name const& name = rule.key.className();
      bdd& gone = left.try_emplace(name, bddfalse).first->second;
      bdd const taken = of(recordedBoxes(slice_, rule)) & open & !gone;
      bool const permits = std::visit([](auto const& match) { return match.permit(); }, rule.match);
      if (permits || deny == DenyReading::entry) {
        sets.try_emplace({name.stdString(), rule.actions}, bddfalse).first->second |= taken;
        open &= !taken;
      } else if (deny == DenyReading::stop) {
        open &= !taken;
      } else {
        gone |= taken;
      }
    }
    return sets;
  }
  [[nodiscard]] Sets configured(Subject const& subject) const {
    Sets sets;
    bdd open = of(possible(slice_));
    for (ConfiguredClass const& each : subject.configured.classes) {
      bdd const taken = matched(each.match) & open;
      sets.try_emplace(each.treatment, bddfalse).first->second |= taken;
      open &= !taken;
    }
    return sets;
  }

  // The packets that are treated differently.
  [[nodiscard]] static bdd difference(Sets const& one, Sets const& other) {
    bdd set = bddfalse;
    for (auto const& [treatment, packets] : one) {
      auto const its = other.find(treatment);
      set |= its == other.end() ? packets : packets ^ its->second;
    }
    for (auto const& [treatment, packets] : other) {
      set |= one.contains(treatment) ? bddfalse : packets;
    }
    return set;
  }

  [[nodiscard]] Count count(bdd const& set) const {
    std::map<int, Count> known;
    return counted(set, known).shifted(static_cast<unsigned>(levelOf(set)));
  }

  // The smallest packet of a set that is not empty.
  [[nodiscard]] Packet smallest(bdd set) const {
    Box packet = Box::all(slice_);
    for (std::size_t const lane : slice_.order()) {
      unsigned const bits = slice_.bits(lane);
      std::uint32_t value = 0;
      for (unsigned bit = bits; bit-- != 0;) {
        int const variable = variableOf(lane, bit);
        bdd const low = bdd_restrict(set, bdd_nithvar(variable));
        bool const isHigh = low == bddfalse;
        set = isHigh ? bdd_restrict(set, bdd_ithvar(variable)) : low;
        value = value << 1 | (isHigh ? 1 : 0);
      }
      packet[lane] = {value, lane < slice_.ternaryLanes() ? ~std::uint32_t{0} : value};
    }
    return {slice_, packet};
  }

 private:
  // The most significant bit of a lane is its first variable.
  [[nodiscard]] int variableOf(std::size_t lane, unsigned bit) const {
    return firsts_[lane] + static_cast<int>(slice_.bits(lane) - 1 - bit);
  }
  [[nodiscard]] bdd ternary(std::size_t lane, Lane const& values) const {
    bdd set = bddtrue;
    for (unsigned bit = 0; bit != slice_.bits(lane); ++bit) {
      if ((values.b >> bit & 1) != 0) {
        int const variable = variableOf(lane, bit);
        set &= (values.a >> bit & 1) != 0 ? bdd_ithvar(variable) : bdd_nithvar(variable);
      }
    }
    return set;
  }
  [[nodiscard]] bdd interval(std::size_t lane, Lane const& values) const {
    bdd atLeast = bddtrue;
    bdd atMost = bddtrue;
    for (unsigned bit = 0; bit != slice_.bits(lane); ++bit) {
      bdd const variable = bdd_ithvar(variableOf(lane, bit));
      atLeast = (values.a >> bit & 1) != 0 ? variable & atLeast : variable | atLeast;
      atMost = (values.b >> bit & 1) != 0 ? (!variable) | atMost : (!variable) & atMost;
    }
    return atLeast & atMost;
  }

  // NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
  [[nodiscard]] bdd matched(MatchTree const& tree) const {
    if (tree.kind == MatchTree::Kind::list) {
      bdd open = bddtrue;
      bdd set = bddfalse;
      for (ConfiguredRule const& rule : tree.rules) {
        bdd const taken = of(configuredBoxes(slice_, rule.match)) & open;
        if (std::visit([](auto const& match) { return match.permit(); }, rule.match)) {
          set |= taken;
        }
        open &= !taken;
      }
      return set;
    }
    bool const isAll = tree.kind == MatchTree::Kind::all && !tree.parts.empty();
    bdd set = isAll ? bddtrue : bddfalse;
    for (MatchTree const& part : tree.parts) {
      set = isAll ? set & matched(part) : set | matched(part);
    }
    return set;
  }

  [[nodiscard]] static int levelOf(bdd const& set) {
    return set == bddtrue || set == bddfalse ? bdd_varnum() : bdd_var(set);
  }
  // By the variables from that of its node on.
  // NOLINTNEXTLINE(misc-no-recursion): as deep as there are variables
  Count counted(bdd const& set, std::map<int, Count>& known) const {
    if (set == bddtrue || set == bddfalse) {
      return Count(set == bddtrue ? 1 : 0);
    }
    if (auto const found = known.find(set.id()); found != known.end()) {
      return found->second;
    }
    Count count;
    for (bdd const& part : {bdd_low(set), bdd_high(set)}) {
      auto const skipped = static_cast<unsigned>(levelOf(part) - levelOf(set) - 1);
      count += counted(part, known).shifted(skipped);
    }
    return known.emplace(set.id(), count).first->second;
  }

  Slice const& slice_;
  std::vector<int> firsts_;  // the first variable of each lane
};

}  // namespace PolicyMapPackets::test
