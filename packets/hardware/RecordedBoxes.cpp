// SPDX-License-Identifier: Apache-2.0
#include "packets/hardware/RecordedBoxes.h"

#include "packets/hardware/PortBlocks.h"

#include <string_view>
#include <variant>

namespace PolicyMapPackets {

namespace {

using Acl::OptionalNumber;

constexpr std::uint32_t ack = Acl::TcpFlags::ack;
constexpr std::uint32_t rst = Acl::TcpFlags::rst;

// The entries of one rule. Each part of the match narrows all of them, or makes several of each.
class Entries {
 public:
  explicit Entries(Slice const& slice) : slice_(slice), boxes_{Box::all(slice)} {}

  // A part that the slice does not have: no packet is taken.
  void number(FieldId field, OptionalNumber number) {
    if (number) {
      auto const value = static_cast<std::uint32_t>(*number);
      interval(field, value, value);
    }
  }
  void interval(FieldId field, std::uint32_t low, std::uint32_t high) {
    if (need(slice_.has(field))) {
      std::erase_if(boxes_, [&](Box& box) { return !box.takeInterval(slice_, field, low, high); });
    }
  }
  void flags(std::uint32_t value, std::uint32_t mask) {
    if (mask != 0 && need(slice_.has(FieldId::tcpFlags))) {
      std::erase_if(boxes_, [&](Box& box) {
        return !box.takeTernary(slice_, FieldId::tcpFlags, 0, value, mask);
      });
    }
  }
  template <class Match>
  void address(FieldId field, Match const& match) {
    std::erase_if(boxes_, [&](Box& box) {
      return !box.takeBytes(slice_, field, match.value(), match.mask());
    });
  }
  bool need(bool condition) {
    if (!condition) {
      boxes_.clear();
    }
    return condition;
  }

  // In place of each entry those that `make` adds for it.
  template <class Make>
  void alternatives(Make const& make) {
    std::vector<Box> all;
    for (Box const& box : boxes_) {
      Entries entry(slice_);
      entry.boxes_ = {box};
      make(entry, all);
    }
    boxes_ = std::move(all);
  }
  void addTo(std::vector<Box>& boxes) const {
    boxes.insert(boxes.end(), boxes_.begin(), boxes_.end());
  }
  [[nodiscard]] std::vector<Box> take() { return std::move(boxes_); }

 private:
  Slice const& slice_;
  std::vector<Box> boxes_;
};

void takeProtocol(Slice const& slice, OptionalNumber protocol, Entries& entries) {
  if (!protocol) {
    return;
  }
  if (slice.has(FieldId::protocol)) {
    entries.number(FieldId::protocol, protocol);
  } else {
    entries.need(slice.protocol() == *protocol);
  }
}

// ACK set, or else RST set: two entries.
void takeAckOrRst(Entries& entries) {
  entries.alternatives([](Entries const& entry, std::vector<Box>& all) {
    Entries withAck = entry;
    withAck.flags(ack, ack);
    withAck.addTo(all);
    Entries withRst = entry;
    withRst.flags(rst, ack | rst);
    withRst.addTo(all);
  });
}

void takeTtl(Acl::TtlMatch const& ttl, Entries& entries) {
  if (ttl.isAny()) {
    return;
  }
  entries.alternatives([&](Entries const& entry, std::vector<Box>& all) {
    for (auto const& range : ttl.ranges()) {
      Entries part = entry;
      part.interval(FieldId::ttl, range.low, range.high);
      part.addTo(all);
    }
  });
}

// Every packet without ports lacks what an entry for ports compares.
void takePorts(Slice const& slice, bool asksPorts, std::vector<PortBlock> const& blocks,
               Entries& entries) {
  entries.alternatives([&](Entries const& entry, std::vector<Box>& all) {
    for (PortBlock const& block : blocks) {
      Entries part = entry;
      if (slice.has(FieldId::sourcePort)) {
        part.interval(FieldId::sourcePort, block.sourceLow, block.sourceHigh);
        part.interval(FieldId::destinationPort, block.destinationLow, block.destinationHigh);
      } else {
        part.need(!asksPorts && block.isEvery());
      }
      part.addTo(all);
    }
  });
}

constexpr bool readsIp(std::string_view field) {
  for (std::string_view const known :
       {"permit", "protocol", "srcPort", "dstPort", "dscp", "ttl", "tcpFlags", "established",
        "ackOrRst", "fragments", "icmpType", "icmpCode", "tni", "vni"}) {
    if (field == known) {
      return true;
    }
  }
  return false;
}
static_assert(Acl::saysEachField<Acl::IpFilterBase>(readsIp), "a field of IP rules is not read");

void takeFilter(Slice const& slice, Acl::IpFilterBase const& rule,
                std::vector<PortBlock> const& blocks, Entries& entries) {
  takeProtocol(slice, rule.protocol(), entries);
  if (rule.fragments()) {
    entries.need(slice.in(slices::fragments));
  }
  entries.number(FieldId::dscp, rule.dscp());
  entries.number(FieldId::icmpType, rule.icmpType());
  entries.number(FieldId::icmpCode, rule.icmpCode());
  entries.number(FieldId::tni, rule.tni() == 0 ? OptionalNumber() : rule.tni());
  entries.number(FieldId::vni, rule.vni() == 0 ? OptionalNumber() : rule.vni());
  entries.flags(rule.tcpFlags().value(), rule.tcpFlags().mask());
  if (rule.established() || rule.ackOrRst()) {
    takeAckOrRst(entries);
  }
  takeTtl(rule.ttl(), entries);
  takePorts(slice, !rule.srcPort().isAny() || !rule.dstPort().isAny(), blocks, entries);
}

constexpr bool readsMac(std::string_view field) {
  for (std::string_view const known :
       {"permit", "ethertype", "vlan", "mplsLabel", "mplsInnerLabel", "cos", "mplsExperimental"}) {
    if (field == known) {
      return true;
    }
  }
  return false;
}
static_assert(Acl::saysEachField<Acl::MacFilter>(readsMac), "a field of MAC rules is not read");

void takeFilter(Slice const& slice, Acl::MacFilter const& rule,
                std::vector<PortBlock> const& blocks, Entries& entries) {
  entries.number(FieldId::ethertype, rule.ethertype());
  entries.number(FieldId::vlan, rule.vlan());
  entries.number(FieldId::cos, rule.cos());
  entries.number(FieldId::mplsLabel, rule.mplsLabel());
  entries.number(FieldId::mplsInnerLabel, rule.mplsInnerLabel());
  entries.number(FieldId::mplsExperimental, rule.mplsExperimental());
  takePorts(slice, false, blocks, entries);
}

SliceSet slicesOf(PolicyMapTestKit::Text::ConfiguredRule const& rule) {
  return std::holds_alternative<Acl::IpRuleConfig>(rule)    ? slices::ip4
         : std::holds_alternative<Acl::Ip6RuleConfig>(rule) ? slices::ip6
                                                            : slices::mac;
}

}  // namespace

std::vector<Box> recordedBoxes(Slice const& slice, PolicyMapTestKit::RuleRecord const& rule) {
  if (!slice.in(slicesOf(rule.match))) {
    return {};
  }
  std::vector<PortBlock> const blocks = portBlocksOf(rule.subRules);
  Entries entries(slice);
  std::visit(
      [&](auto const& match) {
        entries.address(slice.source(), match.source());
        entries.address(slice.destination(), match.destination());
        takeFilter(slice, match, blocks, entries);
      },
      rule.match);
  return entries.take();
}

}  // namespace PolicyMapPackets
