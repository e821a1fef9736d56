// SPDX-License-Identifier: Apache-2.0
#pragma once

// MacFilter: the fields that MAC rules match besides the addresses.
//
// Every setter checks its value first and raises RangeException "MacFilter::ATTRIBUTE < LOWEST or >
// HIGHEST not allowed".

#include "Acl/OptionalNumber.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace Acl {

class POLICYMAP_API MacFilter {
 public:
  static constexpr auto filterFields() {
    using F = MacFilter;
    return std::tuple(Kor::field("permit", &F::permit, &F::permitIs),
                      Kor::field("ethertype", &F::ethertype, &F::ethertypeIs),
                      Kor::field("vlan", &F::vlan, &F::vlanIs),
                      Kor::field("mplsLabel", &F::mplsLabel, &F::mplsLabelIs),
                      Kor::field("mplsInnerLabel", &F::mplsInnerLabel, &F::mplsInnerLabelIs));
  }

  // True: permit (the default). False: deny.
  [[nodiscard]] bool permit() const { return permit_; }
  void permitIs(bool permit) { permit_ = permit; }
  // 0 to 65535; none matches any.
  [[nodiscard]] OptionalNumber ethertype() const { return ethertype_.get(); }
  void ethertypeIs(OptionalNumber ethertype);
  // 1 to 4094; none matches any.
  [[nodiscard]] OptionalNumber vlan() const { return vlan_.get(); }
  void vlanIs(OptionalNumber vlan);
  // The outer and the next MPLS label, 0 to 1048575; none matches any.
  [[nodiscard]] OptionalNumber mplsLabel() const { return mplsLabel_.get(); }
  void mplsLabelIs(OptionalNumber mplsLabel);
  [[nodiscard]] OptionalNumber mplsInnerLabel() const { return mplsInnerLabel_.get(); }
  void mplsInnerLabelIs(OptionalNumber mplsInnerLabel);

  // Always false: every MAC rule matches some packets.
  [[nodiscard]] static bool matchesNothing() { return false; }

  bool operator==(MacFilter const&) const = default;
  std::strong_ordering operator<=>(MacFilter const&) const = default;

 protected:
  // The line of a rule with these addresses, preceded by `anyProtocol`.
  [[nodiscard]] std::string describeFilter(std::string_view anyProtocol, std::string_view source,
                                           std::string_view destination) const;

 private:
  StoredOptional<std::uint32_t> ethertype_;
  StoredOptional<std::uint32_t> mplsLabel_;
  StoredOptional<std::uint32_t> mplsInnerLabel_;
  StoredOptional<std::uint16_t> vlan_;
  bool permit_ = true;
};

}  // namespace Acl
