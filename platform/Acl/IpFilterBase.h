// SPDX-License-Identifier: Apache-2.0
#pragma once

// IpFilterBase: the fields that IPv4 and IPv6 rules match besides the addresses.
//
// Every setter checks its value first and raises RangeException "IpFilterBase::ATTRIBUTE < LOWEST
// or > HIGHEST not allowed".

#include "Acl/NumberMatch.h"
#include "Acl/OptionalNumber.h"
#include "Acl/TcpFlags.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace Acl {

class POLICYMAP_API IpFilterBase {
 public:
  static constexpr auto filterFields() {
    using F = IpFilterBase;
    return std::tuple(
        Kor::field("permit", &F::permit, &F::permitIs),
        Kor::field("protocol", &F::protocol, &F::protocolIs),
        Kor::field("srcPort", &F::srcPort, &F::srcPortIs),
        Kor::field("dstPort", &F::dstPort, &F::dstPortIs), Kor::field("dscp", &F::dscp, &F::dscpIs),
        Kor::field("ttl", &F::ttl, &F::ttlIs), Kor::field("tcpFlags", &F::tcpFlags, &F::tcpFlagsIs),
        Kor::field("established", &F::established, &F::establishedIs),
        Kor::field("ackOrRst", &F::ackOrRst, &F::ackOrRstIs),
        Kor::field("fragments", &F::fragments, &F::fragmentsIs),
        Kor::field("icmpType", &F::icmpType, &F::icmpTypeIs),
        Kor::field("icmpCode", &F::icmpCode, &F::icmpCodeIs), Kor::field("tni", &F::tni, &F::tniIs),
        Kor::field("vni", &F::vni, &F::vniIs));
  }

  // True: permit (the default). False: deny.
  [[nodiscard]] bool permit() const { return permit_; }
  void permitIs(bool permit) { permit_ = permit; }
  // 0 to 255; none matches any.
  [[nodiscard]] OptionalNumber protocol() const { return protocol_.get(); }
  void protocolIs(OptionalNumber protocol);
  [[nodiscard]] PortMatch srcPort() const { return srcPort_; }
  void srcPortIs(PortMatch const& srcPort) { srcPort_ = srcPort; }
  [[nodiscard]] PortMatch dstPort() const { return dstPort_; }
  void dstPortIs(PortMatch const& dstPort) { dstPort_ = dstPort; }
  // 0 to 63; none matches any.
  [[nodiscard]] OptionalNumber dscp() const { return dscp_.get(); }
  void dscpIs(OptionalNumber dscp);
  [[nodiscard]] TtlMatch ttl() const { return ttl_; }
  void ttlIs(TtlMatch const& ttl) { ttl_ = ttl; }
  [[nodiscard]] TcpFlags tcpFlags() const { return tcpFlags_; }
  void tcpFlagsIs(TcpFlags const& tcpFlags) { tcpFlags_ = tcpFlags; }
  // Matches only packets of an established connection.
  [[nodiscard]] bool established() const { return established_; }
  void establishedIs(bool established) { established_ = established; }
  // Matches only packets with ACK or RST (or both) set, which value and mask cannot express.
  [[nodiscard]] bool ackOrRst() const { return ackOrRst_; }
  void ackOrRstIs(bool ackOrRst) { ackOrRst_ = ackOrRst; }
  // Matches non-initial fragments only.
  [[nodiscard]] bool fragments() const { return fragments_; }
  void fragmentsIs(bool fragments) { fragments_ = fragments; }
  // 0 to 255; none matches any.
  [[nodiscard]] OptionalNumber icmpType() const { return icmpType_.get(); }
  void icmpTypeIs(OptionalNumber icmpType);
  [[nodiscard]] OptionalNumber icmpCode() const { return icmpCode_.get(); }
  void icmpCodeIs(OptionalNumber icmpCode);
  // Tenant network and virtual network identifier, 0 to 16777215; 0 matches any.
  [[nodiscard]] std::uint32_t tni() const { return tni_; }
  void tniIs(std::int64_t tni);
  [[nodiscard]] std::uint32_t vni() const { return vni_; }
  void vniIs(std::int64_t vni);

  // True if no packet can match, e.g. ports `lt 0`.
  [[nodiscard]] bool matchesNothing() const {
    return srcPort_.matchesNothing() || dstPort_.matchesNothing() || ttl_.matchesNothing();
  }

  bool operator==(IpFilterBase const&) const = default;
  std::strong_ordering operator<=>(IpFilterBase const&) const = default;

 protected:
  // The line of a rule with these addresses. `anyProtocol` is the word for any protocol.
  [[nodiscard]] std::string describeFilter(std::string_view anyProtocol, std::string_view source,
                                           std::string_view destination) const;

 private:
  std::uint32_t tni_ = 0;
  std::uint32_t vni_ = 0;
  PortMatch srcPort_;
  PortMatch dstPort_;
  StoredOptional<std::uint16_t> protocol_;
  StoredOptional<std::uint16_t> icmpType_;
  StoredOptional<std::uint16_t> icmpCode_;
  StoredOptional<std::uint8_t> dscp_;
  TtlMatch ttl_;
  TcpFlags tcpFlags_;
  bool permit_ = true;
  bool established_ = false;
  bool ackOrRst_ = false;
  bool fragments_ = false;
};

}  // namespace Acl
