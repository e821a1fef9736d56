// SPDX-License-Identifier: Apache-2.0
#include "lab/RuleConversion.h"

#include <algorithm>
#include <cstddef>

namespace lab {

namespace {

template <class Match>
Match addressMatch(Address const& address) {
  typename Match::Bytes value{};
  typename Match::Bytes mask{};
  std::copy_n(address.value.begin(), Match::size, value.begin());
  std::copy_n(address.mask.begin(), Match::size, mask.begin());
  return Match(value, mask);
}

template <class Configured, class Source>
Configured withAddresses(Source const& rule) {
  Configured configured;
  using Match = typename Configured::AddressMatch;
  configured.sourceIs(addressMatch<Match>(rule.source));
  configured.destinationIs(addressMatch<Match>(rule.destination));
  return configured;
}

template <class Match>
Match numberMatch(NumberMatch const& match) {
  switch (match.comparison) {
  case Comparison::any: break;
  case Comparison::eq: return Match::eq(match.low);
  case Comparison::neq: return Match::neq(match.low);
  // The bounds are those of the matching numbers.
  case Comparison::lt: return Match::lt(match.high + 1);
  case Comparison::gt: return Match::gt(match.low - 1);
  case Comparison::range: return Match::range(match.low, match.high);
  }
  return Match::any();
}

Acl::PortMatch portMatch(PortRange const& range) {
  if (range.isAny()) {
    return Acl::PortMatch::any();
  }
  return range.low == range.high ? Acl::PortMatch::eq(range.low)
                                 : Acl::PortMatch::range(range.low, range.high);
}

template <class Number>
Acl::OptionalNumber optionalNumber(std::optional<Number> const& number) {
  return number ? Acl::OptionalNumber(*number) : Acl::OptionalNumber();
}

template <class Configured>
Configured ipRule(IpRule const& rule) {
  auto configured = withAddresses<Configured>(rule);
  configured.permitIs(rule.verdict == Verdict::permit);
  configured.protocolIs(optionalNumber(rule.protocol));
  configured.srcPortIs(numberMatch<Acl::PortMatch>(rule.sourcePort));
  configured.dstPortIs(numberMatch<Acl::PortMatch>(rule.destinationPort));
  configured.dscpIs(optionalNumber(rule.dscp));
  configured.ttlIs(numberMatch<Acl::TtlMatch>(rule.ttl));
  configured.tcpFlagsIs(Acl::TcpFlags(rule.tcpFlags, rule.tcpFlags));
  configured.establishedIs(rule.established);
  configured.ackOrRstIs(rule.ackOrRst);
  configured.fragmentsIs(rule.fragments);
  if (rule.icmp) {
    configured.icmpTypeIs(rule.icmp->type);
    configured.icmpCodeIs(optionalNumber(rule.icmp->code));
  }
  return configured;
}

Acl::MacRuleConfig macRule(MacRule const& rule) {
  auto configured = withAddresses<Acl::MacRuleConfig>(rule);
  configured.permitIs(rule.verdict == Verdict::permit);
  configured.ethertypeIs(optionalNumber(rule.etherType));
  configured.vlanIs(optionalNumber(rule.vlan));
  return configured;
}

template <class Configured>
Configured filterRule(FilterRule const& rule) {
  auto configured = withAddresses<Configured>(rule);
  configured.protocolIs(optionalNumber(rule.protocol));
  configured.srcPortIs(portMatch(rule.sourcePort));
  configured.dstPortIs(portMatch(rule.destinationPort));
  return configured;
}

}  // namespace

ConfiguredRule configuredRule(Rule const& rule) {
  if (auto const* const mac = std::get_if<MacRule>(&rule)) {
    return macRule(*mac);
  }
  auto const& ip = std::get<IpRule>(rule);
  if (ip.family == Family::ip6) {
    return ipRule<Acl::Ip6RuleConfig>(ip);
  }
  return ipRule<Acl::IpRuleConfig>(ip);
}

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
  return std::visit([](auto const& some) { return PolicyMap::ClassMapMatch::rule(some); }, rule);
}

}  // namespace lab
