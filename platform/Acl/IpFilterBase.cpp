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

// The fields that are said after the addresses, in the order of the line.
using F = IpFilterBase;
constexpr std::array options{
    option<F, &F::icmpType>("icmpType", "icmp-type"),
    option<F, &F::icmpCode>("icmpCode", "icmp-code"),
    option<F, &F::tcpFlags>("tcpFlags", ""),
    option<F, &F::established>("established", "established"),
    option<F, &F::ackOrRst>("ackOrRst", "ack-or-rst"),
    option<F, &F::fragments>("fragments", "fragments"),
    option<F, &F::dscp>("dscp", "dscp"),
    option<F, &F::ttl>("ttl", "ttl"),
    option<F, &F::tni>("tni", "tni"),
    option<F, &F::vni>("vni", "vni"),
};

constexpr bool describes(std::string_view field) {
  for (auto const& known : options) {
    if (known.field == field) {
      return true;
    }
  }
  return field == "permit" || field == "protocol" || field == "srcPort" || field == "dstPort";
}
static_assert(saysEachField<IpFilterBase>(describes), "describe() leaves out a field");

}  // namespace

std::string IpFilterBase::describeFilter(std::string_view anyProtocol, std::string_view source,
                                         std::string_view destination) const {
  Words words(permit());
  words.add(protocolText(protocol(), anyProtocol));
  words.add(source);
  words.add(srcPort().describe());
  words.add(destination);
  words.add(dstPort().describe());
  for (auto const& said : options) {
    said.add(words, said.label, *this);
  }
  return words.text();
}

}  // namespace Acl
