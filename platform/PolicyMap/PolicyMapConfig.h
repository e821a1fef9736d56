// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Entity.h"
#include "Kor/HashMap.h"
#include "PolicyMap/PolicyMapSubConfig.h"
#include "PolicyMapExport.h"

#include <utility>

namespace PolicyMap {

// The configuration of one policy-map.
class POLICYMAP_API PolicyMapConfig : public Kor::Entity, public Kor::HashMapLink<PolicyMapConfig> {
 public:
  using Ptr = Kor::Ptr<PolicyMapConfig>;
  using PtrConst = Kor::Ptr<PolicyMapConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapConfig(Kor::Name name) : Entity(std::move(name)) {}
  ~PolicyMapConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }

  // The sub-configuration in force. Null: the policy-map has no classes.
  [[nodiscard]] Kor::Ptr<PolicyMapSubConfig> const& currentSubConfig() const { return current_; }
  void currentSubConfigIs(Kor::Ptr<PolicyMapSubConfig> const& subConfig);

  static constexpr Kor::AttributeId currentSubConfigId = 258;

 private:
  Kor::Ptr<PolicyMapSubConfig> current_;
};

class POLICYMAP_API PolicyMapConfig::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onCurrentSubConfig() {}
};

class POLICYMAP_API PolicyMapConfig::Notifiee : public PolicyMapConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
