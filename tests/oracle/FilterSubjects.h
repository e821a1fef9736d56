// SPDX-License-Identifier: Apache-2.0
#pragma once

// Filter sets as subjects of proofs, and records that are changed.

#include "packets/Subject.h"
#include "testkit/text/FilterSetGenerator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace PolicyMapPackets::test {

using PolicyMapTestKit::FilterLayout;
using PolicyMapTestKit::Lab;
using PolicyMapTestKit::LabOptions;
using PolicyMapTestKit::RuleRecord;
using PolicyMapTestKit::Text::Family;
using PolicyMapTestKit::Text::FilterSet;
using PolicyMapTestKit::Text::readFilterSet;
using PolicyMapTestKit::Text::SourceText;

inline Subject subjectOf(FilterSet const& rules, std::uint32_t classes, bool subRules) {
  LabOptions options;
  options.subRulesForPorts = subRules;
  Lab lab(options);
  FilterLayout layout;
  layout.classes = classes;
  lab.load(rules, layout);
  for (Subject& subject : subjectsOf(lab)) {
    if (subject.hasRules()) {
      return std::move(subject);
    }
  }
  ADD_FAILURE() << "no rules";
  return {};
}

inline Subject generated(std::size_t rules, std::uint32_t classes, std::uint64_t seed,
                         Family family = Family::ip4) {
  using PolicyMapTestKit::Text::generateFilterSet;
  return subjectOf(readFilterSet(SourceText("generated", generateFilterSet(rules, seed, family))),
                   classes, seed % 2 == 0);
}

// Changes one recorded value.
inline std::string mutate(std::vector<RuleRecord>& rules, std::mt19937& random) {
  auto const below = [&](std::size_t end) { return static_cast<std::size_t>(random() % end); };
  std::size_t const place = below(rules.size());
  RuleRecord& rule = rules[place];
  auto& match = std::get<Acl::IpRuleConfig>(rule.match);
  auto const moved = [&](std::uint32_t value) { return random() % 2 == 0 ? value + 1 : value - 1; };
  switch (below(11)) {
  case 0: std::swap(rule, rules[below(rules.size())]); return "swapped";
  case 1: rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(place)); return "dropped";
  case 2: rules.insert(rules.begin(), RuleRecord(rule)); return "doubled";
  case 3: match.permitIs(!match.permit()); return "permit";
  case 4: ++rule.actions[below(3)]; return "action";
  case 5:
    match.protocolIs(moved(static_cast<std::uint32_t>(match.protocol().valueOr(7))) & 0xff);
    return "protocol";
  case 6: match.sourceIs(Acl::IpAddressMatch(0x0a000000, 0xff000000)); return "source";
  case 7: match.destinationIs(Acl::IpAddressMatch(0x80000000, 0x80000001)); return "destination";
  case 8: match.dscpIs(46); return "dscp";
  case 9:
    if (!rule.subRules.empty()) {
      PolicyMap::SubRuleData& sub = rule.subRules[below(rule.subRules.size())];
      sub.dstPortLowIs(static_cast<std::uint16_t>(moved(sub.dstPortLow()) & 0xffff));
    }
    return "port";
  default:
    rule.key = {rules[below(rules.size())].key.className(), rule.key.aclName(), rule.key.seqno(),
                rule.key.matchOption()};
    return "class";
  }
}

}  // namespace PolicyMapPackets::test
