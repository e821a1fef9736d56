// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapStatus.h"

namespace PolicyMap {

ClassMapStatus::~ClassMapStatus() = default;
ClassMapStatus::NotifieeConst::~NotifieeConst() = default;
ClassMapStatus::Notifiee::~Notifiee() = default;

Kor::KorType const* ClassMapStatus::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapStatus::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapStatus", Entity::_fwkType());
  return &type;
}

void ClassMapStatus::errorIs(Kor::String const& error) {
  if (error == error_) {
    return;
  }
  error_ = error;
  attributeChanged<ClassMapStatus>(errorId, &NotifieeConst::onError);
}

void ClassMapStatus::announceHitCount(AclRuleKey const& key) {
  attributeChanged<ClassMapStatus>(hitCountId, &NotifieeConst::onHitCount, key);
}

void ClassMapStatus::programmedIs(bool programmed) {
  if (programmed == programmed_) {
    return;
  }
  programmed_ = programmed;
  attributeChanged<ClassMapStatus>(programmedId, &NotifieeConst::onProgrammed);
}

}  // namespace PolicyMap
