// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <utility>

namespace PolicyMap {

// Requests for data that are not kept current: hit counts, which are read from the hardware.
class POLICYMAP_API PolicyMapStatusRequestDir : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<PolicyMapStatusRequestDir>;
  using PtrConst = Kor::Ptr<PolicyMapStatusRequestDir const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapStatusRequestDir(Kor::Name name = {}) : Entity(std::move(name)) {}
  ~PolicyMapStatusRequestDir() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Writing a new number requests the counts of that policy. They are in the class statuses after
  // the next turn of the event loop.
  KOR_VALUE_COLLECTION(PolicyMapStatusRequestDir, countRequest, CountRequest, PolicyMapSmKey,
                       std::uint32_t, KOR_ON_CHANGE(announceCountRequest(key)))

  static constexpr Kor::AttributeId countRequestId = 258;

 private:
  void announceCountRequest(PolicyMapSmKey const& key);
};

class POLICYMAP_API PolicyMapStatusRequestDir::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapStatusRequestDir, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onCountRequest(PolicyMapSmKey const& /*key*/) {}
};

class POLICYMAP_API PolicyMapStatusRequestDir::Notifiee
    : public PolicyMapStatusRequestDir::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
