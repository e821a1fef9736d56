// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapTypeStatus.h"

namespace PolicyMap {

PolicyMapTypeStatus::~PolicyMapTypeStatus() = default;
PolicyMapTypeStatus::NotifieeConst::~NotifieeConst() = default;
PolicyMapTypeStatus::Notifiee::~Notifiee() = default;

Kor::KorType const* PolicyMapTypeStatus::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapTypeStatus::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapTypeStatus", Entity::_fwkType());
  return &type;
}

void PolicyMapTypeStatus::announcePolicyMapStatus(PolicyMapSmKey const& key) {
  attributeChanged<PolicyMapTypeStatus>(policyMapStatusId, &NotifieeConst::onPolicyMapStatus, key);
}

}  // namespace PolicyMap
