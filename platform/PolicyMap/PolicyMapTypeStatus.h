// SPDX-License-Identifier: Apache-2.0
#pragma once

// The published statuses: one per policy, and within it one per class. A status is removed with its
// policy. The result of a pass is published after the pass has ended, a failed action update at
// once. Only values that differ notify. A program that reads statuses includes only this header.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMap/PolicyMapStatus.h"
#include "PolicyMap/PolicyMapStatusRequestDir.h"
#include "PolicyMapExport.h"

#include <utility>

namespace PolicyMap {

// All policies of one type.
class POLICYMAP_API PolicyMapTypeStatus : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<PolicyMapTypeStatus>;
  using PtrConst = Kor::Ptr<PolicyMapTypeStatus const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapTypeStatus(Kor::Name name = {}) : Entity(std::move(name)) {}
  ~PolicyMapTypeStatus() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  KOR_OWNED_COLLECTION(PolicyMapTypeStatus, policyMapStatus, PolicyMapStatus, PolicyMapSmKey,
                       PolicyMap::PolicyMapStatus, KOR_ON_CHANGE(announcePolicyMapStatus(key)))

  static constexpr Kor::AttributeId policyMapStatusId = 258;

 private:
  void announcePolicyMapStatus(PolicyMapSmKey const& key);
};

class POLICYMAP_API PolicyMapTypeStatus::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapTypeStatus, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onPolicyMapStatus(PolicyMapSmKey const& /*key*/) {}
};

class POLICYMAP_API PolicyMapTypeStatus::Notifiee : public PolicyMapTypeStatus::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
