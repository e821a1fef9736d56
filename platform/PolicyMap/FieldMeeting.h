// SPDX-License-Identifier: Apache-2.0
#pragma once

// The intersection of two values of one field of a rule, by the type of the field.
//
// There is one meet() per type. The result is taken by reference, so that no other type converts to
// it: a rule with a field of an unknown type cannot be intersected and does not compile.

#include "Acl/AddressMatch.h"
#include "Acl/NumberMatch.h"
#include "Acl/OptionalNumber.h"
#include "Acl/TcpFlags.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace PolicyMap {

// Ascending and disjoint.
using PortRanges = std::vector<Acl::PortMatch::Range>;

enum class Meeting : std::uint8_t {
  something,      // `both` is the intersection
  nothing,        // no packet matches both
  inexpressible,  // some packets match both, but no value of the field expresses which
};

// A condition that a rule may add: the intersection has it if either rule has it.
inline Meeting meet(bool a, bool b, bool& both) {
  both = a || b;
  return Meeting::something;
}

// An identifier; 0 matches any.
inline Meeting meet(std::uint32_t a, std::uint32_t b, std::uint32_t& both) {
  both = a == 0 ? b : a;
  return a == 0 || b == 0 || a == b ? Meeting::something : Meeting::nothing;
}

inline Meeting meet(Acl::OptionalNumber a, Acl::OptionalNumber b, Acl::OptionalNumber& both) {
  both = a ? a : b;
  return !a || !b || a == b ? Meeting::something : Meeting::nothing;
}

inline Meeting meet(Acl::TcpFlags a, Acl::TcpFlags b, Acl::TcpFlags& both) {
  both = Acl::TcpFlags(a.value() | b.value(), a.mask() | b.mask());
  return ((a.value() ^ b.value()) & a.mask() & b.mask()) == 0 ? Meeting::something
                                                              : Meeting::nothing;
}

template <class Traits>
Meeting meet(Acl::AddressMatch<Traits> const& a, Acl::AddressMatch<Traits> const& b,
             Acl::AddressMatch<Traits>& both) {
  auto value = a.value();
  auto mask = a.mask();
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (((a.value()[i] ^ b.value()[i]) & a.mask()[i] & b.mask()[i]) != 0) {
      return Meeting::nothing;
    }
    value[i] = static_cast<std::uint8_t>(value[i] | b.value()[i]);
    mask[i] = static_cast<std::uint8_t>(mask[i] | b.mask()[i]);
  }
  both = Acl::AddressMatch<Traits>(value, mask);
  return Meeting::something;
}

Meeting meet(Acl::TtlMatch const& a, Acl::TtlMatch const& b, Acl::TtlMatch& both);

// A port match and, unless empty, the exact ranges that it approximates.
struct ExactPorts {
  Acl::PortMatch const& match;
  PortRanges const& exact;
};

// The intersection of ports always has a match. If no match can express it, `both` is the smallest
// enclosing range and `exact` the ranges. Otherwise `exact` is empty.
Meeting meet(ExactPorts a, ExactPorts b, Acl::PortMatch& both, PortRanges& exact);

}  // namespace PolicyMap
