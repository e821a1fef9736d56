// SPDX-License-Identifier: Apache-2.0
#include "Acl/IpFilterBase.h"

#include "Acl/RangeCheck.h"
#include "Acl/Words.h"

#include <array>

namespace Acl {
namespace {

struct Protocol {
  std::int64_t number;
  std::string_view name;
};
constexpr std::array<Protocol, 12> protocols{{{1, "icmp"},
                                              {2, "igmp"},
                                              {6, "tcp"},
                                              {17, "udp"},
                                              {47, "gre"},
                                              {50, "esp"},
                                              {51, "ahp"},
                                              {58, "icmp6"},
                                              {88, "eigrp"},
                                              {89, "ospf"},
                                              {103, "pim"},
                                              {132, "sctp"}}};

std::string protocolText(OptionalNumber protocol, std::string_view anyProtocol) {
  if (!protocol) {
    return std::string(anyProtocol);
  }
  for (Protocol const& known : protocols) {
    if (known.number == *protocol) {
      return std::string(known.name);
    }
  }
  return std::to_string(*protocol);
}

constexpr std::array<std::string_view, 8> flagNames{"fin", "syn", "rst", "psh",
                                                    "ack", "urg", "ece", "cwr"};

// "+syn -ack": the flags that must be set and those that must be clear.
std::string flagsText(TcpFlags flags) {
  std::string text;
  for (unsigned bit = 0; bit < flagNames.size(); ++bit) {
    if ((flags.mask() >> bit & 1U) != 0) {
      text.append(text.empty() ? "" : " ").append((flags.value() >> bit & 1U) != 0 ? "+" : "-");
      text.append(flagNames[bit]);
    }
  }
  return text;
}

}  // namespace

void IpFilterBase::protocolIs(OptionalNumber protocol) {
  protocol_.set(checked("IpFilterBase::protocol", protocol, 0, 255));
}

void IpFilterBase::dscpIs(OptionalNumber dscp) {
  dscp_.set(checked("IpFilterBase::dscp", dscp, 0, 63));
}

void IpFilterBase::icmpTypeIs(OptionalNumber icmpType) {
  icmpType_.set(checked("IpFilterBase::icmpType", icmpType, 0, 255));
}

void IpFilterBase::icmpCodeIs(OptionalNumber icmpCode) {
  icmpCode_.set(checked("IpFilterBase::icmpCode", icmpCode, 0, 255));
}

void IpFilterBase::tniIs(std::int64_t tni) {
  tni_ = static_cast<std::uint32_t>(inRange("IpFilterBase::tni", tni, 0, 16777215));
}

void IpFilterBase::vniIs(std::int64_t vni) {
  vni_ = static_cast<std::uint32_t>(inRange("IpFilterBase::vni", vni, 0, 16777215));
}

std::string IpFilterBase::describeFilter(std::string_view anyProtocol, std::string_view source,
                                         std::string_view destination) const {
  Words words(permit());
  words.add(protocolText(protocol(), anyProtocol));
  words.add(source);
  words.add(srcPort().describe());
  words.add(destination);
  words.add(dstPort().describe());
  words.add("icmp-type", icmpType());
  words.add("icmp-code", icmpCode());
  words.add(flagsText(tcpFlags()));
  words.addIf(established(), "established");
  words.addIf(ackOrRst(), "ack-or-rst");
  words.addIf(fragments(), "fragments");
  words.add("dscp", dscp());
  words.add(ttl().isAny() ? std::string() : "ttl " + ttl().describe());
  words.add("tni", tni() == 0 ? OptionalNumber() : OptionalNumber(tni()));
  words.add("vni", vni() == 0 ? OptionalNumber() : OptionalNumber(vni()));
  return words.text();
}

}  // namespace Acl
