// SPDX-License-Identifier: Apache-2.0
#pragma once

// IpFilterBase: the fields that IPv4 and IPv6 rules match besides the addresses.
//
// ACL_IP_FILTER_FIELDS is the one list of the fields. Each row gives a field its storage, its
// reader x(), its writer xIs(value), its place in hash, order, text form and registration, and its
// meeting in intersections. Code that treats the fields one by one, such as describe(), does not
// compile until it covers a new field.
//
//   permit              permit (the default) or deny
//   protocol            0 to 255, none for any
//   srcPort, dstPort    of protocols with ports
//   dscp                0 to 63, none for any
//   ttl                 0 to 255
//   tcpFlags            flags that must be set or clear
//   established         only packets of an established connection
//   ackOrRst            only packets with ACK or RST (or both) set, which no TcpFlags can say
//   fragments           only non-initial fragments
//   icmpType, icmpCode  0 to 255, none for any
//   tni, vni            tenant and virtual network identifier, 0 to 16777215, 0 for any
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

#define ACL_IP_FILTER_FIELDS(ROW) \
  ROW(permit, PermitField)        \
  ROW(protocol, ByteField)        \
  ROW(srcPort, PortField)         \
  ROW(dstPort, PortField)         \
  ROW(dscp, DscpField)            \
  ROW(ttl, TtlField)              \
  ROW(tcpFlags, TcpFlagsField)    \
  ROW(established, FlagField)     \
  ROW(ackOrRst, FlagField)        \
  ROW(fragments, FlagField)       \
  ROW(icmpType, ByteField)        \
  ROW(icmpCode, ByteField)        \
  ROW(tni, NetworkField)          \
  ROW(vni, NetworkField)

class POLICYMAP_API IpFilterBase {
 public:
  static constexpr auto filterFields() {
    using F = IpFilterBase;
#define ACL_ROW(name, Field) Kor::field(#name, &F::name, &F::name##Is),
    return std::tuple{ACL_IP_FILTER_FIELDS(ACL_ROW)};
#undef ACL_ROW
  }

#define ACL_ROW(name, Field)                    \
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
#define ACL_ROW(name, Field) Field name##_;
  ACL_IP_FILTER_FIELDS(ACL_ROW)
#undef ACL_ROW
};

}  // namespace Acl
