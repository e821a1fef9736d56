// SPDX-License-Identifier: Apache-2.0
// From rules and addresses as they are read to those that are configured.
#pragma once

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

/// A rule of any family as access lists and class-maps hold it.
using ConfiguredRule = PolicyMap::ClassMapMatch::Rule;

ConfiguredRule configuredRule(Rule const& rule);
/// The sixth column of a filter set is no part of the rule.
ConfiguredRule configuredRule(FilterRule const& rule, Family family);

/// What a class-map matches on with lists and rules of this family.
PolicyMap::ClassMapMatchOption matchOption(Family family);

/// A match on a rule of its own.
PolicyMap::ClassMapMatch ownMatch(ConfiguredRule const& rule);

/// The address of an interface as an Ip::Address or Ip6::Address.
template <typename Configured>
Configured interfaceAddress(InterfacePrefix const& prefix) {
  typename Configured::Bytes bytes{};
  std::copy_n(prefix.address.begin(), Configured::size, bytes.begin());
  return Configured(bytes, prefix.length);
}

/// One line as in a configuration.
inline std::string describe(ConfiguredRule const& rule) {
  return std::visit([](auto const& some) { return some.describe(); }, rule);
}

inline std::uint32_t hashOf(ConfiguredRule const& rule) {
  return std::visit([](auto const& some) { return some.hash(); }, rule);
}

}  // namespace lab
