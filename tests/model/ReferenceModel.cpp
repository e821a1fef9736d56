// SPDX-License-Identifier: Apache-2.0
#include "model/ReferenceModel.h"

#include "machines/TestAction.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace Model {
namespace {

using PolicyMap::ClassMapMatch;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::ClassMapSubConfig;
using PolicyMap::SubRuleData;
using TestSupport::NormalRecord;

// ports

using Range = std::pair<std::uint32_t, std::uint32_t>;  // inclusive
using Ranges = std::vector<Range>;                      // ascending and not adjacent

constexpr std::uint32_t highestPort = 65535;
constexpr std::uint32_t highestTtl = 255;

template <class Match>
Ranges rangesOf(Match const& match, std::uint32_t highest) {
  std::uint32_t const n = match.low();
  Ranges ranges;
  auto const add = [&ranges](std::uint32_t low, std::uint32_t high) {
    ranges.emplace_back(low, high);
  };
  switch (match.op()) {
  case Acl::MatchOp::any: add(0, highest); break;
  case Acl::MatchOp::eq: add(n, n); break;
  case Acl::MatchOp::range: add(n, match.high()); break;
  case Acl::MatchOp::lt:
    if (n > 0) {
      add(0, n - 1);
    }
    break;
  case Acl::MatchOp::gt:
    if (n < highest) {
      add(n + 1, highest);
    }
    break;
  case Acl::MatchOp::neq:
    if (n > 0) {
      add(0, n - 1);
    }
    if (n < highest) {
      add(n + 1, highest);
    }
    break;
  }
  return ranges;
}

Ranges common(Ranges const& a, Ranges const& b) {
  Ranges both;
  for (Range const& x : a) {
    for (Range const& y : b) {
      if (std::max(x.first, y.first) <= std::min(x.second, y.second)) {
        both.emplace_back(std::max(x.first, y.first), std::min(x.second, y.second));
      }
    }
  }
  return both;
}

// Halves the block [low, high] until each part lies inside or outside the range.
void split(Range const& range, std::uint32_t low, std::uint32_t high, Ranges& blocks) {
  if (high < range.first || range.second < low) {
    return;
  }
  if (range.first <= low && high <= range.second) {
    blocks.emplace_back(low, high);
    return;
  }
  std::uint32_t const middle = low + (high - low) / 2;
  split(range, low, middle, blocks);
  split(range, middle + 1, high, blocks);
}

struct Block {
  Range ports;
  bool checker;
};

std::vector<Block> blocksOf(Ranges const& ranges, bool subRulesForPorts) {
  std::vector<Block> blocks;
  for (Range const& range : ranges) {
    if (subRulesForPorts) {
      Ranges parts;
      split(range, 0, highestPort, parts);
      for (Range const& part : parts) {
        blocks.push_back({part, false});
      }
    } else {
      bool const exact = range.first == range.second || range == Range(0, highestPort);
      blocks.push_back({range, !exact});
    }
  }
  return blocks;
}

// rules

template <class Rule>
constexpr bool isMac = std::is_same_v<Rule, Acl::MacRuleConfig>;

// A rule of a class: its list, its number and what it matches. The ports are kept beside the rule,
// because an intersection may match more port ranges than a rule can express.
template <class Rule>
struct Named {
  std::string list;
  std::uint32_t number = 0;
  Rule rule;
  Ranges sources;
  Ranges destinations;
  bool ofList = false;  // whether its number is that in an access list
  int match = 0;  // the rules of one match are a list; so are own rules that follow each other

  Named(std::string listName, std::uint32_t seqno, Rule const& configured)
      : list(std::move(listName)), number(seqno), rule(configured) {
    if constexpr (!isMac<Rule>) {
      sources = rangesOf(rule.srcPort(), highestPort);
      destinations = rangesOf(rule.dstPort(), highestPort);
    }
  }
};

template <class Rule>
using Rules = std::vector<Named<Rule>>;

// True if no packet can match. Such a rule is ignored.
template <class Rule>
bool takesNothing(Rule const& rule) {
  if constexpr (!isMac<Rule>) {
    return rangesOf(rule.srcPort(), highestPort).empty() ||
           rangesOf(rule.dstPort(), highestPort).empty() ||
           rangesOf(rule.ttl(), highestTtl).empty();
  }
  return false;
}

template <class Rule>
std::set<SubRuleData> subRulesOf(Named<Rule> const& named, bool subRulesForPorts) {
  std::set<SubRuleData> subRules;
  if constexpr (isMac<Rule>) {
    subRules.insert(SubRuleData());
  } else {
    for (Block const& source : blocksOf(named.sources, subRulesForPorts)) {
      for (Block const& destination : blocksOf(named.destinations, subRulesForPorts)) {
        SubRuleData subRule;
        subRule.srcPortLowIs(static_cast<std::uint16_t>(source.ports.first));
        subRule.srcPortHighIs(static_cast<std::uint16_t>(source.ports.second));
        subRule.srcPortRangeIs(source.checker);
        subRule.dstPortLowIs(static_cast<std::uint16_t>(destination.ports.first));
        subRule.dstPortHighIs(static_cast<std::uint16_t>(destination.ports.second));
        subRule.dstPortRangeIs(destination.checker);
        subRules.insert(subRule);
      }
    }
  }
  return subRules;
}

template <class Rule>
bool supported(PolicyMap::PolicyMapAclHelper const& helper, Rule const& rule) {
  if (!helper.denyRulesAllowed() && !rule.permit()) {
    return false;
  }
  if constexpr (!isMac<Rule>) {
    bool const ttl = rule.ttl().op() != Acl::MatchOp::any;
    bool const ttlEq = rule.ttl().op() == Acl::MatchOp::eq;
    return (helper.ttlSupported() || !ttl) && (!helper.onlyTtlEqSupported() || !ttl || ttlEq) &&
           (helper.ackOrRstSupported() || !rule.ackOrRst()) &&
           (helper.establishedSupported() || !rule.established());
  }
  return true;
}

// intersections

struct Empty {};
struct NoRuleCanSay {};

Acl::OptionalNumber commonNumber(Acl::OptionalNumber a, Acl::OptionalNumber b) {
  if (a && b && a != b) {
    throw Empty();
  }
  return a ? a : b;
}

std::uint32_t commonId(std::uint32_t a, std::uint32_t b) {
  if (a != 0 && b != 0 && a != b) {
    throw Empty();
  }
  return a != 0 ? a : b;
}

template <class Match>
Match commonAddresses(Match const& a, Match const& b) {
  typename Match::Bytes value{};
  typename Match::Bytes mask{};
  for (std::size_t i = 0; i < Match::size; ++i) {
    for (unsigned bit = 1; bit < 256; bit *= 2) {
      bool const inA = (a.mask()[i] & bit) != 0;
      bool const inB = (b.mask()[i] & bit) != 0;
      bool const isA = (a.value()[i] & bit) != 0;
      bool const isB = (b.value()[i] & bit) != 0;
      if (inA && inB && isA != isB) {
        throw Empty();
      }
      if (inA || inB) {
        mask[i] = static_cast<std::uint8_t>(mask[i] | bit);
      }
      if ((inA && isA) || (inB && isB)) {
        value[i] = static_cast<std::uint8_t>(value[i] | bit);
      }
    }
  }
  return Match(value, mask);
}

// The match for these numbers. Several ranges are expressed by the smallest range that covers them,
// or by `neq` if they are all numbers but one.
template <class Match>
Match said(Ranges const& ranges, std::uint32_t highest) {
  std::uint32_t const low = ranges.front().first;
  std::uint32_t const high = ranges.back().second;
  if (ranges.size() == 2 && low == 0 && high == highest &&
      ranges[0].second + 2 == ranges[1].first) {
    return Match::neq(ranges[0].second + 1);
  }
  // Only TTLs have a match for all numbers but the lowest or the highest; a range is equivalent.
  return low == high ? Match::eq(low) : Match::range(low, high);
}

Acl::TtlMatch commonTtl(Acl::TtlMatch const& a, Acl::TtlMatch const& b) {
  if (a.isAny() || b.isAny()) {
    return a.isAny() ? b : a;
  }
  Ranges const both = common(rangesOf(a, highestTtl), rangesOf(b, highestTtl));
  if (both.empty()) {
    throw Empty();
  }
  auto const match = said<Acl::TtlMatch>(both, highestTtl);
  if (rangesOf(match, highestTtl) != both) {
    throw NoRuleCanSay();
  }
  return match;
}

Acl::PortMatch commonPorts(Acl::PortMatch const& a, Acl::PortMatch const& b, Ranges const& both) {
  if (a.isAny() || b.isAny()) {
    return a.isAny() ? b : a;
  }
  if (both.empty()) {
    throw Empty();
  }
  return said<Acl::PortMatch>(both, highestPort);
}

Acl::TcpFlags commonFlags(Acl::TcpFlags const& a, Acl::TcpFlags const& b) {
  if ((a.value() & b.mask()) != (b.value() & a.mask())) {
    throw Empty();
  }
  return {a.value() | b.value(), a.mask() | b.mask()};
}

void combine(Named<Acl::MacRuleConfig>& both, Acl::MacRuleConfig const& b) {
  Acl::MacRuleConfig& rule = both.rule;
  rule.ethertypeIs(commonNumber(rule.ethertype(), b.ethertype()));
  rule.vlanIs(commonNumber(rule.vlan(), b.vlan()));
  rule.mplsLabelIs(commonNumber(rule.mplsLabel(), b.mplsLabel()));
  rule.mplsInnerLabelIs(commonNumber(rule.mplsInnerLabel(), b.mplsInnerLabel()));
  rule.cosIs(commonNumber(rule.cos(), b.cos()));
  rule.mplsExperimentalIs(commonNumber(rule.mplsExperimental(), b.mplsExperimental()));
}

template <class Rule>
void combine(Named<Rule>& both, Rule const& b) {
  Rule& rule = both.rule;
  rule.protocolIs(commonNumber(rule.protocol(), b.protocol()));
  rule.dscpIs(commonNumber(rule.dscp(), b.dscp()));
  rule.icmpTypeIs(commonNumber(rule.icmpType(), b.icmpType()));
  rule.icmpCodeIs(commonNumber(rule.icmpCode(), b.icmpCode()));
  rule.tniIs(commonId(rule.tni(), b.tni()));
  rule.vniIs(commonId(rule.vni(), b.vni()));
  rule.tcpFlagsIs(commonFlags(rule.tcpFlags(), b.tcpFlags()));
  rule.establishedIs(rule.established() || b.established());
  rule.ackOrRstIs(rule.ackOrRst() || b.ackOrRst());
  rule.fragmentsIs(rule.fragments() || b.fragments());
  rule.srcPortIs(commonPorts(rule.srcPort(), b.srcPort(), both.sources));
  rule.dstPortIs(commonPorts(rule.dstPort(), b.dstPort(), both.destinations));
  rule.ttlIs(commonTtl(rule.ttl(), b.ttl()));
}

// Joins the names of lists with " & ". All but the first are followed by their rule numbers.
std::string joinedName(std::string const& a, std::string const& b, std::uint32_t numberOfB) {
  std::size_t const rest = std::min(b.find(" & "), b.size());
  return a + " & " + b.substr(0, rest) + ":" + std::to_string(numberOfB) + b.substr(rest);
}

// Throws Empty or NoRuleCanSay.
template <class Rule>
Named<Rule> intersection(Named<Rule> const& a, Named<Rule> const& b) {
  Named<Rule> both = a;
  both.list = joinedName(a.list, b.list, b.number);
  both.sources = common(a.sources, b.sources);
  both.destinations = common(a.destinations, b.destinations);
  both.rule.permitIs(a.rule.permit() && b.rule.permit());
  both.rule.sourceIs(commonAddresses(a.rule.source(), b.rule.source()));
  both.rule.destinationIs(commonAddresses(a.rule.destination(), b.rule.destination()));
  combine(both, b.rule);
  return both;
}

template <class Rule>
Rules<Rule> product(Rules<Rule> const& left, Rules<Rule> const& right) {
  Rules<Rule> all;
  for (Named<Rule> const& a : left) {
    for (Named<Rule> const& b : right) {
      try {
        all.push_back(intersection(a, b));
      } catch (Empty const&) {  // NOLINT(bugprone-empty-catch): no packet matches both
      }
    }
  }
  return all;
}

// class-maps

struct Refused {};

// The rules of a class-map, or of one operand of a match-all, and their sources.
template <class Rule>
struct OptionRules {
  Rules<Rule> rules;            // with the numbers that they request
  std::set<std::string> lists;  // already included
  bool matched = false;         // something matches on this option, even an empty list
};

// The rules that match packets, with unique numbers. The first rule to request a number gets it,
// with rules of lists before all others. Each other rule gets the first free number after the
// requested one, or the last free number before it if there is none after it.
template <class Rule>
Rules<Rule> numbered(Rules<Rule> rules) {
  std::set<std::pair<std::string, std::uint32_t>> taken;
  for (Named<Rule> const& rule : rules) {
    if (rule.ofList) {
      taken.emplace(rule.list, rule.number);
    }
  }
  std::vector<Named<Rule>*> late;
  for (Named<Rule>& rule : rules) {
    if (!rule.ofList && !taken.emplace(rule.list, rule.number).second) {
      late.push_back(&rule);
    }
  }
  for (Named<Rule>* const rule : late) {
    std::uint32_t const asked = rule->number;
    while (rule->number != 0xffffffffU && taken.count({rule->list, rule->number}) != 0) {
      ++rule->number;
    }
    if (taken.count({rule->list, rule->number}) != 0) {
      rule->number = asked;
      while (taken.count({rule->list, rule->number}) != 0) {
        --rule->number;
      }
    }
    taken.emplace(rule->list, rule->number);
  }
  std::erase_if(rules, [](Named<Rule> const& rule) { return takesNothing(rule.rule); });
  return rules;
}

struct Flat {
  OptionRules<Acl::IpRuleConfig> ipv4;
  OptionRules<Acl::Ip6RuleConfig> ipv6;
  OptionRules<Acl::MacRuleConfig> mac;
  OptionRules<Acl::MacRuleConfig> mpls;
  std::set<Kor::Name> nested;  // already included
};

template <class Rule, class List>
void addList(OptionRules<Rule>& into, Kor::Name const& name, Kor::Ptr<List> const& list,
             int match) {
  if (!list || !into.lists.insert(name.stdString()).second) {
    return;
  }
  into.matched = true;
  std::map<std::uint32_t, Rule> ordered;
  for (auto const& entry : list->ruleIteratorConst()) {
    ordered.emplace(entry.key(), entry.value());
  }
  for (auto const& [number, rule] : ordered) {
    Named<Rule>& added = into.rules.emplace_back(name.stdString(), number, rule);
    added.ofList = true;
    added.match = match;
  }
}

template <class Rule>
void addOwn(OptionRules<Rule>& into, std::uint32_t place, Rule const& rule, int match) {
  into.matched = true;
  into.rules.emplace_back(std::string(), place, rule).match = match;
}

// match-any: each match by itself

template <class Rule>
bool meet(Named<Rule> const& a, Named<Rule> const& b) {
  try {
    (void)intersection(a, b);
  } catch (Empty const&) {
    return false;
  } catch (NoRuleCanSay const&) {  // NOLINT(bugprone-empty-catch): they meet
  }
  return true;
}

template <class Rule>
bool permitsSome(Rules<Rule> const& rules, Named<Rule> const& of) {
  return std::any_of(rules.begin(), rules.end(),
                     [&](Named<Rule> const& rule) { return rule.rule.permit() && meet(of, rule); });
}

// Gives new rules numbers that no rule of their name has.
template <class Rule>
void numberNew(Rules<Rule>& rules, std::set<std::string> const& names) {
  std::set<std::pair<std::string, std::uint32_t>> taken;
  for (Named<Rule> const& rule : rules) {
    if (rule.match >= 0) {
      taken.emplace(rule.list, rule.number);
    }
  }
  for (Named<Rule>& rule : rules) {
    while (rule.match < 0 && names.count(rule.list) != 0 &&
           !taken.emplace(rule.list, rule.number).second) {
      ++rule.number;
    }
  }
}

// What a rule denies, the rules of later matches may permit. Throws Refused.
template <class Rule>
Rules<Rule> united(Rules<Rule> const& all) {
  Rules<Rule> united;
  Rules<Rule> last;
  std::set<std::string> names;
  for (auto end = all.end(); end != all.begin();) {
    auto begin = end;
    while (begin != all.begin() && std::prev(begin)->match == std::prev(end)->match) {
      --begin;
    }
    Rules<Rule> own;
    Rules<Rule> afterAll;
    for (auto rule = begin; rule != end; ++rule) {
      if (rule->rule.permit() || !permitsSome(united, *rule)) {
        own.push_back(*rule);
      } else if (!permitsSome(Rules<Rule>(std::next(rule), end), *rule)) {
        afterAll.push_back(*rule);
      } else {
        Named<Rule> permitting = *rule;
        permitting.rule.permitIs(true);
        try {
          Rules<Rule> met = product({permitting}, united);
          while (!met.back().rule.permit()) {
            met.pop_back();
          }
          for (Named<Rule>& each : met) {
            each.match = -1;
            names.insert(each.list);
            own.push_back(std::move(each));
          }
        } catch (NoRuleCanSay const&) {
          throw Refused();
        }
        own.push_back(*rule);
      }
    }
    united.insert(united.begin(), own.begin(), own.end());
    last.insert(last.begin(), afterAll.begin(), afterAll.end());
    end = begin;
  }
  united.insert(united.end(), last.begin(), last.end());
  numberNew(united, names);
  return united;
}

class Flattener {
 public:
  explicit Flattener(Inputs const& inputs) : inputs_(inputs) {}

  // Throws Refused.
  [[nodiscard]] Flat flat(ClassMapSubConfig const& classMap) {
    Flat all;
    path_ = {classMap.name()};
    walk(classMap, all);
    all.ipv4.rules = united(numbered(std::move(all.ipv4.rules)));
    all.ipv6.rules = united(numbered(std::move(all.ipv6.rules)));
    all.mac.rules = united(numbered(std::move(all.mac.rules)));
    all.mpls.rules = united(numbered(std::move(all.mpls.rules)));
    return all;
  }

 private:
  void walk(ClassMapSubConfig const& classMap, Flat& into) {
    std::map<std::uint32_t, ClassMapMatch> matches;
    for (auto const& entry : classMap.matchIteratorConst()) {
      matches.emplace(entry.key(), entry.value());
    }
    if (classMap.matchType() == PolicyMap::ClassMapMatchType::matchAny) {
      for (auto const& [place, match] : matches) {
        add(place, match, into);
      }
      return;
    }
    // Each match only once.
    std::map<std::uint32_t, ClassMapMatch> distinct;
    for (auto const& [place, match] : matches) {
      if (std::none_of(distinct.begin(), distinct.end(),
                       [&wanted = match](auto const& other) { return other.second == wanted; })) {
        distinct.emplace(place, match);
      }
    }
    if (distinct.size() == 1) {
      add(distinct.begin()->first, distinct.begin()->second, into);
    } else if (!distinct.empty()) {
      matchAll(distinct, into);
    }
  }

  void matchAll(std::map<std::uint32_t, ClassMapMatch> const& matches, Flat& into) {
    std::vector<Flat> operands;
    bool ip = false;
    bool mac = false;
    for (auto const& [place, match] : matches) {
      Flat& operand = operands.emplace_back();
      add(place, match, operand);
      ip = ip || operand.ipv4.matched || operand.ipv6.matched;
      mac = mac || operand.mac.matched || operand.mpls.matched;
    }
    if (ip && mac) {
      throw Refused();
    }
    intersect(operands, &Flat::ipv4, into);
    intersect(operands, &Flat::ipv6, into);
    intersect(operands, &Flat::mac, into);
    intersect(operands, &Flat::mpls, into);
  }

  template <class Rule>
  void intersect(std::vector<Flat> const& operands, OptionRules<Rule> Flat::*option, Flat& flat) {
    Rules<Rule> left = united(numbered((operands.front().*option).rules));
    for (std::size_t i = 1; i < operands.size(); ++i) {
      try {
        left = product(left, united(numbered((operands[i].*option).rules)));
      } catch (NoRuleCanSay const&) {
        throw Refused();
      }
    }
    OptionRules<Rule>& into = flat.*option;
    int const match = ++matches_;
    for (Named<Rule>& rule : left) {
      rule.match = match;
      addComposed(into, std::move(rule));
    }
    ++matches_;
  }

  // Ignores an intersection that is already present.
  template <class Rule>
  static void addComposed(OptionRules<Rule>& into, Named<Rule> rule) {
    into.matched = true;
    rule.ofList = false;
    auto const same = [&rule](Named<Rule> const& other) {
      return !other.ofList && other.list == rule.list && other.number == rule.number &&
             other.rule == rule.rule && other.sources == rule.sources &&
             other.destinations == rule.destinations;
    };
    if (std::none_of(into.rules.begin(), into.rules.end(), same)) {
      into.rules.push_back(std::move(rule));
    }
  }

  void add(std::uint32_t place, ClassMapMatch const& match, Flat& into) {
    if (match.kind() == ClassMapMatch::Kind::rule) {
      addRule(place, match, into);
      return;
    }
    ++matches_;
    if (match.kind() == ClassMapMatch::Kind::acl) {
      addAcl(match, into);
    } else {
      nest(match.name(), into);
    }
    ++matches_;
  }

  void addAcl(ClassMapMatch const& match, Flat& into) {
    Kor::Name const& name = match.name();
    switch (match.option()) {
    case ClassMapMatchOption::ipv4:
      addList(into.ipv4, name, inputs_.acls.ipAcl(name), matches_);
      break;
    case ClassMapMatchOption::ipv6:
      addList(into.ipv6, name, inputs_.acls.ip6Acl(name), matches_);
      break;
    case ClassMapMatchOption::mac:
      addList(into.mac, name, inputs_.acls.macAcl(name), matches_);
      break;
    case ClassMapMatchOption::mpls:
      addList(into.mpls, name, inputs_.acls.macAcl(name), matches_);
      break;
    }
  }

  void addRule(std::uint32_t place, ClassMapMatch const& match, Flat& into) {
    if (auto const* const ipv4 = std::get_if<Acl::IpRuleConfig>(&match.rule())) {
      addOwn(into.ipv4, place, *ipv4, matches_);
    } else if (auto const* const ipv6 = std::get_if<Acl::Ip6RuleConfig>(&match.rule())) {
      addOwn(into.ipv6, place, *ipv6, matches_);
    } else {
      addOwn(match.option() == ClassMapMatchOption::mpls ? into.mpls : into.mac, place,
             std::get<Acl::MacRuleConfig>(match.rule()), matches_);
    }
  }

  void nest(Kor::Name const& name, Flat& into) {
    if (std::find(path_.begin(), path_.end(), name) != path_.end()) {
      throw Refused();
    }
    auto const config = inputs_.classMaps.classMapConfig(name);
    if (config && config->currentSubConfig() && into.nested.insert(name).second) {
      path_.push_back(name);
      walk(*config->currentSubConfig(), into);
      path_.pop_back();
    }
  }

  Inputs const& inputs_;
  std::vector<Kor::Name> path_;
  int matches_ = 0;  // the number of the current match
};

// interfaces

class Interfaces {
 public:
  explicit Interfaces(Inputs const& inputs) : inputs_(inputs) {}

  // The interfaces where a policy is applied for an option.
  [[nodiscard]] std::set<Vorel::IntfId> of(PolicyMap::PolicyMapSmKey const& key,
                                           ClassMapMatchOption option) const {
    std::set<Vorel::IntfId> intfs;
    for (auto const& entry : inputs_.policies.servicePolicyIteratorConst()) {
      Vorel::IntfId const intf = entry.key().intf();
      if (entry.value() != key.first() || entry.key().direction() != key.second() ||
          !exists(intf) || !allowed(intf) || !allowedFor(intf, option)) {
        continue;
      }
      if (!intf.isPortChannel() || !inputs_.helper.expandPortChannels()) {
        intfs.insert(intf);
        continue;
      }
      for (auto const& member : inputs_.lag.memberOfIteratorConst()) {
        if (member.value() == intf && exists(member.key())) {
          intfs.insert(member.key());
        }
      }
    }
    return intfs;
  }

 private:
  [[nodiscard]] bool exists(Vorel::IntfId intf) const {
    return inputs_.nonexistent.count(intf) == 0;
  }
  [[nodiscard]] bool hasIp(Vorel::IntfId intf) const {
    return bool(inputs_.ip.korIntfAddress(intf));
  }
  [[nodiscard]] bool hasIp6(Vorel::IntfId intf) const {
    return bool(inputs_.ip6.korIntfAddress(intf));
  }
  [[nodiscard]] bool layer3(Vorel::IntfId intf) const {
    return hasIp(intf) || hasIp6(intf) || inputs_.routing.routedIntf(intf) ||
           inputs_.routing6.routedIntf(intf);
  }
  [[nodiscard]] bool layer2(Vorel::IntfId intf) const {
    return (intf.isPhysical() || intf.isPortChannel()) && !layer3(intf);
  }
  [[nodiscard]] bool allowed(Vorel::IntfId intf) const {
    if (intf.isManagement()) {
      return inputs_.allowMgmt;
    }
    return (layer3(intf) && inputs_.allowL3) || (layer2(intf) && inputs_.allowL2);
  }
  [[nodiscard]] bool allowedFor(Vorel::IntfId intf, ClassMapMatchOption option) const {
    switch (option) {
    case ClassMapMatchOption::ipv4: return hasIp(intf) || layer2(intf);
    case ClassMapMatchOption::ipv6: return hasIp6(intf) || layer2(intf);
    case ClassMapMatchOption::mac: return layer2(intf) || (layer3(intf) && intf.isPhysical());
    case ClassMapMatchOption::mpls: return inputs_.routing.routing();
    }
    return false;
  }

  Inputs const& inputs_;
};

// policies

template <class Action>
std::uint32_t valueOf(Kor::Ptr<PolicyMap::Action> const& action) {
  auto const test = action.as<Action>();
  return test ? test->value() : 0;
}

struct Class {
  Kor::Name name;
  std::array<std::uint32_t, 3> actions{};
  std::optional<Flat> rules;  // none if refused
};

class Policy {
 public:
  Policy(Inputs const& inputs, PolicyMap::PolicyMapSmKey key,
         Kor::Ptr<PolicyMap::PolicyMapSubConfig> const& config)
      : inputs_(inputs), key_(std::move(key)) {
    if (!config) {
      return;
    }
    std::set<std::pair<std::uint32_t, Kor::Name>> ordered;
    for (auto const& entry : config->classPrioIteratorConst()) {
      ordered.emplace(entry.value(), entry.key());
    }
    for (auto const& [priority, name] : ordered) {
      addClass(name, *config);
    }
  }

  void program(Expected& expected) const {
    program(ClassMapMatchOption::ipv4, &Flat::ipv4, expected);
    program(ClassMapMatchOption::ipv6, &Flat::ipv6, expected);
    program(ClassMapMatchOption::mac, &Flat::mac, expected);
    program(ClassMapMatchOption::mpls, &Flat::mpls, expected);
  }

 private:
  void addClass(Kor::Name const& name, PolicyMap::PolicyMapSubConfig const& config) {
    Kor::Ptr<ClassMapSubConfig> classMap = config.rawClassMap(name);
    auto const named = inputs_.classMaps.classMapConfig(name);
    if (named) {
      classMap = named->currentSubConfig();
    } else if (!classMap) {
      return;
    }
    Class added;
    added.name = name;
    if (auto const action = config.classAction(name)) {
      added.actions = {valueOf<PolicyMapTest::TestAction1>(action->action(kind(1))),
                       valueOf<PolicyMapTest::TestAction2>(action->action(kind(2))),
                       valueOf<PolicyMapTest::TestAction3>(action->action(kind(3)))};
    }
    try {
      added.rules = classMap ? Flattener(inputs_).flat(*classMap) : Flat();
    } catch (Refused const&) {
      added.rules = std::nullopt;
    }
    classes_.push_back(std::move(added));
  }

  static PolicyMap::ActionType kind(int number) { return PolicyMap::ActionType{number}; }

  template <class Rule>
  void program(ClassMapMatchOption option, OptionRules<Rule> Flat::*rules,
               Expected& expected) const {
    PolicyMapTest::AclPolicyType const type(key_, option);
    if (inputs_.forbiddenOptions.count(option) != 0) {
      return;
    }
    if (std::optional<Kor::Name> const culprit = refusedClass(rules)) {
      expected.refused.emplace(type, *culprit);
      return;
    }
    NormalRecord record;
    record.created = true;
    record.intfs = Interfaces(inputs_).of(key_, option);
    std::vector<PolicyMap::AclRuleKey> order;
    for (Class const& one : classes_) {
      for (Named<Rule> const& named : ((*one.rules).*rules).rules) {
        PolicyMap::AclRuleKey const key(one.name, Kor::Name(Kor::String8(named.list)), named.number,
                                        option);
        record.rules[key] = {named.rule.describe(),
                             subRulesOf(named, inputs_.helper.subRulesForL4Ports()), one.actions};
        order.push_back(key);
      }
    }
    if (!order.empty() && !record.intfs.empty()) {
      expected.records.emplace(type, record);
      expected.order.emplace(type, order);
    }
  }

  // The first class that cannot be flattened or, if all can, the first with an unsupported rule.
  template <class Rule>
  [[nodiscard]] std::optional<Kor::Name> refusedClass(OptionRules<Rule> Flat::*rules) const {
    for (Class const& one : classes_) {
      if (!one.rules) {
        return one.name;
      }
    }
    for (Class const& one : classes_) {
      for (Named<Rule> const& named : ((*one.rules).*rules).rules) {
        if (!supported(inputs_.helper, named.rule)) {
          return one.name;
        }
      }
    }
    return std::nullopt;
  }

  Inputs const& inputs_;
  PolicyMap::PolicyMapSmKey key_;
  std::vector<Class> classes_;
};

}  // namespace

Expected expected(Inputs const& inputs) {
  Expected all;
  for (auto const& entry : inputs.policies.servicePolicyIteratorConst()) {
    PolicyMap::PolicyMapSmKey const key(entry.value(), entry.key().direction());
    auto const config = inputs.policies.policyMapConfig(entry.value());
    if (config && all.policies.insert(key).second) {
      Policy(inputs, key, config->currentSubConfig()).program(all);
    }
  }
  return all;
}

}  // namespace Model
