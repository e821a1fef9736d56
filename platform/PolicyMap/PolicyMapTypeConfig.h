// SPDX-License-Identifier: Apache-2.0
#pragma once

// Configured policy-maps and their attachments. A sub-configuration takes effect when it becomes
// the current one of its policy-map. Edits to the current one also take effect.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/PolicyMapConfig.h"
#include "PolicyMap/ServicePolicyKey.h"
#include "PolicyMapExport.h"

#include <utility>

namespace PolicyMap {

// All policy-maps of one type and their attachments.
class POLICYMAP_API PolicyMapTypeConfig : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<PolicyMapTypeConfig>;
  using PtrConst = Kor::Ptr<PolicyMapTypeConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapTypeConfig(Kor::Name name = {}) : Entity(std::move(name)) {}
  ~PolicyMapTypeConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  KOR_OWNED_COLLECTION(PolicyMapTypeConfig, policyMapConfig, PolicyMapConfig, Kor::Name,
                       PolicyMap::PolicyMapConfig, KOR_ON_CHANGE(announcePolicyMapConfig(key)))
  // The policy-map attached to an interface in a direction. Writing throws Kor::RangeException for
  // a direction other than "input" and "output".
  KOR_VALUE_COLLECTION(PolicyMapTypeConfig, servicePolicy, ServicePolicy, ServicePolicyKey,
                       Kor::Name, KOR_ON_CHANGE(announceServicePolicy(key)))

  static constexpr Kor::AttributeId policyMapConfigId = 258;
  static constexpr Kor::AttributeId servicePolicyId = 259;

 private:
  void announcePolicyMapConfig(Kor::Name const& name);
  void announceServicePolicy(ServicePolicyKey const& key);
};

class POLICYMAP_API PolicyMapTypeConfig::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapTypeConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  // A policy-map was created or removed. Changes inside one are reported only to its own notifiees.
  virtual void onPolicyMapConfig(Kor::Name const& /*name*/) {}
  virtual void onServicePolicy(ServicePolicyKey const& /*key*/) {}
};

class POLICYMAP_API PolicyMapTypeConfig::Notifiee : public PolicyMapTypeConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
