// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapMatch.h"

namespace PolicyMap {

ClassMapMatch ClassMapMatch::acl(ClassMapMatchOption option, Kor::Name name) {
  ClassMapMatch match;
  match.option_ = option;
  match.name_ = std::move(name);
  return match;
}

ClassMapMatch ClassMapMatch::classMap(Kor::Name name) {
  ClassMapMatch match;
  match.kind_ = Kind::classMap;
  match.name_ = std::move(name);
  return match;
}

ClassMapMatch ClassMapMatch::own(ClassMapMatchOption option, Rule const& rule) {
  ClassMapMatch match;
  match.kind_ = Kind::rule;
  match.option_ = option;
  match.rule_ = rule;
  return match;
}

ClassMapMatch ClassMapMatch::rule(Acl::IpRuleConfig const& rule) {
  return own(ClassMapMatchOption::ipv4, rule);
}
ClassMapMatch ClassMapMatch::rule(Acl::Ip6RuleConfig const& rule) {
  return own(ClassMapMatchOption::ipv6, rule);
}
ClassMapMatch ClassMapMatch::rule(Acl::MacRuleConfig const& rule, ClassMapMatchOption option) {
  return own(option, rule);
}

}  // namespace PolicyMap
