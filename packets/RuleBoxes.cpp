// SPDX-License-Identifier: Apache-2.0
#include "packets/RuleBoxes.h"

#include <optional>
#include <utility>
#include <variant>

namespace PolicyMapPackets {

namespace {

using Acl::TcpFlags;
using PolicyMap::ClassMapMatchOption;

bool hasPorts(Header header) {
  return header == Header::tcp || header == Header::udp || header == Header::sctp;
}

// An address and its mask, from bytes in network order.
template <class Bytes>
Bits numberOf(Bytes const& bytes) {
  Bits number = 0;
  for (std::uint8_t const byte : bytes) {
    number = number << 8U | byte;
  }
  return number;
}

template <class Ranges>
std::vector<Range> rangesOf(Ranges const& ranges) {
  std::vector<Range> all;
  for (auto const& each : ranges) {
    all.push_back({each.low, each.high});
  }
  return all;
}

// Narrows boxes by conditions, one field after the other.
class Narrowing {
 public:
  explicit Narrowing(Space const& space) : boxes_(wholeOf(space)) {}

  // One of the ranges. None of them: no packet matches.
  void to(Field field, std::vector<Range> const& ranges) {
    std::vector<Box> narrowed;
    for (Box const& box : boxes_) {
      for (Range const& range : ranges) {
        Box condition = box;
        condition.set(field, range);
        if (std::optional<Box> const both = box.intersection(condition)) {
          narrowed.push_back(*both);
        }
      }
    }
    boxes_ = std::move(narrowed);
  }
  template <class Number>
  void toNumber(Field field, std::optional<Number> const& number) {
    if (number) {
      to(field, {{*number, *number}});
    }
  }
  [[nodiscard]] std::vector<Box> take() { return std::move(boxes_); }

 private:
  std::vector<Box> boxes_;
};

std::optional<std::uint64_t> numberIn(Acl::OptionalNumber number) {
  return number ? std::optional(static_cast<std::uint64_t>(*number)) : std::nullopt;
}

// The bounds of both ports; none: the rule does not ask for ports.
struct Ports {
  std::vector<Range> source;
  std::vector<Range> destination;
};

std::optional<Ports> portsOf(Acl::IpFilterBase const& rule) {
  if (rule.srcPort().isAny() && rule.dstPort().isAny()) {
    return std::nullopt;
  }
  return Ports{rangesOf(rule.srcPort().ranges()), rangesOf(rule.dstPort().ranges())};
}

std::optional<Ports> portsOf(Acl::IpFilterBase const& rule, PolicyMap::SubRuleData const& subRule) {
  constexpr Range all{0, PolicyMap::SubRuleData::highestPort};
  Range const source{subRule.srcPortLow(), subRule.srcPortHigh()};
  Range const destination{subRule.dstPortLow(), subRule.dstPortHigh()};
  if (rule.srcPort().isAny() && rule.dstPort().isAny() && source == all && destination == all) {
    return std::nullopt;
  }
  return Ports{{source}, {destination}};
}

bool asksForFlags(Acl::IpFilterBase const& rule) {
  return !!rule.tcpFlags() || rule.established() || rule.ackOrRst();
}

bool canMatch(Acl::IpFilterBase const& rule, Header header, bool asksForPorts) {
  return (!rule.fragments() || header == Header::fragment) && (!asksForPorts || hasPorts(header)) &&
         (!asksForFlags(rule) || header == Header::tcp) &&
         ((!rule.icmpType() && !rule.icmpCode()) || header == Header::icmp);
}

void narrowToProtocol(Narrowing& narrowing, Space const& space, std::uint64_t protocol) {
  if (space.placeOf(Field::protocol) != space.fields.size()) {
    narrowing.to(Field::protocol, {{protocol, protocol}});
  } else if (space.protocols.front().first != protocol) {
    narrowing.to(Field::source, {});  // of another protocol
  }
}

void narrowToFlags(Narrowing& narrowing, Acl::IpFilterBase const& rule) {
  narrowing.to(Field::tcpFlags, {{rule.tcpFlags().value(), rule.tcpFlags().mask()}});
  if (rule.established() || rule.ackOrRst()) {
    narrowing.to(Field::tcpFlags, {{TcpFlags::ack, TcpFlags::ack}, {TcpFlags::rst, TcpFlags::rst}});
  }
}

template <class Rule>
std::vector<Box> boxesOfIp(Rule const& rule, Space const& space,
                           std::optional<Ports> const& ports) {
  if (!canMatch(rule, space.header, ports.has_value())) {
    return {};
  }
  Narrowing narrowing(space);
  if (auto const protocol = numberIn(rule.protocol())) {
    narrowToProtocol(narrowing, space, *protocol);
  }
  narrowing.to(Field::source, {{numberOf(rule.source().value()), numberOf(rule.source().mask())}});
  narrowing.to(Field::destination,
               {{numberOf(rule.destination().value()), numberOf(rule.destination().mask())}});
  if (ports) {
    narrowing.to(Field::sourcePort, ports->source);
    narrowing.to(Field::destinationPort, ports->destination);
  }
  if (asksForFlags(rule)) {
    narrowToFlags(narrowing, rule);
  }
  narrowing.toNumber(Field::icmpType, numberIn(rule.icmpType()));
  narrowing.toNumber(Field::icmpCode, numberIn(rule.icmpCode()));
  narrowing.toNumber(Field::dscp, numberIn(rule.dscp()));
  if (!rule.ttl().isAny()) {
    narrowing.to(Field::ttl, rangesOf(rule.ttl().ranges()));
  }
  for (auto const& [field, number] :
       {std::pair(Field::tni, rule.tni()), std::pair(Field::vni, rule.vni())}) {
    if (number != 0) {
      narrowing.to(field, {{number, number}});
    }
  }
  return narrowing.take();
}

// The rules of other options match no IP packet.
template <class Function>
std::vector<Box> ofRule(Acl::AnyRule const& rule, Space const& space, Function const& function) {
  if (auto const* const ip4 = std::get_if<Acl::IpRuleConfig>(&rule)) {
    return space.option == ClassMapMatchOption::ipv4 ? function(*ip4) : std::vector<Box>();
  }
  auto const* const ip6 = std::get_if<Acl::Ip6RuleConfig>(&rule);
  return ip6 != nullptr && space.option == ClassMapMatchOption::ipv6 ? function(*ip6)
                                                                     : std::vector<Box>();
}

}  // namespace

std::vector<Box> boxesOf(Acl::AnyRule const& rule, Space const& space) {
  return ofRule(rule, space, [&](auto const& ip) { return boxesOfIp(ip, space, portsOf(ip)); });
}

std::vector<Box> boxesOf(Acl::AnyRule const& rule, PolicyMap::SubRuleData const& subRule,
                         Space const& space) {
  return ofRule(rule, space,
                [&](auto const& ip) { return boxesOfIp(ip, space, portsOf(ip, subRule)); });
}

}  // namespace PolicyMapPackets
