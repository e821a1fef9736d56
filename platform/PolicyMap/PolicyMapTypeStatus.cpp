// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapTypeStatus.h"

#include <algorithm>

namespace PolicyMap {

ClassMapStatus::~ClassMapStatus() = default;
ClassMapStatus::NotifieeConst::~NotifieeConst() = default;
ClassMapStatus::Notifiee::~Notifiee() = default;
PolicyMapStatus::~PolicyMapStatus() = default;
PolicyMapStatus::NotifieeConst::~NotifieeConst() = default;
PolicyMapStatus::Notifiee::~Notifiee() = default;
PolicyMapTypeStatus::~PolicyMapTypeStatus() = default;
PolicyMapTypeStatus::NotifieeConst::~NotifieeConst() = default;
PolicyMapTypeStatus::Notifiee::~Notifiee() = default;
PolicyMapStatusRequestDir::~PolicyMapStatusRequestDir() = default;
PolicyMapStatusRequestDir::NotifieeConst::~NotifieeConst() = default;
PolicyMapStatusRequestDir::Notifiee::~Notifiee() = default;

Kor::KorType* PolicyFailure::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

Kor::KorType* OptionIntf::_fwkType() {
  static Kor::KorType type(korTypeName, nullptr);
  return &type;
}

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
  attributeChanged<ClassMapStatus>(errorId, [](NotifieeConst& n) { n.onError(); });
}

void ClassMapStatus::announceHitCount(AclRuleKey const& key) {
  attributeChanged<ClassMapStatus>(hitCountId, [key](NotifieeConst& n) { n.onHitCount(key); });
}

void ClassMapStatus::programmedIs(bool programmed) {
  if (programmed == programmed_) {
    return;
  }
  programmed_ = programmed;
  attributeChanged<ClassMapStatus>(programmedId, [](NotifieeConst& n) { n.onProgrammed(); });
}

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

Kor::KorType const* PolicyMapTypeStatus::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapTypeStatus::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapTypeStatus", Entity::_fwkType());
  return &type;
}

void PolicyMapTypeStatus::announcePolicyMapStatus(PolicyMapSmKey const& key) {
  attributeChanged<PolicyMapTypeStatus>(policyMapStatusId,
                                        [key](NotifieeConst& n) { n.onPolicyMapStatus(key); });
}

Kor::KorType const* PolicyMapStatusRequestDir::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapStatusRequestDir::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapStatusRequestDir", Entity::_fwkType());
  return &type;
}

void PolicyMapStatusRequestDir::announceCountRequest(PolicyMapSmKey const& key) {
  attributeChanged<PolicyMapStatusRequestDir>(countRequestId,
                                              [key](NotifieeConst& n) { n.onCountRequest(key); });
}

}  // namespace PolicyMap
