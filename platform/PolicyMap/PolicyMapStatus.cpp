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
  attributeChanged<PolicyMapStatus>(errorId, [](NotifieeConst& n) { n.onError(); });
}

void PolicyMapStatus::announceProgrammed(ClassMapMatchOption option) {
  attributeChanged<PolicyMapStatus>(programmedId,
                                    [option](NotifieeConst& n) { n.onProgrammed(option); });
}

void PolicyMapStatus::announceFailure(ClassMapMatchOption option) {
  attributeChanged<PolicyMapStatus>(failureId, [option](NotifieeConst& n) { n.onFailure(option); });
}

void PolicyMapStatus::announceClassMapStatus(Kor::Name const& className) {
  attributeChanged<PolicyMapStatus>(
      classMapStatusId, [className](NotifieeConst& n) { n.onClassMapStatus(className); });
}

void PolicyMapStatus::announceTimeProgrammed(ClassMapMatchOption option) {
  attributeChanged<PolicyMapStatus>(timeProgrammedId,
                                    [option](NotifieeConst& n) { n.onTimeProgrammed(option); });
}

void PolicyMapStatus::announceAppliedIntf(OptionIntf const& where) {
  attributeChanged<PolicyMapStatus>(appliedIntfId,
                                    [where](NotifieeConst& n) { n.onAppliedIntf(where); });
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
