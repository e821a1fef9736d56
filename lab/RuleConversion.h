// SPDX-License-Identifier: Apache-2.0
#pragma once

// Conversion of parsed rules and addresses to configured ones.

#include "lab/FilterSet.h"
#include "lab/Statement.h"

#include <Ip/Status.h>
#include <Ip6/Status.h>
#include <PolicyMap/ClassMapMatch.h>
#include <PolicyMap/ClassMapMatchOption.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <variant>

namespace lab {

// A rule of any family, as in access lists and class-maps.
using ConfiguredRule = PolicyMap::ClassMapMatch::Rule;

ConfiguredRule configuredRule(Rule const& rule);
// Ignores the sixth column of the filter set.
ConfiguredRule configuredRule(FilterRule const& rule, Family family);

// The match option of a class-map with lists and rules of this family.
PolicyMap::ClassMapMatchOption matchOption(Family family);

// A match on a rule in the class-map itself.
PolicyMap::ClassMapMatch ownMatch(ConfiguredRule const& rule);

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

}  // namespace lab
