// SPDX-License-Identifier: Apache-2.0
#pragma once

// Conversion of parsed addresses and filter sets to what is configured.

#include "testkit/Export.h"
#include "testkit/text/FilterSet.h"
#include "testkit/text/Statement.h"

#include <Ip/Status.h>
#include <Ip6/Status.h>
#include <PolicyMap/ClassMapMatch.h>
#include <PolicyMap/ClassMapMatchOption.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <variant>

namespace PolicyMapTestKit::Text {

// Ignores the sixth column of the filter set.
POLICYMAPTESTKIT_API ConfiguredRule configuredRule(FilterRule const& rule, Family family);

// The match option of a class-map with lists and rules of this family.
POLICYMAPTESTKIT_API PolicyMap::ClassMapMatchOption matchOption(Family family);

// A match on a rule in the class-map itself; of option mpls if it matches the experimental bits.
POLICYMAPTESTKIT_API PolicyMap::ClassMapMatch ownMatch(ConfiguredRule const& rule);

// A set of addresses as an Acl::IpAddressMatch, Ip6AddressMatch or MacAddressMatch.
template <class Match>
Match addressMatch(Address const& address) {
  typename Match::Bytes value{};
  typename Match::Bytes mask{};
  std::copy_n(address.value.begin(), Match::size, value.begin());
  std::copy_n(address.mask.begin(), Match::size, mask.begin());
  return Match(value, mask);
}

// The address of an interface as an Ip::Address or Ip6::Address.
template <class Configured>
Configured interfaceAddress(InterfacePrefix const& prefix) {
  typename Configured::Bytes bytes{};
  std::copy_n(prefix.address.begin(), Configured::size, bytes.begin());
  return Configured(bytes, prefix.length);
}

// One line of configuration.
inline std::string describe(ConfiguredRule const& rule) {
  return std::visit([](auto const& some) { return some.describe(); }, rule);
}

inline std::uint32_t hashOf(ConfiguredRule const& rule) {
  return std::visit([](auto const& some) { return some.hash(); }, rule);
}

}  // namespace PolicyMapTestKit::Text
