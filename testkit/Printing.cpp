// SPDX-License-Identifier: Apache-2.0
#include "testkit/Printing.h"

#include <cstdint>
#include <sstream>

namespace PolicyMapTestKit {

namespace {

using PolicyMap::SubRuleData;

void appendPorts(std::string& text, char const* side, std::uint16_t low, std::uint16_t high,
                 bool rangeChecker) {
  if (low == 0 && high == SubRuleData::highestPort) {
    return;
  }
  text += text.empty() ? "" : ", ";
  text += side + std::to_string(low);
  if (low != high) {
    text += "-" + std::to_string(high);
  }
  text += rangeChecker ? " (range checker)" : "";
}

}  // namespace

std::string nameOf(PolicyMap::PolicyMapSmKey const& policy) {
  return policy.first().stdString() + "/" + policy.second().stdString();
}

std::string nameInList(PolicyMap::AclRuleKey const& rule) {
  std::string const number = std::to_string(rule.seqno());
  return rule.aclName().empty() ? number : rule.aclName().stdString() + " " + number;
}

std::string describe(SubRuleData const& subRule) {
  std::string text;
  appendPorts(text, "src ", subRule.srcPortLow(), subRule.srcPortHigh(), subRule.srcPortRange());
  appendPorts(text, "dst ", subRule.dstPortLow(), subRule.dstPortHigh(), subRule.dstPortRange());
  return text.empty() ? "any ports" : text;
}

std::string toText(PolicyMap::ClassMapMatchOption option) {
  std::ostringstream text;
  text << option;
  return text.str();
}

}  // namespace PolicyMapTestKit
