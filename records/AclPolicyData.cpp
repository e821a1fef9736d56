// SPDX-License-Identifier: Apache-2.0
#include "records/AclPolicyData.h"

#include <PolicyMap/PerOption.h>

namespace PolicyMapTest {

using PolicyMap::SubRuleData;

AclPolicyData::AclPolicyData(AclPolicyType const& key)
    : key_(key),
      rules_(PolicyMap::forOption(
          key.option(), [this]() -> RuleTable& { return ipRules_; },
          [this]() -> RuleTable& { return ip6Rules_; },
          [this]() -> RuleTable& { return macRules_; },
          [this]() -> RuleTable& { return macRules_; })) {}

AclPolicyData::~AclPolicyData() {
  rulesDelAll();
}

Kor::KorType const* AclPolicyData::fwkType() const {
  return _fwkType();
}
Kor::KorType* AclPolicyData::_fwkType() {
  static Kor::KorType type("PolicyMapTest::AclPolicyData", PtrInterface::_fwkType());
  return &type;
}

void AclPolicyData::recordSubRule(RecordedRule& rule, SubRuleData const& subRule) {
  if (rule.has(RulePart::subRules)) {
    subRulesForKeyCollection_.memberOf(rule)->subRuleIs(subRule, true);
  } else {
    rules_.add(rule, RulePart::subRules);
    rule.storedSubRule() = subRule;
  }
}

bool AclPolicyData::hasSubRule(RecordedRule& rule, SubRuleData const& subRule) {
  if (SubRuleDataCollection const* const subRules = subRulesOf(rule)) {
    return subRules->subRule(subRule);
  }
  return rule.has(RulePart::subRules) && rule.storedSubRule() == subRule;
}

void AclPolicyData::rulesDelAll() {
  if (!ipRules_.hasCursors() && !ip6Rules_.hasCursors() && !macRules_.hasCursors()) {
    ipRules_.clear();
    ip6Rules_.clear();
    macRules_.clear();
    return;
  }
  ruleMatchDelAll();
  ruleMatch6DelAll();
  ruleMatchMacDelAll();
  subRulesForKeyDelAll();
#define POLICYMAPTEST_ROW(kind) ruleAction##kind##DelAll();
  POLICYMAPTEST_ACTION_KINDS(POLICYMAPTEST_ROW)
#undef POLICYMAPTEST_ROW
}

}  // namespace PolicyMapTest
