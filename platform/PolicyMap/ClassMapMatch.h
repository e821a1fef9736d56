// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/Ip6RuleConfig.h"
#include "Acl/IpRuleConfig.h"
#include "Acl/MacRuleConfig.h"
#include "Kor/String.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/Export.h"

#include <variant>

namespace PolicyMap {

// One match statement of a class-map: a named access list, another class-map, or a rule of its own.
class POLICYMAP_API ClassMapMatch {
 public:
  enum class Kind : std::uint8_t { acl, classMap, rule };
  using Rule = std::variant<Acl::IpRuleConfig, Acl::Ip6RuleConfig, Acl::MacRuleConfig>;

  // The empty match: an access list without a name.
  ClassMapMatch() = default;
  static ClassMapMatch acl(ClassMapMatchOption option, Kor::Name name);
  static ClassMapMatch classMap(Kor::Name name);
  static ClassMapMatch rule(Acl::IpRuleConfig const& rule);
  static ClassMapMatch rule(Acl::Ip6RuleConfig const& rule);
  // MAC rules serve two options: mac and mpls.
  static ClassMapMatch rule(Acl::MacRuleConfig const& rule,
                            ClassMapMatchOption option = ClassMapMatchOption::mac);

  [[nodiscard]] Kind kind() const { return kind_; }
  // What is matched on; without meaning for another class-map.
  [[nodiscard]] ClassMapMatchOption option() const { return option_; }
  // The access list or class-map; empty for a rule.
  [[nodiscard]] Kor::Name const& name() const { return name_; }
  [[nodiscard]] Rule const& rule() const { return rule_; }

  bool operator==(ClassMapMatch const&) const = default;
  [[nodiscard]] bool operator!() const { return *this == ClassMapMatch(); }

 private:
  static ClassMapMatch own(ClassMapMatchOption option, Rule const& rule);

  Kind kind_ = Kind::acl;
  ClassMapMatchOption option_ = ClassMapMatchOption::ipv4;
  Kor::Name name_;
  Rule rule_;
};

}  // namespace PolicyMap
