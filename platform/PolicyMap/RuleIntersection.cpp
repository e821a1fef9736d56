// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/RuleIntersection.h"

#include <algorithm>
#include <bitset>

namespace PolicyMap {
namespace {

// Each of these answers whether something is left, and puts it into `result`.

bool meet(Acl::OptionalNumber a, Acl::OptionalNumber b, Acl::OptionalNumber& result) {
  result = a ? a : b;
  return !a || !b || a == b;
}

template <class Traits>
bool meet(Acl::AddressMatch<Traits> const& a, Acl::AddressMatch<Traits> const& b,
          Acl::AddressMatch<Traits>& result) {
  auto value = a.value();
  auto mask = a.mask();
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (((a.value()[i] ^ b.value()[i]) & a.mask()[i] & b.mask()[i]) != 0) {
      return false;
    }
    value[i] = static_cast<std::uint8_t>(value[i] | b.value()[i]);
    mask[i] = static_cast<std::uint8_t>(mask[i] | b.mask()[i]);
  }
  result = Acl::AddressMatch<Traits>(value, mask);
  return true;
}

bool meet(Acl::TcpFlags const& a, Acl::TcpFlags const& b, Acl::TcpFlags& result) {
  result = Acl::TcpFlags(a.value() | b.value(), a.mask() | b.mask());
  return ((a.value() ^ b.value()) & a.mask() & b.mask()) == 0;
}

// 0 stands for any.
bool meetIds(std::uint32_t a, std::uint32_t b, std::uint32_t& result) {
  result = a == 0 ? b : a;
  return a == 0 || b == 0 || a == b;
}

// ports ---------------------------------------------------------------------------------

PortRanges rangesOf(Acl::PortMatch const& match, PortRanges const& exact) {
  if (!exact.empty()) {
    return exact;
  }
  auto const ranges = match.ranges();
  return PortRanges(ranges.begin(), ranges.end());
}

// The match that takes just these ranges, or the smallest range around them.
Acl::PortMatch matchAround(PortRanges const& ranges) {
  auto const low = ranges.front().low;
  auto const high = ranges.back().high;
  bool const allButOne = ranges.size() == 2 && low == 0 && high == Acl::PortMatch::highest &&
                         ranges[0].high + 2 == ranges[1].low;
  if (allButOne) {
    return Acl::PortMatch::neq(ranges[0].high + 1);
  }
  return low == high ? Acl::PortMatch::eq(low) : Acl::PortMatch::range(low, high);
}

struct Ports {
  Acl::PortMatch match;
  PortRanges exact;
};

std::optional<Ports> meetPorts(Acl::PortMatch const& a, PortRanges const& aExact,
                               Acl::PortMatch const& b, PortRanges const& bExact) {
  if (a.isAny()) {
    return Ports{b, bExact};
  }
  if (b.isAny()) {
    return Ports{a, aExact};
  }
  PortRanges both;
  for (auto const& x : rangesOf(a, aExact)) {
    for (auto const& y : rangesOf(b, bExact)) {
      auto const low = std::max(x.low, y.low);
      auto const high = std::min(x.high, y.high);
      if (low <= high) {
        both.push_back({low, high});
      }
    }
  }
  if (both.empty()) {
    return std::nullopt;
  }
  Acl::PortMatch const match = matchAround(both);
  return Ports{match, rangesOf(match, {}) == both ? PortRanges() : both};
}

// TTL -----------------------------------------------------------------------------------

constexpr std::size_t ttlCount = 256;
using TtlSet = std::bitset<ttlCount>;

TtlSet setOf(Acl::TtlMatch const& match) {
  TtlSet set;
  for (auto const& range : match.ranges()) {
    for (std::size_t ttl = range.low; ttl <= range.high; ++ttl) {
      set.set(ttl);
    }
  }
  return set;
}

// Nothing when no match says that set.
std::optional<Acl::TtlMatch> matchOf(TtlSet const& set) {
  std::size_t low = 0;
  while (!set[low]) {
    ++low;
  }
  std::size_t high = ttlCount - 1;
  while (!set[high]) {
    --high;
  }
  auto const number = [](std::size_t n) { return static_cast<std::int64_t>(n); };
  if (set.count() == high - low + 1) {
    return low == high ? Acl::TtlMatch::eq(number(low))
                       : Acl::TtlMatch::range(number(low), number(high));
  }
  if (set.count() == ttlCount - 1) {
    std::size_t missing = 0;
    while (set[missing]) {
      ++missing;
    }
    return Acl::TtlMatch::neq(number(missing));
  }
  return std::nullopt;
}

// rules ---------------------------------------------------------------------------------

// Source, destination and action, which all kinds of rules have.
template <class Rule>
bool meetEnds(Rule const& a, Rule const& b, Rule& result) {
  typename Rule::AddressMatch source;
  typename Rule::AddressMatch destination;
  if (!meet(a.source(), b.source(), source) ||
      !meet(a.destination(), b.destination(), destination)) {
    return false;
  }
  result.sourceIs(source);
  result.destinationIs(destination);
  result.permitIs(a.permit() && b.permit());
  return true;
}

// What is left of one optional number of both rules.
template <class Rule, class Getter, class Setter>
bool meetNumber(Rule const& a, Rule const& b, Rule& result, Getter get, Setter set) {
  Acl::OptionalNumber number;
  if (!meet((a.*get)(), (b.*get)(), number)) {
    return false;
  }
  (result.*set)(number);
  return true;
}

template <class Rule>
bool meetNumbers(Rule const& a, Rule const& b, Rule& result) {
  std::uint32_t tni = 0;
  std::uint32_t vni = 0;
  if (!meetNumber(a, b, result, &Rule::protocol, &Rule::protocolIs) ||
      !meetNumber(a, b, result, &Rule::dscp, &Rule::dscpIs) ||
      !meetNumber(a, b, result, &Rule::icmpType, &Rule::icmpTypeIs) ||
      !meetNumber(a, b, result, &Rule::icmpCode, &Rule::icmpCodeIs) ||
      !meetIds(a.tni(), b.tni(), tni) || !meetIds(a.vni(), b.vni(), vni)) {
    return false;
  }
  result.tniIs(tni);
  result.vniIs(vni);
  return true;
}

template <class Rule>
Intersection<Rule> intersectIp(ExactRule<Rule> const& left, ExactRule<Rule> const& right) {
  Rule const& a = left.rule;
  Rule const& b = right.rule;
  ExactRule<Rule> both;
  Acl::TcpFlags flags;
  if (!meetEnds(a, b, both.rule) || !meetNumbers(a, b, both.rule) ||
      !meet(a.tcpFlags(), b.tcpFlags(), flags)) {
    return Disjoint();
  }
  both.rule.tcpFlagsIs(flags);
  both.rule.establishedIs(a.established() || b.established());
  both.rule.ackOrRstIs(a.ackOrRst() || b.ackOrRst());
  both.rule.fragmentsIs(a.fragments() || b.fragments());

  auto const src = meetPorts(a.srcPort(), left.srcPorts, b.srcPort(), right.srcPorts);
  auto const dst = meetPorts(a.dstPort(), left.dstPorts, b.dstPort(), right.dstPorts);
  if (!src || !dst) {
    return Disjoint();
  }
  both.rule.srcPortIs(src->match);
  both.rule.dstPortIs(dst->match);
  both.srcPorts = src->exact;
  both.dstPorts = dst->exact;

  if (a.ttl().isAny() || b.ttl().isAny()) {
    both.rule.ttlIs(a.ttl().isAny() ? b.ttl() : a.ttl());
    return both;
  }
  TtlSet const ttls = setOf(a.ttl()) & setOf(b.ttl());
  if (ttls.none()) {
    return Disjoint();
  }
  std::optional<Acl::TtlMatch> const ttl = matchOf(ttls);
  if (!ttl) {
    return Inexpressible{"TTL"};
  }
  both.rule.ttlIs(*ttl);
  return both;
}

}  // namespace

Intersection<Acl::IpRuleConfig> intersect(ExactRule<Acl::IpRuleConfig> const& a,
                                          ExactRule<Acl::IpRuleConfig> const& b) {
  return intersectIp(a, b);
}

Intersection<Acl::Ip6RuleConfig> intersect(ExactRule<Acl::Ip6RuleConfig> const& a,
                                           ExactRule<Acl::Ip6RuleConfig> const& b) {
  return intersectIp(a, b);
}

Intersection<Acl::MacRuleConfig> intersect(ExactRule<Acl::MacRuleConfig> const& a,
                                           ExactRule<Acl::MacRuleConfig> const& b) {
  using Rule = Acl::MacRuleConfig;
  ExactRule<Rule> both;
  if (!meetEnds(a.rule, b.rule, both.rule) ||
      !meetNumber(a.rule, b.rule, both.rule, &Rule::ethertype, &Rule::ethertypeIs) ||
      !meetNumber(a.rule, b.rule, both.rule, &Rule::vlan, &Rule::vlanIs) ||
      !meetNumber(a.rule, b.rule, both.rule, &Rule::mplsLabel, &Rule::mplsLabelIs) ||
      !meetNumber(a.rule, b.rule, both.rule, &Rule::mplsInnerLabel, &Rule::mplsInnerLabelIs)) {
    return Disjoint();
  }
  return both;
}

}  // namespace PolicyMap
