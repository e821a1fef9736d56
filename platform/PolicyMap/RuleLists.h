// SPDX-License-Identifier: Apache-2.0
#pragma once

// Finds the access lists of each kind of rule.

#include "Acl/Config.h"

#include <string_view>

namespace PolicyMap {

template <class Rule>
struct RuleLists;

template <>
struct RuleLists<Acl::IpRuleConfig> {
  static constexpr std::string_view kind = "ip access-list";
  static auto find(Acl::Config const& acls, Kor::Name const& name) { return acls.ipAcl(name); }
};

template <>
struct RuleLists<Acl::Ip6RuleConfig> {
  static constexpr std::string_view kind = "ipv6 access-list";
  static auto find(Acl::Config const& acls, Kor::Name const& name) { return acls.ip6Acl(name); }
};

template <>
struct RuleLists<Acl::MacRuleConfig> {
  static constexpr std::string_view kind = "mac access-list";
  static auto find(Acl::Config const& acls, Kor::Name const& name) { return acls.macAcl(name); }
};

}  // namespace PolicyMap
