// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapTypeConfig.h"

namespace PolicyMap {

PolicyMapTypeConfig::~PolicyMapTypeConfig() = default;
PolicyMapTypeConfig::NotifieeConst::~NotifieeConst() = default;
PolicyMapTypeConfig::Notifiee::~Notifiee() = default;

Kor::KorType const* PolicyMapTypeConfig::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapTypeConfig::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapTypeConfig", Entity::_fwkType());
  return &type;
}

void PolicyMapTypeConfig::announcePolicyMapConfig(Kor::Name const& name) {
  attributeChanged<PolicyMapTypeConfig>(policyMapConfigId, &NotifieeConst::onPolicyMapConfig, name);
}

void PolicyMapTypeConfig::announceServicePolicy(ServicePolicyKey const& key) {
  attributeChanged<PolicyMapTypeConfig>(servicePolicyId, &NotifieeConst::onServicePolicy, key);
}

}  // namespace PolicyMap
