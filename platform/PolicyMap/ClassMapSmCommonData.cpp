// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapSmCommonData.h"

#include "PolicyMap/RuleLists.h"

namespace PolicyMap {

ClassMapSmCommonData::ClassMapSmCommonData(Kor::Name name,
                                           Kor::Ptr<ClassMapSubConfig const> classMap,
                                           Kor::Ptr<Acl::Config const> aclConfig)
    : name_(std::move(name)), classMap_(std::move(classMap)), aclConfig_(std::move(aclConfig)) {}

ClassMapSmCommonData::~ClassMapSmCommonData() = default;
ClassMapSmCommonData::NotifieeConst::~NotifieeConst() = default;
ClassMapSmCommonData::Notifiee::~Notifiee() = default;

Kor::KorType const* ClassMapSmCommonData::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapSmCommonData::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapSmCommonData", PtrInterface::_fwkType());
  return &type;
}

void ClassMapSmCommonData::classMapIs(Kor::Ptr<ClassMapSubConfig const> const& classMap) {
  if (classMap == classMap_) {
    return;
  }
  classMap_ = classMap;
  notify<NotifieeConst>(this, ClassMapSmCommonData::_fwkType(), classMapId,
                        &NotifieeConst::onClassMap);
}

void ClassMapSmCommonData::classMapStatusIs(Kor::Ptr<ClassMapStatus> const& status) {
  if (status == classMapStatus_) {
    return;
  }
  classMapStatus_ = status;
  notify<NotifieeConst>(this, ClassMapSmCommonData::_fwkType(), classMapStatusId,
                        &NotifieeConst::onClassMapStatus);
}

void ClassMapSmCommonData::announceAction(ActionType type) {
  notify<NotifieeConst>(this, ClassMapSmCommonData::_fwkType(), actionId, &NotifieeConst::onAction,
                        type);
}

std::uint32_t ClassMapSmCommonData::updateAclActionsInc(std::uint32_t count) {
  updateAclActionsIs(updateAclActions_ + count);
  return updateAclActions_;
}

void ClassMapSmCommonData::updateAclActionsIs(std::uint32_t count) {
  if (count == updateAclActions_) {
    return;
  }
  updateAclActions_ = count;
  notify<NotifieeConst>(this, ClassMapSmCommonData::_fwkType(), updateAclActionsId,
                        &NotifieeConst::onUpdateAclActions);
}

void ClassMapSmCommonData::rulesIs(ClassMapMatchOption option, Kor::Ptr<ClassRules const> rules) {
  rules_[option] = std::move(rules);
}

template <class Rule>
Rule ClassMapSmCommonData::ruleOf(AclRuleKey const& key) const {
  if (Kor::Ptr<ClassRules const> const& programmed = rules_[key.matchOption()]) {
    if (Rule const* const rule = programmed->find<Rule>(key)) {
      return *rule;
    }
  }
  if (!key.aclName().empty()) {
    auto const list = aclConfig_ ? RuleLists<Rule>::find(*aclConfig_, key.aclName()) : nullptr;
    return list ? list->rule(key.seqno()) : Rule();
  }
  auto const own = classMap_ ? classMap_->korMatch(key.seqno()) : nullptr;
  Rule const* const rule = own ? std::get_if<Rule>(&own->value().rule()) : nullptr;
  return rule != nullptr ? *rule : Rule();
}

Acl::IpRuleConfig ClassMapSmCommonData::getIpRule(AclRuleKey const& key) const {
  return ruleOf<Acl::IpRuleConfig>(key);
}
Acl::Ip6RuleConfig ClassMapSmCommonData::getIp6Rule(AclRuleKey const& key) const {
  return ruleOf<Acl::Ip6RuleConfig>(key);
}
Acl::MacRuleConfig ClassMapSmCommonData::getMacRule(AclRuleKey const& key) const {
  return ruleOf<Acl::MacRuleConfig>(key);
}

}  // namespace PolicyMap
