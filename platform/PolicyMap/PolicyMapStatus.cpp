// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapStatus.h"

#include <algorithm>

namespace PolicyMap {

PolicyMapStatus::~PolicyMapStatus() = default;
PolicyMapStatus::NotifieeConst::~NotifieeConst() = default;
PolicyMapStatus::Notifiee::~Notifiee() = default;

Kor::KorType const* PolicyMapStatus::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapStatus::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapStatus", Entity::_fwkType());
  return &type;
}

void PolicyMapStatus::errorIs(Kor::String const& error) {
  if (error == error_) {
    return;
  }
  error_ = error;
  attributeChanged<PolicyMapStatus>(errorId, &NotifieeConst::onError);
}

void PolicyMapStatus::announceProgrammed(ClassMapMatchOption option) {
  attributeChanged<PolicyMapStatus>(programmedId, &NotifieeConst::onProgrammed, option);
}

void PolicyMapStatus::announceFailure(ClassMapMatchOption option) {
  attributeChanged<PolicyMapStatus>(failureId, &NotifieeConst::onFailure, option);
}

void PolicyMapStatus::announceClassMapStatus(Kor::Name const& className) {
  attributeChanged<PolicyMapStatus>(classMapStatusId, &NotifieeConst::onClassMapStatus, className);
}

void PolicyMapStatus::announceTimeProgrammed(ClassMapMatchOption option) {
  attributeChanged<PolicyMapStatus>(timeProgrammedId, &NotifieeConst::onTimeProgrammed, option);
}

void PolicyMapStatus::announceAppliedIntf(OptionIntf const& where) {
  attributeChanged<PolicyMapStatus>(appliedIntfId, &NotifieeConst::onAppliedIntf, where);
}

std::vector<Vorel::IntfId> PolicyMapStatus::intfs(ClassMapMatchOption option) const {
  std::vector<Vorel::IntfId> all;
  for (auto const& entry : appliedIntfIteratorConst()) {
    if (entry.key().option() == option) {
      all.push_back(entry.key().intf());
    }
  }
  std::sort(all.begin(), all.end());
  return all;
}

}  // namespace PolicyMap
