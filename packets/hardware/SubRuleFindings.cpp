// SPDX-License-Identifier: Apache-2.0
#include "packets/hardware/SubRuleFindings.h"

#include "testkit/Printing.h"

#include <algorithm>
#include <bit>
#include <string_view>
#include <utility>
#include <variant>

namespace PolicyMapPackets {

namespace {

using PolicyMap::SubRuleData;
using PolicyMapTestKit::RuleRecord;

bool overlap(SubRuleData const& a, SubRuleData const& b) {
  return a.srcPortLow() <= b.srcPortHigh() && b.srcPortLow() <= a.srcPortHigh() &&
         a.dstPortLow() <= b.dstPortHigh() && b.dstPortLow() <= a.dstPortHigh();
}

// Sub-rules are sorted by their lowest source port.
bool someOverlap(std::vector<SubRuleData> const& subRules) {
  for (std::size_t i = 0; i != subRules.size(); ++i) {
    for (std::size_t j = i + 1; j != subRules.size(); ++j) {
      if (subRules[j].srcPortLow() > subRules[i].srcPortHigh()) {
        break;
      }
      if (overlap(subRules[i], subRules[j])) {
        return true;
      }
    }
  }
  return false;
}

// Whether a value and a mask say these ports.
bool isAligned(std::uint32_t low, std::uint32_t high) {
  std::uint32_t const size = high - low + 1;
  return low <= high && std::has_single_bit(size) && low % size == 0;
}

bool isOneOrAll(std::uint32_t low, std::uint32_t high) {
  return low == high || (low == 0 && high == SubRuleData::highestPort);
}

std::string_view irregularityOf(SubRuleData const& subRule) {
  if (subRule.srcPortLow() > subRule.srcPortHigh() ||
      subRule.dstPortLow() > subRule.dstPortHigh()) {
    return "a sub-rule has a lowest port above the highest one";
  }
  bool const source = isAligned(subRule.srcPortLow(), subRule.srcPortHigh());
  bool const destination = isAligned(subRule.dstPortLow(), subRule.dstPortHigh());
  if ((!source && !subRule.srcPortRange()) || (!destination && !subRule.dstPortRange())) {
    return "a sub-rule needs a range checker and is not marked";
  }
  if ((subRule.srcPortRange() && isOneOrAll(subRule.srcPortLow(), subRule.srcPortHigh())) ||
      (subRule.dstPortRange() && isOneOrAll(subRule.dstPortLow(), subRule.dstPortHigh()))) {
    return "a sub-rule is marked for a range checker and needs none";
  }
  if (subRule.distinction() != 0) {
    return "a sub-rule has a distinction, which says nothing about packets";
  }
  return {};
}

template <class Match>
bool isInside(std::uint32_t low, std::uint32_t high, Match const& match) {
  auto const ranges = match.ranges();
  return std::any_of(ranges.begin(), ranges.end(),
                     [&](auto const& range) { return range.low <= low && high <= range.high; });
}

bool isInsideMatch(SubRuleData const& subRule, RuleRecord const& rule) {
  return std::visit(
      [&](auto const& match) {
        if constexpr (std::is_base_of_v<Acl::IpFilterBase, std::remove_cvref_t<decltype(match)>>) {
          return isInside(subRule.srcPortLow(), subRule.srcPortHigh(), match.srcPort()) &&
                 isInside(subRule.dstPortLow(), subRule.dstPortHigh(), match.dstPort());
        } else {
          return subRule == SubRuleData();
        }
      },
      rule.match);
}

std::string_view irregularityOf(RuleRecord const& rule) {
  if (rule.subRules.empty()) {
    return "it has no sub-rule";
  }
  for (SubRuleData const& subRule : rule.subRules) {
    if (std::string_view const text = irregularityOf(subRule); !text.empty()) {
      return text;
    }
    if (!isInsideMatch(subRule, rule)) {
      return "the ports of a sub-rule are not in its match";
    }
  }
  return someOverlap(rule.subRules) ? "sub-rules overlap" : std::string_view();
}

}  // namespace

std::vector<std::string> subRuleFindings(std::vector<RuleRecord> const& rules) {
  std::vector<std::string> findings;
  for (RuleRecord const& rule : rules) {
    std::string_view const text = irregularityOf(rule);
    if (!text.empty()) {
      findings.push_back("rule " + PolicyMapTestKit::nameInList(rule.key) + " of class " +
                         rule.key.className().stdString() + ": " + std::string(text));
    }
  }
  return findings;
}

}  // namespace PolicyMapPackets
