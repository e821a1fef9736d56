// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapStatusRequestDir.h"

namespace PolicyMap {

PolicyMapStatusRequestDir::~PolicyMapStatusRequestDir() = default;
PolicyMapStatusRequestDir::NotifieeConst::~NotifieeConst() = default;
PolicyMapStatusRequestDir::Notifiee::~Notifiee() = default;

Kor::KorType const* PolicyMapStatusRequestDir::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapStatusRequestDir::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapStatusRequestDir", Entity::_fwkType());
  return &type;
}

void PolicyMapStatusRequestDir::announceCountRequest(PolicyMapSmKey const& key) {
  attributeChanged<PolicyMapStatusRequestDir>(countRequestId, &NotifieeConst::onCountRequest, key);
}

}  // namespace PolicyMap
