// SPDX-License-Identifier: Apache-2.0
#include "packets/hardware/RecordedSide.h"

#include "packets/hardware/RecordedBoxes.h"

#include <algorithm>
#include <map>
#include <variant>

namespace PolicyMapPackets {

namespace {

bool permits(PolicyMapTestKit::RuleRecord const& rule) {
  return std::visit([](auto const& match) { return match.permit(); }, rule.match);
}

}  // namespace

RecordedSide::RecordedSide(Slice const& slice,
                           std::vector<PolicyMapTestKit::RuleRecord> const& rules, DenyReading deny,
                           Treatments& treatments)
    : Side(slice) {
  std::map<Kor::Name, std::uint32_t> classes;
  std::vector<Line> lines;
  for (std::uint32_t i = 0; i != rules.size(); ++i) {
    PolicyMapTestKit::RuleRecord const& rule = rules[i];
    Line line;
    line.rule = i;
    line.list =
        classes.try_emplace(rule.key.className(), static_cast<std::uint32_t>(classes.size()))
            .first->second;
    bool const isDeny = !permits(rule);
    line.candidate = !isDeny || deny != DenyReading::nextClass;
    line.plain = line.candidate;
    if (!isDeny || deny == DenyReading::entry) {
      line.treatment = treatments.idOf({rule.key.className().stdString(), rule.actions});
    }
    for (Box const& box : recordedBoxes(slice, rule)) {
      line.box = box;
      lines.push_back(line);
    }
  }
  linesAre(std::move(lines), static_cast<std::uint32_t>(classes.size()));
}

Outcome RecordedSide::decide(Box const& region, std::span<LineIndex const> relevant) const {
  // By class: the first deny that took some of the region, and whether it took all.
  struct Left {
    std::uint32_t list;
    LineIndex line;
    bool all;
  };
  std::vector<Left> left;
  for (LineIndex const index : relevant) {
    Line const& line = lines()[index];
    auto const known = std::find_if(left.begin(), left.end(),
                                    [&](Left const& each) { return each.list == line.list; });
    bool const isAll = contains(slice(), line.box, region);
    if (!line.candidate) {
      if (known == left.end()) {
        left.push_back({line.list, index, isAll});
      } else {
        known->all = known->all || isAll;
      }
      continue;
    }
    if (known != left.end() && known->all) {
      continue;
    }
    if (known != left.end()) {
      return {known->line, true};
    }
    return {index, !isAll};
  }
  return {nothing(), false};
}

}  // namespace PolicyMapPackets
