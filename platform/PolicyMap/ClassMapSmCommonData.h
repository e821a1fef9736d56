// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/Config.h"
#include "Kor/Collection.h"
#include "Kor/Notifiee.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMap/Action.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/ClassRules.h"
#include "PolicyMap/PerOption.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMapExport.h"

namespace PolicyMap {

// Data of one class of one policy, shared by the helper and the action machines.
class POLICYMAP_API ClassMapSmCommonData : public Kor::PtrInterface, public Kor::NotifieeList {
 public:
  using Ptr = Kor::Ptr<ClassMapSmCommonData>;
  using PtrConst = Kor::Ptr<ClassMapSmCommonData const>;
  class NotifieeConst;
  class Notifiee;

  // Any pointer may be null.
  ClassMapSmCommonData(Kor::Name name, Kor::Ptr<ClassMapSubConfig const> classMap,
                       Kor::Ptr<Acl::Config const> aclConfig);
  ~ClassMapSmCommonData() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  virtual void classMapIs(Kor::Ptr<ClassMapSubConfig const> const& classMap);
  virtual void classMapStatusIs(Kor::Ptr<ClassMapStatus> const& status);

  // The configured actions of the class.
  KOR_VIRTUAL_VALUE_COLLECTION(ClassMapSmCommonData, action, Action, ActionType,
                               Kor::Ptr<PolicyMap::Action const>,
                               KOR_ON_CHANGE(announceAction(key)))

  // Counts the requests to reprogram the actions of the class's rules. Adds `count` with
  // wraparound, notifies, and returns the new value. Does nothing for 0.
  virtual std::uint32_t updateAclActionsInc(std::uint32_t count);
  virtual void updateAclActionsIs(std::uint32_t count);

  [[nodiscard]] Kor::Name const& name() const { return name_; }
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig const> const& classMap() const { return classMap_; }
  [[nodiscard]] Kor::Ptr<Acl::Config const> const& aclConfig() const { return aclConfig_; }
  [[nodiscard]] Kor::Ptr<ClassMapStatus> const& classMapStatus() const { return classMapStatus_; }
  [[nodiscard]] std::uint32_t updateAclActions() const { return updateAclActions_; }

  // The match of one rule of this class, or a default-constructed one for an unknown key. A rule
  // that is being programmed is returned as it was when the pass was planned, any other rule as
  // currently configured.
  [[nodiscard]] Acl::IpRuleConfig getIpRule(AclRuleKey const& key) const;
  [[nodiscard]] Acl::Ip6RuleConfig getIp6Rule(AclRuleKey const& key) const;
  [[nodiscard]] Acl::MacRuleConfig getMacRule(AclRuleKey const& key) const;

  // Sets the rules that the core has programmed, or is about to program, for an option.
  void rulesIs(ClassMapMatchOption option, Kor::Ptr<ClassRules const> rules);

  static constexpr Kor::AttributeId classMapId = 131;
  static constexpr Kor::AttributeId classMapStatusId = 133;
  static constexpr Kor::AttributeId actionId = 134;
  static constexpr Kor::AttributeId updateAclActionsId = 135;

 private:
  template <class Rule>
  Rule ruleOf(AclRuleKey const& key) const;
  void announceAction(ActionType type);

  Kor::Name name_;
  Kor::Ptr<ClassMapSubConfig const> classMap_;
  Kor::Ptr<Acl::Config const> aclConfig_;
  Kor::Ptr<ClassMapStatus> classMapStatus_;
  PerOption<Kor::Ptr<ClassRules const>> rules_;
  std::uint32_t updateAclActions_ = 0;
};

class POLICYMAP_API ClassMapSmCommonData::NotifieeConst
    : public Kor::NotifieeOf<ClassMapSmCommonData> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onClassMap() {}
  virtual void onClassMapStatus() {}
  virtual void onAction(ActionType /*type*/) {}
  virtual void onUpdateAclActions() {}
};

class POLICYMAP_API ClassMapSmCommonData::Notifiee : public ClassMapSmCommonData::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
