// SPDX-License-Identifier: Apache-2.0
#include "packets/configuration/ConfiguredBoxes.h"

#include <array>
#include <initializer_list>
#include <string_view>
#include <variant>

namespace PolicyMapPackets {

namespace {

// One way in which a packet can meet a condition.
struct Range {
  std::int64_t low;
  std::int64_t high;
};

// The numbers for which an operator holds.
template <class Match>
std::vector<Range> meaningOf(Match const& match) {
  std::int64_t const last = Match::highest;
  switch (match.op()) {
  case Acl::MatchOp::any: break;
  case Acl::MatchOp::eq: return {{match.low(), match.low()}};
  case Acl::MatchOp::range: return {{match.low(), match.high()}};
  case Acl::MatchOp::lt: return {{0, match.low() - 1}};
  case Acl::MatchOp::gt: return {{match.low() + 1, last}};
  case Acl::MatchOp::neq: return {{0, match.low() - 1}, {match.low() + 1, last}};
  }
  return {{0, last}};
}

// The set of packets that meet all conditions so far.
class Packets {
 public:
  explicit Packets(Slice const& slice) : slice_(&slice), boxes_{Box::all(slice)} {}

  // Those of which a field has one of these numbers. A packet without the field does not.
  Packets& whose(FieldId field, std::vector<Range> const& ranges) {
    std::vector<Box> narrower;
    for (Box const& box : boxes_) {
      for (Range const& range : ranges) {
        Box part = box;
        if (range.low <= range.high && slice_->has(field) &&
            part.takeInterval(*slice_, field, static_cast<std::uint32_t>(range.low),
                              static_cast<std::uint32_t>(range.high))) {
          narrower.push_back(part);
        }
      }
    }
    boxes_ = std::move(narrower);
    return *this;
  }
  Packets& whose(FieldId field, Acl::OptionalNumber number) {
    return number ? whose(field, {{*number, *number}}) : *this;
  }
  template <class Match>
  Packets& whoseNumber(FieldId field, Match const& match) {
    return match.isAny() ? *this : whose(field, meaningOf(match));
  }
  // An identifier; 0 means all of them.
  Packets& whoseNetwork(FieldId field, std::uint32_t network) {
    return network == 0 ? *this : whose(field, {{network, network}});
  }
  template <class Match>
  Packets& whoseAddress(FieldId field, Match const& match) {
    std::vector<Box> narrower;
    for (Box box : boxes_) {
      if (box.takeBytes(*slice_, field, match.value(), match.mask())) {
        narrower.push_back(box);
      }
    }
    boxes_ = std::move(narrower);
    return *this;
  }
  // Those with one of these disjoint combinations of flags.
  Packets& withFlags(std::initializer_list<Acl::TcpFlags> combinations) {
    std::vector<Box> narrower;
    for (Box const& box : boxes_) {
      for (Acl::TcpFlags const flags : combinations) {
        Box part = box;
        if (slice_->has(FieldId::tcpFlags) &&
            part.takeTernary(*slice_, FieldId::tcpFlags, 0, flags.value(), flags.mask())) {
          narrower.push_back(part);
        }
      }
    }
    boxes_ = std::move(narrower);
    return *this;
  }
  Packets& onlyIf(bool condition) {
    if (!condition) {
      boxes_.clear();
    }
    return *this;
  }

  std::vector<Box> take() { return std::move(boxes_); }

 private:
  Slice const* slice_;
  std::vector<Box> boxes_;
};

// Of an established connection: with ACK, or without ACK and with RST.
void beEstablished(Packets& packets) {
  using Acl::TcpFlags;
  packets.withFlags({TcpFlags(TcpFlags::ack, TcpFlags::ack),
                     TcpFlags(TcpFlags::rst, TcpFlags::ack | TcpFlags::rst)});
}

constexpr std::array knownOfIp{"permit",   "protocol", "srcPort",     "dstPort",  "dscp",
                               "ttl",      "tcpFlags", "established", "ackOrRst", "fragments",
                               "icmpType", "icmpCode", "tni",         "vni"};
constexpr std::array knownOfMac{"permit",         "ethertype",       "vlan", "mplsLabel", "cos",
                                "mplsInnerLabel", "mplsExperimental"};
template <std::size_t count>
constexpr auto isIn(std::array<char const*, count> const& names) {
  return [names](std::string_view field) {
    for (std::string_view const name : names) {
      if (name == field) {
        return true;
      }
    }
    return false;
  };
}
static_assert(Acl::saysEachField<Acl::IpFilterBase>(isIn(knownOfIp)),
              "a field of IP rules has no meaning here");
static_assert(Acl::saysEachField<Acl::MacFilter>(isIn(knownOfMac)),
              "a field of MAC rules has no meaning here");

void meet(Acl::IpFilterBase const& rule, Slice const& slice, Packets& packets) {
  if (slice.has(FieldId::protocol)) {
    packets.whose(FieldId::protocol, rule.protocol());
  } else {
    packets.onlyIf(!rule.protocol() || *rule.protocol() == slice.protocol());
  }
  packets.onlyIf(!rule.fragments() || slice.in(slices::fragments))
      .whoseNumber(FieldId::sourcePort, rule.srcPort())
      .whoseNumber(FieldId::destinationPort, rule.dstPort())
      .whoseNumber(FieldId::ttl, rule.ttl())
      .whose(FieldId::dscp, rule.dscp())
      .whose(FieldId::icmpType, rule.icmpType())
      .whose(FieldId::icmpCode, rule.icmpCode())
      .whoseNetwork(FieldId::tni, rule.tni())
      .whoseNetwork(FieldId::vni, rule.vni());
  if (!!rule.tcpFlags()) {
    packets.withFlags({rule.tcpFlags()});
  }
  if (rule.established() || rule.ackOrRst()) {
    beEstablished(packets);
  }
}

void meet(Acl::MacFilter const& rule, Slice const& /*slice*/, Packets& packets) {
  packets.whose(FieldId::ethertype, rule.ethertype())
      .whose(FieldId::vlan, rule.vlan())
      .whose(FieldId::cos, rule.cos())
      .whose(FieldId::mplsLabel, rule.mplsLabel())
      .whose(FieldId::mplsInnerLabel, rule.mplsInnerLabel())
      .whose(FieldId::mplsExperimental, rule.mplsExperimental());
}

template <class Rule>
SliceSet slicesOf() {
  return std::is_same_v<Rule, Acl::IpRuleConfig>    ? slices::ip4
         : std::is_same_v<Rule, Acl::Ip6RuleConfig> ? slices::ip6
                                                    : slices::mac;
}

}  // namespace

std::vector<Box> configuredBoxes(Slice const& slice,
                                 PolicyMapTestKit::Text::ConfiguredRule const& rule) {
  return std::visit(
      [&slice]<class Rule>(Rule const& match) {
        if (!slice.in(slicesOf<Rule>())) {
          return std::vector<Box>();
        }
        Packets packets(slice);
        meet(match, slice, packets);
        packets.whoseAddress(slice.source(), match.source())
            .whoseAddress(slice.destination(), match.destination());
        return packets.take();
      },
      rule);
}

}  // namespace PolicyMapPackets
