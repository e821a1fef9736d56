// SPDX-License-Identifier: Apache-2.0
#pragma once

// MacFilter: the fields that MAC rules match besides the addresses.
//
// ACL_MAC_FILTER_FIELDS is the one list of the fields; see IpFilterBase.h.
//
// Every setter checks its value first and raises RangeException "MacFilter::ATTRIBUTE < LOWEST or >
// HIGHEST not allowed".

#include "Acl/FilterField.h"
#include "Kor/Strep.h"
#include "PolicyMapExport.h"

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

namespace Acl {

using EthertypeField = OptionalField<std::uint32_t, 0, 65535>;
using VlanField = OptionalField<std::uint16_t, 1, 4094>;
using MplsLabelField = OptionalField<std::uint32_t, 0, 1048575>;
using PriorityField = OptionalField<std::uint8_t, 0, 7>;

#define ACL_MAC_FILTER_FIELDS(ROW)                                                   \
  ROW(permit, PermitField, "True permits, False denies; default True")               \
  ROW(ethertype, EthertypeField, "0 to 65535; None for any")                         \
  ROW(vlan, VlanField, "1 to 4094; None for any")                                    \
  ROW(mplsLabel, MplsLabelField, "outer MPLS label, 0 to 1048575; None for any")     \
  ROW(mplsInnerLabel, MplsLabelField, "next MPLS label, 0 to 1048575; None for any") \
  ROW(cos, PriorityField, "priority in the VLAN tag, 0 to 7; None for any")          \
  ROW(mplsExperimental, PriorityField,                                               \
      "experimental bits of the outer MPLS label, 0 to 7; None for any")

class POLICYMAP_API MacFilter {
 public:
  static constexpr auto filterFields() {
    using F = MacFilter;
#define ACL_ROW(name, Field, prose) Kor::field(#name, &F::name, &F::name##Is, prose),
    return std::tuple{ACL_MAC_FILTER_FIELDS(ACL_ROW)};
#undef ACL_ROW
  }

#define ACL_ROW(name, Field, prose)          \
  [[nodiscard]] Field::Value name() const {  \
    return name##_.get();                    \
  }                                          \
  void name##Is(Field::Parameter value) {    \
    name##_.set("MacFilter::" #name, value); \
  }
  ACL_MAC_FILTER_FIELDS(ACL_ROW)
#undef ACL_ROW

  // Always false: every MAC rule matches some packets.
  [[nodiscard]] static bool matchesNothing() {
    return false;
  }

  bool operator==(MacFilter const&) const = default;
  std::strong_ordering operator<=>(MacFilter const&) const = default;

 protected:
  // The line of a rule with these addresses, preceded by `anyProtocol`.
  [[nodiscard]] std::string describeFilter(std::string_view anyProtocol, std::string_view source,
                                           std::string_view destination) const;

 private:
#define ACL_ROW(name, Field, prose) Field name##_;
  ACL_MAC_FILTER_FIELDS(ACL_ROW)
#undef ACL_ROW
};

}  // namespace Acl
