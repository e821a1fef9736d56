// SPDX-License-Identifier: Apache-2.0
#pragma once

// IpFilterBase: the fields that IPv4 and IPv6 rules match besides the addresses.
//
// ACL_IP_FILTER_FIELDS is the one list of the fields. Each row gives a field its storage, its
// reader x(), its writer xIs(value), its place in hash, order, text form and registration, its
// meeting in intersections, and one line of explanation. Code that treats the fields one by one,
// such as describe(), does not compile until it covers a new field.
//
// Every setter checks its value first and raises RangeException "IpFilterBase::ATTRIBUTE < LOWEST
// or > HIGHEST not allowed".

#include "Acl/FilterField.h"
#include "Acl/NumberMatch.h"
#include "Acl/TcpFlags.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace Acl {

using ByteField = OptionalField<std::uint16_t, 0, 255>;
using DscpField = OptionalField<std::uint8_t, 0, 63>;
using NetworkField = NumberField<std::uint32_t, 16777215>;
using PortField = PlainField<PortMatch>;
using TtlField = PlainField<TtlMatch>;
using TcpFlagsField = PlainField<TcpFlags>;

#define ACL_IP_FILTER_FIELDS(ROW)                                                     \
  ROW(permit, PermitField, "True permits, False denies; default True")                \
  ROW(protocol, ByteField, "IP protocol, 0 to 255; None for any")                     \
  ROW(srcPort, PortField, "source ports that match, of protocols with ports")         \
  ROW(dstPort, PortField, "destination ports that match, of protocols with ports")    \
  ROW(dscp, DscpField, "differentiated services code point, 0 to 63; None for any")   \
  ROW(ttl, TtlField, "time to live or hop limit that matches, 0 to 255")              \
  ROW(tcpFlags, TcpFlagsField, "TCP flags that must be set or clear")                 \
  ROW(established, FlagField, "matches only packets of an established connection")    \
  ROW(ackOrRst, FlagField,                                                            \
      "matches only packets with ACK or RST set, or both, which tcpFlags cannot say") \
  ROW(fragments, FlagField, "matches only non-initial fragments")                     \
  ROW(icmpType, ByteField, "of ICMP packets, 0 to 255; None for any")                 \
  ROW(icmpCode, ByteField, "of ICMP packets, 0 to 255; None for any")                 \
  ROW(tni, NetworkField, "tenant network identifier, 0 to 16777215; 0 for any")       \
  ROW(vni, NetworkField, "virtual network identifier, 0 to 16777215; 0 for any")

class POLICYMAP_API IpFilterBase {
 public:
  static constexpr auto filterFields() {
    using F = IpFilterBase;
#define ACL_ROW(name, Field, prose) Kor::field(#name, &F::name, &F::name##Is, prose),
    return std::tuple{ACL_IP_FILTER_FIELDS(ACL_ROW)};
#undef ACL_ROW
  }

#define ACL_ROW(name, Field, prose)             \
  [[nodiscard]] Field::Value name() const {     \
    return name##_.get();                       \
  }                                             \
  void name##Is(Field::Parameter value) {       \
    name##_.set("IpFilterBase::" #name, value); \
  }
  ACL_IP_FILTER_FIELDS(ACL_ROW)
#undef ACL_ROW

  // True if no packet can match, e.g. ports `lt 0`.
  [[nodiscard]] bool matchesNothing() const {
    return srcPort().matchesNothing() || dstPort().matchesNothing() || ttl().matchesNothing();
  }

  bool operator==(IpFilterBase const&) const = default;
  std::strong_ordering operator<=>(IpFilterBase const&) const = default;

 protected:
  // The line of a rule with these addresses. `anyProtocol` is the word for any protocol.
  [[nodiscard]] std::string describeFilter(std::string_view anyProtocol, std::string_view source,
                                           std::string_view destination) const;

 private:
#define ACL_ROW(name, Field, prose) Field name##_;
  ACL_IP_FILTER_FIELDS(ACL_ROW)
#undef ACL_ROW
};

}  // namespace Acl
