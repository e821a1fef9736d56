// SPDX-License-Identifier: Apache-2.0
#pragma once

// Expands a rule into its sub-rules, the entries of the hardware.

#include "Acl/IpFilterBase.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMap/SubRuleData.h"
#include "PolicyMapExport.h"

#include <type_traits>
#include <utility>
#include <vector>

namespace PolicyMap {

// An inclusive range of ports.
struct PortBlock {
  std::uint16_t low = 0;
  std::uint16_t high = SubRuleData::highestPort;
  bool needsRangeChecker = false;

  bool operator==(PortBlock const&) const = default;
};

// How port ranges are programmed in the hardware.
enum class PortExpansion : std::uint8_t {
  rangeChecker,   // one sub-rule per range, flagged if it needs a range checker
  alignedBlocks,  // the fewest blocks that value and mask can express
};

// The fewest aligned blocks that cover exactly [low, high], ascending.
POLICYMAP_API std::vector<PortBlock> alignedBlocks(std::uint16_t low, std::uint16_t high);

// The blocks of a port match, or of the exact ranges if given; ascending, disjoint. Empty if the
// match matches no port.
POLICYMAP_API std::vector<PortBlock> portBlocks(Acl::PortMatch const& match,
                                                PortExpansion expansion,
                                                PortRanges const& exact = {});

// Calls visit(SubRuleData) for every sub-rule until it returns false. Source blocks are the outer
// loop, destination blocks the inner one. All sub-rules are distinct.
template <class Rule, class Visit>
void forEachSubRule(RuleRef<Rule> const& ref, PortExpansion expansion, Visit&& visit) {
  if constexpr (std::is_base_of_v<Acl::IpFilterBase, Rule>) {
    Rule const& rule = ref.rule;
    if (rule.srcPort().isAny() && rule.dstPort().isAny()) {
      visit(SubRuleData());
      return;
    }
    std::vector<PortBlock> const sources = portBlocks(rule.srcPort(), expansion, ref.srcPorts);
    std::vector<PortBlock> const destinations = portBlocks(rule.dstPort(), expansion, ref.dstPorts);
    SubRuleData subRule;
    for (PortBlock const& source : sources) {
      subRule.srcPortLowIs(source.low);
      subRule.srcPortHighIs(source.high);
      subRule.srcPortRangeIs(source.needsRangeChecker);
      for (PortBlock const& destination : destinations) {
        subRule.dstPortLowIs(destination.low);
        subRule.dstPortHighIs(destination.high);
        subRule.dstPortRangeIs(destination.needsRangeChecker);
        if (!visit(std::as_const(subRule))) {
          return;
        }
      }
    }
  } else {
    visit(SubRuleData());
  }
}

}  // namespace PolicyMap
