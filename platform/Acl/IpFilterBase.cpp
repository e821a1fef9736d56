// SPDX-License-Identifier: Apache-2.0
#include "Acl/IpFilterBase.h"

#include "Acl/Protocols.h"
#include "Acl/Words.h"

#include <array>

namespace Acl {
namespace {

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

constexpr std::array ipOptions{
    option<IpFilterBase, &IpFilterBase::icmpType>("icmpType", "icmp-type"),
    option<IpFilterBase, &IpFilterBase::icmpCode>("icmpCode", "icmp-code"),
    option<IpFilterBase, &IpFilterBase::tcpFlags>("tcpFlags", ""),
    option<IpFilterBase, &IpFilterBase::established>("established", "established"),
    option<IpFilterBase, &IpFilterBase::ackOrRst>("ackOrRst", "ack-or-rst"),
    option<IpFilterBase, &IpFilterBase::fragments>("fragments", "fragments"),
    option<IpFilterBase, &IpFilterBase::dscp>("dscp", "dscp"),
    option<IpFilterBase, &IpFilterBase::ttl>("ttl", "ttl"),
    option<IpFilterBase, &IpFilterBase::tni>("tni", "tni"),
    option<IpFilterBase, &IpFilterBase::vni>("vni", "vni"),
};

static_assert(saysEachField<IpFilterBase>([](std::string_view field) {
                return says(ipOptions, field) || field == "permit" || field == "protocol" ||
                       field == "srcPort" || field == "dstPort";
              }),
              "describe() leaves out a field");

}  // namespace

std::string IpFilterBase::describeFilter(std::string_view anyProtocol, std::string_view source,
                                         std::string_view destination) const {
  Words words(permit());
  words.add(protocolText(protocol(), anyProtocol));
  words.add(source);
  words.add(srcPort().describe());
  words.add(destination);
  words.add(dstPort().describe());
  say(words, ipOptions, *this);
  return words.text();
}

}  // namespace Acl
