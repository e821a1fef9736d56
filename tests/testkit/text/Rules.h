// SPDX-License-Identifier: Apache-2.0
#pragma once

// Shared by the tests of rules: from the text of a rule to the rule, or to the text of an error.

#include "testkit/text/Parsing.h"

#include <Acl/Ip6RuleConfig.h>
#include <Acl/IpRuleConfig.h>

#include <string>
#include <variant>

namespace PolicyMapTestKit::Text::test {

template <class Rule>
Rule ruleOf(std::string const& list, std::string const& rule) {
  return std::get<Rule>(last<RuleAdd>(list + "\n" + rule).rule.rule);
}

inline Acl::IpRuleConfig ipRule(std::string const& rule,
                                std::string const& list = "ip access-list L") {
  return ruleOf<Acl::IpRuleConfig>(list, rule);
}

inline Acl::Ip6RuleConfig ip6Rule(std::string const& rule) {
  return ruleOf<Acl::Ip6RuleConfig>("ipv6 access-list L", rule);
}

// The error of a rule, which is on line 2.
inline std::string ruleError(std::string const& rule,
                             std::string const& list = "ip access-list L") {
  return errorOf(list + "\n" + rule + "\n");
}

}  // namespace PolicyMapTestKit::Text::test
