// SPDX-License-Identifier: Apache-2.0
#include "packets/engine/Usage.h"

#include "packets/engine/AddressIndex.h"
#include "packets/engine/Bounds.h"
#include "packets/engine/EmptySide.h"

#include <algorithm>
#include <optional>

namespace PolicyMapPackets {

namespace {

class Using {
 public:
  Using(Side const& side, std::vector<RuleUsage>& usage, Budget& budget)
      : side_(side),
        empty_(side.slice()),
        budget_(budget),
        finder_(side),
        bounds_(side, finder_),
        alone_(side, empty_, budget),
        both_(side, side, budget),
        usage_(usage),
        plainLists_(side.lists()) {}

  void run() {
    for (Line const& line : side_.lines()) {
      plainLists_[line.list] = plainLists_[line.list] || line.plain;
    }
    for (LineIndex line = 0; line != side_.nothing(); ++line) {
      Line const& its = side_.lines()[line];
      RuleUsage& usage = usage_[its.rule];
      usage.matches = true;
      usage.isCandidate = usage.isCandidate || its.candidate;
      if (usage.matters && (usage.isReached || !its.candidate)) {
        continue;
      }
      LineIndex const bound = bounds_.of(its.box);
      beside_ = bounds_.overlapping();
      std::sort(beside_.begin(), beside_.end());
      if (its.candidate) {
        lookAtCandidate(line, bound, usage);
      } else {
        usage.matters = takerMatters(line);
      }
    }
    for (RuleUsage& usage : usage_) {
      if (usage.isReached) {
        usage.coveredBy.clear();
      }
      if (!usage.isReached || usage.matters) {
        usage.replacedBy.clear();
      }
    }
  }

 private:
  using Lines = std::vector<LineIndex>;

  void lookAtCandidate(LineIndex line, LineIndex bound, RuleUsage& usage) {
    std::uint32_t const rule = side_.lines()[line].rule;
    if (bound < line && side_.lines()[bound].rule != rule) {
      usage.coveredBy.insert(side_.lines()[bound].rule);
      return;
    }
    std::set<std::uint32_t> cover;
    std::optional<Box> const packet = reachedPacket(line, cover);
    if (packet) {
      usage.isReached = true;
      lookForReplacement(line, *packet, usage);
    } else if (budget_.isSpent()) {
      usage.isReached = true;
      usage.matters = true;
    } else {
      dropNeedless(line, cover);
      usage.coveredBy.insert(cover.begin(), cover.end());
    }
  }

  // A part that the line decides if of the candidates before it only those of its own rule and of
  // these rules are there. None if there is none, or if the budget is spent.
  [[nodiscard]] std::optional<Box> leftOver(LineIndex line, std::set<std::uint32_t> const& rules) {
    Lines const beside = withoutOthers(rules, line);
    std::optional<Box> found;
    forEachPart(side_.lines()[line].box, [&](Box const& region) {
      alone_.search(region, line, empty_.nothing(), beside, {}, [&](Box const& part) {
        found = part;
        return false;
      });
      return !found;
    });
    return found;
  }

  // A packet that the line decides. Of the rules before it only those that turn out to be needed
  // are looked at, and are added to `cover`: few of many that overlap. Without a packet they take
  // all, or the budget is spent.
  [[nodiscard]] std::optional<Box> reachedPacket(LineIndex line, std::set<std::uint32_t>& cover) {
    while (auto const part = leftOver(line, cover)) {
      Box const packet = lowestOf(side_.slice(), *part);
      LineIndex const taker = largestAround(packet, line, cover);
      if (taker == line) {
        return packet;
      }
      cover.insert(side_.lines()[taker].rule);
    }
    return std::nullopt;
  }

  void dropNeedless(LineIndex line, std::set<std::uint32_t>& cover) {
    std::set<std::uint32_t> const rules = cover;
    for (std::uint32_t const rule : rules) {
      cover.erase(rule);
      if (leftOver(line, cover) || budget_.isSpent()) {
        cover.insert(rule);
      }
    }
  }

  // The candidate before the line, of none of these rules, with the most packets that has this one.
  // The line itself if there is none.
  [[nodiscard]] LineIndex largestAround(Box const& packet, LineIndex line,
                                        std::set<std::uint32_t> const& rules) const {
    LineIndex best = line;
    Count most;
    for (LineIndex const each : beside_) {
      Line const& its = side_.lines()[each];
      if (each >= line || !its.candidate || rules.contains(its.rule) ||
          !contains(side_.slice(), its.box, packet)) {
        continue;
      }
      Count const packets = volume(side_.slice(), its.box);
      if (packets > most) {
        best = each;
        most = packets;
      }
    }
    return best;
  }

  // The lines beside it, with only those candidates before it that are of these rules.
  [[nodiscard]] Lines withoutOthers(std::set<std::uint32_t> const& rules, LineIndex line) const {
    std::uint32_t const own = side_.lines()[line].rule;
    Lines lines = beside_;
    std::erase_if(lines, [&](LineIndex each) {
      Line const& its = side_.lines()[each];
      return each < line && its.candidate && its.rule != own && !rules.contains(its.rule);
    });
    return lines;
  }

  // Sets usage.matters if some packet is treated differently without the rule of the line.
  void lookForReplacement(LineIndex line, Box const& packet, RuleUsage& usage) {
    Line const& own = side_.lines()[line];
    Lines const without = withoutRule(own.rule);
    // For most rules one packet is enough.
    if (side_.treatment(deciding(packet, without)) != own.treatment) {
      usage.matters = true;
      return;
    }
    LineIndex const last = boundAmong(without, own.box);
    // Earlier lines do not get what they did not get before.
    Lines later = without;
    std::erase_if(later, [&](LineIndex other) {
      return other <= line || other > last || !side_.lines()[other].candidate;
    });
    auto const isOther = [&](LineIndex other) {
      return side_.treatment(other) != own.treatment && bothDecide(line, other);
    };
    usage.matters = std::any_of(later.begin(), later.end(), isOther) ||
                    (last == side_.nothing() && bothDecide(line, last));
    if (usage.matters) {
      return;
    }
    if (last != side_.nothing()) {
      usage.replacedBy.insert(side_.lines()[last].rule);
      return;
    }
    for (LineIndex const other : later) {
      if (bothDecide(line, other)) {
        usage.replacedBy.insert(side_.lines()[other].rule);
      }
    }
  }

  // The line that decides a packet, of those that are given.
  [[nodiscard]] LineIndex deciding(Box const& packet, Lines const& lines) const {
    Lines around;
    for (LineIndex const each : lines) {
      if (overlap(side_.slice(), side_.lines()[each].box, packet)) {
        if (side_.isList()) {
          return each;
        }
        around.push_back(each);
      }
    }
    return side_.decide(packet, around).line;
  }

  // The first plain line that contains a box, without lines that take packets from it.
  [[nodiscard]] LineIndex boundAmong(Lines const& lines, Box const& box) const {
    std::set<std::uint32_t> taken;
    for (LineIndex const each : lines) {
      Line const& its = side_.lines()[each];
      if (!its.candidate) {
        taken.insert(its.list);
      } else if (its.plain && !taken.contains(its.list) && contains(side_.slice(), its.box, box)) {
        return each;
      }
    }
    return side_.nothing();
  }

  // Whether packets of the line are decided by `other` without its rule.
  [[nodiscard]] bool bothDecide(LineIndex line, LineIndex other) {
    Line const& own = side_.lines()[line];
    Box region = own.box;
    if (other != side_.nothing()) {
      region = intersection(side_.slice(), region, side_.lines()[other].box);
    }
    Lines const beside = finder_.overlapping(region);
    Lines without = beside;
    std::erase_if(without, [&](LineIndex each) { return side_.lines()[each].rule == own.rule; });
    bool found = false;
    forEachPart(region, [&](Box const& part) {
      both_.search(part, line, other, beside, without, [&](Box const&) {
        found = true;
        return false;
      });
      return !found;
    });
    return found || budget_.isSpent();
  }

  // Without the line, a candidate of its list may decide what another one decides now.
  [[nodiscard]] bool takerMatters(LineIndex line) {
    Lines const without = withoutRule(side_.lines()[line].rule);
    Lines now;
    for (LineIndex const each : beside_) {
      if (side_.lines()[each].candidate) {
        now.push_back(each);
      }
    }
    Lines then = now;
    std::uint32_t const list = side_.lines()[line].list;
    if (plainLists_[list]) {
      std::erase_if(then, [&](LineIndex each) { return side_.lines()[each].list != list; });
    }
    now.push_back(side_.nothing());
    then.push_back(side_.nothing());
    for (LineIndex const before : now) {
      for (LineIndex const after : then) {
        if (side_.treatment(before) != side_.treatment(after) &&
            changes(line, before, after, without)) {
          return true;
        }
      }
    }
    return false;
  }

  [[nodiscard]] bool changes(LineIndex line, LineIndex before, LineIndex after,
                             Lines const& without) {
    Slice const& slice = side_.slice();
    Box region = side_.lines()[line].box;
    for (LineIndex const each : {before, after}) {
      if (each == side_.nothing()) {
        continue;
      }
      Box const& box = side_.lines()[each].box;
      if (!overlap(slice, region, box)) {
        return false;
      }
      region = intersection(slice, region, box);
    }
    bool found = false;
    forEachPart(region, [&](Box const& part) {
      both_.search(part, before, after, beside_, without, [&](Box const&) {
        found = true;
        return false;
      });
      return !found;
    });
    return found || budget_.isSpent();
  }

  [[nodiscard]] Lines withoutRule(std::uint32_t rule) const {
    Lines lines = beside_;
    std::erase_if(lines, [&](LineIndex each) { return side_.lines()[each].rule == rule; });
    return lines;
  }

  // The possible packets of a box, until `visit` returns false.
  template <class Visit>
  void forEachPart(Box const& box, Visit const& visit) const {
    for (Box const& all : possible(side_.slice())) {
      if (overlap(side_.slice(), all, box) && !visit(intersection(side_.slice(), all, box))) {
        return;
      }
    }
  }

  Side const& side_;
  EmptySide empty_;
  Budget& budget_;
  LineFinder finder_;
  Bounds bounds_;
  PairSearch alone_;
  PairSearch both_;
  Lines beside_;  // the lines that overlap the current one, in order
  std::vector<RuleUsage>& usage_;
  std::vector<bool> plainLists_;  // without other conditions; by list
};

}  // namespace

void addUsage(Side const& side, std::vector<RuleUsage>& usage, Budget& budget) {
  Using(side, usage, budget).run();
}

}  // namespace PolicyMapPackets
