// SPDX-License-Identifier: Apache-2.0
#pragma once

// Random rules about so few packets that all can be looked at, and what becomes of a packet as its
// definition says, without boxes. Every rule is about UDP or TCP over IPv4 between four and four
// addresses and ports, with a DSCP, TTL, tni and vni that are one value each; of the flags only ACK
// and RST differ.

#include "packets/Subject.h"
#include "packets/space/Packet.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace PolicyMapPackets::test {

using PolicyMapTestKit::RuleRecord;

inline constexpr std::uint32_t tinyValues = 4;
inline constexpr std::uint8_t tinyDscp = 0;
inline constexpr std::uint8_t tinyTtl = 0;
inline constexpr std::uint32_t tinyNetwork = 1;
inline constexpr std::uint8_t changingFlags = Acl::TcpFlags::ack | Acl::TcpFlags::rst;

// In ascending order.
inline std::vector<Packet> tinyPackets() {
  std::vector<Packet> packets;
  std::vector<std::uint32_t> const flags{0, Acl::TcpFlags::rst, Acl::TcpFlags::ack, changingFlags};
  for (SliceId const slice : {SliceId::tcp4, SliceId::udp4}) {
    for (std::uint32_t n = 0; n != tinyValues * tinyValues * tinyValues * tinyValues; ++n) {
      Packet packet(slice);
      packet.fieldIs(FieldId::source4, n >> 6);
      packet.fieldIs(FieldId::destination4, n >> 4 & 3);
      packet.fieldIs(FieldId::sourcePort, n >> 2 & 3);
      packet.fieldIs(FieldId::destinationPort, n & 3);
      packet.fieldIs(FieldId::tni, tinyNetwork);
      packet.fieldIs(FieldId::vni, tinyNetwork);
      packets.push_back(packet);
      for (std::size_t i = 1; slice == SliceId::tcp4 && i != flags.size(); ++i) {
        packet.fieldIs(FieldId::tcpFlags, flags[i]);
        packets.push_back(packet);
      }
    }
  }
  return packets;
}

class TinyRandom {
 public:
  explicit TinyRandom(std::uint32_t seed) : random_(seed) {}

  std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(random_() % end); }
  bool oneIn(std::uint32_t n) { return below(n) == 0; }

  Acl::IpRuleConfig rule() {
    Acl::IpRuleConfig rule;
    bool const isTcp = oneIn(2);
    rule.permitIs(!oneIn(3));
    rule.protocolIs(isTcp ? 6 : 17);
    rule.sourceIs(address());
    rule.destinationIs(address());
    rule.srcPortIs(ports());
    rule.dstPortIs(ports());
    rule.dscpIs(tinyDscp);
    rule.ttlIs(Acl::TtlMatch::lt(tinyTtl + 1));
    rule.tniIs(tinyNetwork);
    rule.vniIs(tinyNetwork);
    if (isTcp) {
      rule.tcpFlagsIs(Acl::TcpFlags(0, static_cast<std::uint8_t>(~changingFlags)));
      rule.establishedIs(oneIn(3));
      rule.ackOrRstIs(oneIn(4));
    }
    return rule;
  }

  // Two classes of rules that may come in any order; each rule with some sub-rules of its ports.
  std::vector<RuleRecord> recorded() {
    std::vector<RuleRecord> rules(below(7));
    for (std::uint32_t i = 0; i != rules.size(); ++i) {
      rules[i].key = {className(below(2)), "list", i, PolicyMap::ClassMapMatchOption::ipv4};
      rules[i].actions[0] = 1;
      Acl::IpRuleConfig const match = rule();
      rules[i].match = match;
      rules[i].subRules = subRules(match);
    }
    return rules;
  }

  ConfiguredPolicy configured() {
    ConfiguredPolicy policy;
    for (std::uint32_t i = 0; i != 2; ++i) {
      Kor::Name const name(className(i));
      policy.classes.push_back({{name.stdString(), {1}}, tree(name, 2)});
    }
    return policy;
  }

  // As if the core had programmed the first list of each class.
  static std::vector<RuleRecord> programmed(ConfiguredPolicy const& policy) {
    std::vector<RuleRecord> rules;
    for (ConfiguredClass const& each : policy.classes) {
      add(each.match, rules);
    }
    return rules;
  }

  static char const* className(std::uint32_t number) { return number == 0 ? "one" : "two"; }

 private:
  Acl::IpAddressMatch address() {
    // With holes, too.
    std::uint32_t const mask = below(tinyValues);
    return {below(tinyValues) & mask, 0xfffffffcU | mask};
  }
  Acl::PortMatch ports() {
    std::uint32_t const low = below(tinyValues);
    switch (below(3)) {
    case 0: return Acl::PortMatch::eq(low);
    case 1: return Acl::PortMatch::lt(low);
    default: return Acl::PortMatch::range(low, low + below(tinyValues - low));
    }
  }
  std::vector<PolicyMap::SubRuleData> subRules(Acl::IpRuleConfig const& match) {
    std::vector<PolicyMap::SubRuleData> all;
    for (auto const& source : match.srcPort().ranges()) {
      for (auto const& destination : match.dstPort().ranges()) {
        for (std::uint16_t port = destination.low; port <= destination.high; ++port) {
          if (!oneIn(9)) {
            all.emplace_back(source.low, source.high, port, port, 0, false, false);
          }
        }
      }
    }
    return all;
  }
  MatchTree tree(Kor::Name const& name, unsigned depth) {
    MatchTree tree{depth == 0 ? MatchTree::Kind::list : static_cast<MatchTree::Kind>(below(3))};
    std::uint32_t const parts = 1 + below(3);
    for (std::uint32_t i = 0; i != parts; ++i) {
      if (tree.kind == MatchTree::Kind::list) {
        tree.rules.push_back({name, Kor::Name("list"), i, rule()});
      } else {
        tree.parts.push_back(this->tree(name, depth - 1));
      }
    }
    return tree;
  }
  static void add(MatchTree const& tree, std::vector<RuleRecord>& rules) {
    for (ConfiguredRule const& rule : tree.rules) {
      RuleRecord record{
          {rule.className, rule.list, rule.seqno, PolicyMap::ClassMapMatchOption::ipv4},
          rule.match,
          {1},
          {}};
      auto const& match = std::get<Acl::IpRuleConfig>(rule.match);
      for (auto const& source : match.srcPort().ranges()) {
        for (auto const& destination : match.dstPort().ranges()) {
          record.subRules.emplace_back(source.low, source.high, destination.low, destination.high,
                                       0, false, false);
        }
      }
      rules.push_back(record);
    }
    for (MatchTree const& part : tree.parts) {
      add(part, rules);
    }
  }

  std::mt19937 random_;
};

// What becomes of a packet ----------------------------------------------------------------------

inline bool isIn(Acl::IpAddressMatch const& match, std::uint32_t address) {
  return match.matches(
      {static_cast<std::uint8_t>(address >> 24), static_cast<std::uint8_t>(address >> 16),
       static_cast<std::uint8_t>(address >> 8), static_cast<std::uint8_t>(address)});
}

template <class Match>
bool isIn(Match const& match, std::uint32_t number) {
  auto const ranges = match.ranges();
  return std::any_of(ranges.begin(), ranges.end(), [&](auto const& range) {
    return range.low <= number && number <= range.high;
  });
}

// Except for its ports.
inline bool meetsRest(Acl::IpRuleConfig const& rule, Packet const& packet) {
  bool const isTcp = packet.slice().id() == SliceId::tcp4;
  std::uint32_t const flags = isTcp ? packet[FieldId::tcpFlags] : 0;
  bool const isEstablished = (flags & changingFlags) != 0;
  return rule.protocol() == (isTcp ? 6 : 17) && isIn(rule.source(), packet[FieldId::source4]) &&
         isIn(rule.destination(), packet[FieldId::destination4]) &&
         (flags & rule.tcpFlags().mask()) == rule.tcpFlags().value() &&
         (isEstablished || !(rule.established() || rule.ackOrRst()));
}

inline bool takes(RuleRecord const& rule, Packet const& packet) {
  std::uint32_t const source = packet[FieldId::sourcePort];
  std::uint32_t const destination = packet[FieldId::destinationPort];
  return meetsRest(std::get<Acl::IpRuleConfig>(rule.match), packet) &&
         std::any_of(rule.subRules.begin(), rule.subRules.end(), [&](auto const& subRule) {
           return subRule.srcPortLow() <= source && source <= subRule.srcPortHigh() &&
                  subRule.dstPortLow() <= destination && destination <= subRule.dstPortHigh();
         });
}

// The class that the records give to a packet; empty for none.
inline std::string classByRecords(std::vector<RuleRecord> const& rules, DenyReading deny,
                                  Packet const& packet) {
  std::vector<Kor::Name> left;
  for (RuleRecord const& rule : rules) {
    Kor::Name const& name = rule.key.className();
    if (!takes(rule, packet) || std::find(left.begin(), left.end(), name) != left.end()) {
      continue;
    }
    bool const permits = std::get<Acl::IpRuleConfig>(rule.match).permit();
    if (permits || deny == DenyReading::entry) {
      return name.stdString();
    }
    if (deny == DenyReading::stop) {
      return {};
    }
    left.push_back(name);
  }
  return {};
}

inline bool isIn(MatchTree const& tree, Packet const& packet) {
  auto const isInPart = [&](MatchTree const& part) { return isIn(part, packet); };
  switch (tree.kind) {
  case MatchTree::Kind::any: return std::any_of(tree.parts.begin(), tree.parts.end(), isInPart);
  case MatchTree::Kind::all:
    return !tree.parts.empty() && std::all_of(tree.parts.begin(), tree.parts.end(), isInPart);
  case MatchTree::Kind::list: break;
  }
  for (ConfiguredRule const& rule : tree.rules) {
    auto const& match = std::get<Acl::IpRuleConfig>(rule.match);
    if (meetsRest(match, packet) && isIn(match.srcPort(), packet[FieldId::sourcePort]) &&
        isIn(match.dstPort(), packet[FieldId::destinationPort])) {
      return match.permit();
    }
  }
  return false;
}

inline std::string classByConfiguration(ConfiguredPolicy const& policy, Packet const& packet) {
  for (ConfiguredClass const& each : policy.classes) {
    if (isIn(each.match, packet)) {
      return each.treatment.className;
    }
  }
  return {};
}

}  // namespace PolicyMapPackets::test
