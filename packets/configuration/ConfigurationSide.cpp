// SPDX-License-Identifier: Apache-2.0
#include "packets/configuration/ConfigurationSide.h"

#include "packets/configuration/ConfiguredBoxes.h"

#include <algorithm>
#include <utility>

namespace PolicyMapPackets {

struct ConfigurationSide::Building {
  Slice const& slice;
  std::vector<Line> lines;
  std::vector<ConfiguredRule const*> rules;
  std::uint32_t lists = 0;
  TreatmentId treatment = noTreatment;
};

namespace {

bool permits(ConfiguredRule const& rule) {
  return std::visit([](auto const& match) { return match.permit(); }, rule.match);
}

// The lines from `begin` to `end` among ascending ones.
std::span<LineIndex const> linesOf(std::span<LineIndex const> lines, LineIndex begin,
                                   LineIndex end) {
  auto const first = std::lower_bound(lines.begin(), lines.end(), begin);
  auto const last = std::lower_bound(first, lines.end(), end);
  return {first, last};
}

}  // namespace

ConfigurationSide::ConfigurationSide(Slice const& slice, ConfiguredPolicy const& policy,
                                     Treatments& treatments)
    : Side(slice) {
  Building building{slice, {}, {}};
  for (ConfiguredClass const& each : policy.classes) {
    building.treatment = treatments.idOf(each.treatment);
    classes_.push_back(build(each.match, building, true, true));
  }
  rules_ = std::move(building.rules);
  linesAre(std::move(building.lines), building.lists);
}

// The packets of "all" parts are in each of them, so the lines of the first one are enough as
// candidates.
// NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
ConfigurationSide::Node ConfigurationSide::build(MatchTree const& tree, Building& building,
                                                 bool isCandidate, bool isPlain) {
  Node node{tree.kind, static_cast<LineIndex>(building.lines.size()), 0, {}};
  if (tree.kind == MatchTree::Kind::list) {
    addList(tree, building, isCandidate, isPlain);
  }
  bool const isAll = tree.kind == MatchTree::Kind::all && tree.parts.size() > 1;
  for (MatchTree const& part : tree.parts) {
    bool const isFirst = &part == &tree.parts.front();
    node.parts.push_back(
        build(part, building, isCandidate && (!isAll || isFirst), isPlain && !isAll));
  }
  node.end = static_cast<LineIndex>(building.lines.size());
  return node;
}

void ConfigurationSide::addList(MatchTree const& tree, Building& building, bool isCandidate,
                                bool isPlain) {
  for (ConfiguredRule const& rule : tree.rules) {
    Line line;
    line.rule = static_cast<std::uint32_t>(building.rules.size());
    building.rules.push_back(&rule);
    line.list = building.lists;
    line.candidate = isCandidate && permits(rule);
    line.plain = line.candidate && isPlain;
    line.treatment = line.candidate ? building.treatment : noTreatment;
    for (Box const& box : configuredBoxes(building.slice, rule.match)) {
      line.box = box;
      building.lines.push_back(line);
    }
  }
  ++building.lists;
}

Outcome ConfigurationSide::decide(Box const& region, Lines relevant) const {
  while (!relevant.empty()) {
    auto const node =
        std::upper_bound(classes_.begin(), classes_.end(), relevant.front(),
                         [](LineIndex line, Node const& each) { return line < each.end; });
    Lines const lines = linesOf(relevant, node->begin, node->end);
    if (auto const outcome = evaluate(*node, region, lines)) {
      return *outcome;
    }
    relevant = relevant.subspan(lines.size());
  }
  return {nothing(), false};
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
std::optional<Outcome> ConfigurationSide::evaluate(Node const& node, Box const& region,
                                                   Lines relevant) const {
  switch (node.kind) {
  case MatchTree::Kind::list: return evaluateList(region, relevant);
  case MatchTree::Kind::any: return evaluateAny(node, region, relevant);
  case MatchTree::Kind::all: break;
  }
  return evaluateAll(node, region, relevant);
}

// Permits of which some packets are denied before, or that contain only some, cut the region: the
// rule that decides is part of the answer.
std::optional<Outcome> ConfigurationSide::evaluateList(Box const& region, Lines relevant) const {
  std::optional<LineIndex> partlyDenied;
  for (LineIndex const index : relevant) {
    Line const& line = lines()[index];
    bool const isPermit = permits(*rules_[line.rule]);
    bool const isAll = contains(slice(), line.box, region);
    if (isPermit) {
      return partlyDenied ? Outcome{*partlyDenied, true} : Outcome{index, !isAll};
    }
    if (isAll) {
      return std::nullopt;
    }
    if (!partlyDenied) {
      partlyDenied = index;
    }
  }
  return std::nullopt;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
std::optional<Outcome> ConfigurationSide::evaluateAny(Node const& node, Box const& region,
                                                      Lines relevant) const {
  for (Node const& part : node.parts) {
    if (auto const outcome = evaluate(part, region, linesOf(relevant, part.begin, part.end))) {
      return outcome;
    }
  }
  return std::nullopt;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as class-maps are nested
std::optional<Outcome> ConfigurationSide::evaluateAll(Node const& node, Box const& region,
                                                      Lines relevant) const {
  std::optional<Outcome> first;
  std::optional<Outcome> undecided;
  for (Node const& part : node.parts) {
    auto const outcome = evaluate(part, region, linesOf(relevant, part.begin, part.end));
    if (!outcome) {
      return std::nullopt;
    }
    if (!first) {
      first = outcome;
    }
    if (outcome->undecided && !undecided) {
      undecided = outcome;
    }
  }
  return undecided ? undecided : first;
}

}  // namespace PolicyMapPackets
