// SPDX-License-Identifier: Apache-2.0
#include "testkit/text/RuleConversion.h"

namespace PolicyMapTestKit::Text {

namespace {

Acl::PortMatch portMatch(PortRange const& range) {
  if (range.isAny()) {
    return Acl::PortMatch::any();
  }
  return range.low == range.high ? Acl::PortMatch::eq(range.low)
                                 : Acl::PortMatch::range(range.low, range.high);
}

template <class Configured>
Configured filterRule(FilterRule const& rule) {
  using Match = typename Configured::AddressMatch;
  Configured configured;
  configured.sourceIs(addressMatch<Match>(rule.source));
  configured.destinationIs(addressMatch<Match>(rule.destination));
  if (rule.protocol) {
    configured.protocolIs(*rule.protocol);
  }
  configured.srcPortIs(portMatch(rule.sourcePort));
  configured.dstPortIs(portMatch(rule.destinationPort));
  return configured;
}

}  // namespace

ConfiguredRule configuredRule(FilterRule const& rule, Family family) {
  if (family == Family::ip6) {
    return filterRule<Acl::Ip6RuleConfig>(rule);
  }
  return filterRule<Acl::IpRuleConfig>(rule);
}

PolicyMap::ClassMapMatchOption matchOption(Family family) {
  switch (family) {
  case Family::ip4: return PolicyMap::ClassMapMatchOption::ipv4;
  case Family::ip6: return PolicyMap::ClassMapMatchOption::ipv6;
  case Family::mac: break;
  }
  return PolicyMap::ClassMapMatchOption::mac;
}

PolicyMap::ClassMapMatch ownMatch(ConfiguredRule const& rule) {
  using PolicyMap::ClassMapMatch;
  auto const* const mac = std::get_if<Acl::MacRuleConfig>(&rule);
  if (mac != nullptr && mac->mplsExperimental()) {
    return ClassMapMatch::rule(*mac, PolicyMap::ClassMapMatchOption::mpls);
  }
  return std::visit([](auto const& some) { return ClassMapMatch::rule(some); }, rule);
}

}  // namespace PolicyMapTestKit::Text
