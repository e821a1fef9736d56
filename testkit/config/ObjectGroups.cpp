// SPDX-License-Identifier: Apache-2.0
#include "testkit/config/ObjectGroups.h"

#include "testkit/text/RuleConversion.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>

namespace PolicyMapTestKit::Text {

namespace {

// The members of one kind of a group and of the groups in it. A group that contains itself
// contributes its members once.
template <class Member>
class Members {
 public:
  // With `whole`, none of them may have been skipped.
  Members(ListRule const& line, ObjectGroups const& groups, GroupKind kind, bool whole)
      : line_(line), groups_(groups), kind_(kind), whole_(whole) {}

  // Without recursion: a chain of groups may be long.
  std::vector<Member> of(std::string const& name) {
    struct Place {
      std::vector<GroupMember> const* members;
      std::size_t next;
    };
    std::vector<Place> path;
    auto const enter = [&](std::string const& group) {
      if (std::vector<GroupMember> const* const members = membersOf(group)) {
        path.push_back({members, 0});
      }
    };
    enter(name);
    while (!path.empty()) {
      Place& place = path.back();
      if (place.next == place.members->size()) {
        path.pop_back();
        continue;
      }
      GroupMember const& member = (*place.members)[place.next++];
      if (auto const* const nested = std::get_if<GroupReference>(&member)) {
        enter(nested->name);
      } else {
        members_.push_back(std::get<Member>(member));
      }
    }
    return std::move(members_);
  }

 private:
  // Null if the group was visited before.
  std::vector<GroupMember> const* membersOf(std::string const& name) {
    auto const found = groups_.find(name);
    if (found == groups_.end()) {
      throw InputError(line_.alternatives->place, "the name of an object-group that exists", name);
    }
    if (found->second.kind != kind_) {
      throw InputError(line_.alternatives->place,
                       "an object-group of " + std::string(wordOf(kind_)) + ", which that at " +
                           toText(found->second.place) + " is not",
                       name);
    }
    if (whole_ && found->second.skipped) {
      throw InputError(line_.alternatives->place,
                       "an object-group whose members are understood, which that at " +
                           toText(*found->second.skipped) + " is not",
                       name);
    }
    return seen_.insert(name).second ? &found->second.members : nullptr;
  }

  static std::string_view wordOf(GroupKind kind) {
    switch (kind) {
    case GroupKind::addresses: return "addresses";
    case GroupKind::services: return "services";
    case GroupKind::ports: break;
    }
    return "ports";
  }

  ListRule const& line_;
  ObjectGroups const& groups_;
  GroupKind kind_;
  bool whole_;
  std::set<std::string> seen_;
  std::vector<Member> members_;
};

template <class Rule>
class Expansion {
 public:
  using Match = typename Rule::AddressMatch;

  Expansion(ListRule const& line, ObjectGroups const& groups, bool widening)
      : line_(line),
        groups_(groups),
        whole_(isDeny(line.rule) && !widening),
        rules_{std::get<Rule>(line.rule)} {}

  std::vector<ConfiguredRule> all() && {
    RuleAlternatives const& some = *line_.alternatives;
    multiply(services(some.service), [](Rule& rule, Acl::IpRuleConfig const& service) {
      rule.protocolIs(service.protocol());
      rule.srcPortIs(service.srcPort());
      rule.dstPortIs(service.dstPort());
      rule.icmpTypeIs(service.icmpType());
      rule.icmpCodeIs(service.icmpCode());
    });
    multiply(addresses(some.source),
             [](Rule& rule, Match const& address) { rule.sourceIs(address); });
    multiply(ports(some.sourcePorts), &Rule::srcPortIs);
    multiply(values(some.sourcePortValues), &Rule::srcPortIs);
    multiply(addresses(some.destination),
             [](Rule& rule, Match const& address) { rule.destinationIs(address); });
    multiply(ports(some.destinationPorts), &Rule::dstPortIs);
    multiply(values(some.destinationPortValues), &Rule::dstPortIs);
    multiply(values(some.tcpFlags), &Rule::tcpFlagsIs);
    multiply(values(some.dscps), [](Rule& rule, std::uint8_t dscp) { rule.dscpIs(dscp); });
    return {rules_.begin(), rules_.end()};
  }

 private:
  template <class Value>
  using Values = std::optional<std::vector<Value>>;

  // Each rule with each value. None: the rules remain.
  template <class Value, class Set>
  void multiply(Values<Value> const& values, Set const& set) {
    if (!values) {
      return;
    }
    if (rules_.size() * values->size() > mostRulesOfLine) {
      throw InputError(line_.alternatives->place,
                       "at most " + std::to_string(mostRulesOfLine) + " rules of one line",
                       describe(line_.rule));
    }
    std::vector<Rule> product;
    product.reserve(rules_.size() * values->size());
    for (Rule const& rule : rules_) {
      for (Value const& value : *values) {
        std::invoke(set, product.emplace_back(rule), value);
      }
    }
    rules_ = std::move(product);
  }

  Values<Acl::IpRuleConfig> services(std::string const& name) const {
    if (name.empty()) {
      return std::nullopt;
    }
    return Members<Acl::IpRuleConfig>(line_, groups_, GroupKind::services, whole_).of(name);
  }
  Values<Acl::PortMatch> ports(std::string const& name) const {
    if (name.empty()) {
      return std::nullopt;
    }
    return Members<Acl::PortMatch>(line_, groups_, GroupKind::ports, whole_).of(name);
  }
  Values<Match> addresses(std::string const& name) const {
    if (name.empty()) {
      return std::nullopt;
    }
    constexpr Family family = std::is_same_v<Rule, Acl::IpRuleConfig> ? Family::ip4 : Family::ip6;
    std::vector<Match> matches;
    for (GroupAddress const& member :
         Members<GroupAddress>(line_, groups_, GroupKind::addresses, whole_).of(name)) {
      if (member.family != family) {
        throw InputError(line_.alternatives->place, "an object-group of addresses of this family",
                         name);
      }
      matches.push_back(addressMatch<Match>(member.address));
    }
    return matches;
  }
  template <class Value>
  static Values<Value> values(std::vector<Value> const& some) {
    return some.empty() ? Values<Value>() : Values<Value>(some);
  }

  ListRule const& line_;
  ObjectGroups const& groups_;
  bool whole_;
  std::vector<Rule> rules_;
};

}  // namespace

std::uint32_t LineNumbers::firstOf(std::uint32_t number, std::size_t rules,
                                   SourcePosition const& place) {
  if (rules > 1) {
    place_ = place;
  }
  std::uint64_t const first = std::max<std::uint64_t>(number, next_);
  next_ = first + rules;
  if (rules != 0 && next_ - 1 > std::numeric_limits<std::uint32_t>::max()) {
    throw InputError(place_, "a sequence number: none is left for the rules of the line",
                     std::to_string(number));
  }
  return static_cast<std::uint32_t>(first);
}

bool isDeny(ConfiguredRule const& rule) {
  return std::visit([](auto const& some) { return !some.permit(); }, rule);
}

std::vector<ConfiguredRule> rulesOf(ListRule const& line, ObjectGroups const& groups,
                                    bool widening) {
  if (!line.alternatives) {
    return {line.rule};
  }
  if (std::holds_alternative<Acl::IpRuleConfig>(line.rule)) {
    return Expansion<Acl::IpRuleConfig>(line, groups, widening).all();
  }
  return Expansion<Acl::Ip6RuleConfig>(line, groups, widening).all();
}

}  // namespace PolicyMapTestKit::Text
