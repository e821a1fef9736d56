// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/ClassMapStatus.h"
#include "PolicyMap/OptionIntf.h"
#include "PolicyMap/PolicyFailure.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMapExport.h"
#include "Vorel/IntfId.h"

#include <vector>

namespace PolicyMap {

// The status of one policy.
class POLICYMAP_API PolicyMapStatus : public Kor::Entity, public Kor::HashMapLink<PolicyMapStatus> {
 public:
  using Ptr = Kor::Ptr<PolicyMapStatus>;
  using PtrConst = Kor::Ptr<PolicyMapStatus const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapStatus(PolicyMapSmKey const& key) : Entity(key.first()), key_(key) {}
  ~PolicyMapStatus() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] PolicyMapSmKey const& fwkKey() const { return key_; }
  [[nodiscard]] PolicyMapSmKey const& key() const { return key_; }

  // The error of the first option that has a failure, byte for byte as the helper or the core gave
  // it; empty if no option has one.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  void errorIs(Kor::String const& error);

  // The options for which the policy is programmed. Absent: not programmed.
  KOR_VALUE_COLLECTION(PolicyMapStatus, programmed, Programmed, ClassMapMatchOption, bool,
                       KOR_ON_CHANGE(announceProgrammed(key)))
  // The failure of each option. Absent: no failure.
  KOR_VALUE_COLLECTION(PolicyMapStatus, failure, Failure, ClassMapMatchOption, PolicyFailure,
                       KOR_ON_CHANGE(announceFailure(key)))
  KOR_OWNED_COLLECTION(PolicyMapStatus, classMapStatus, ClassMapStatus, Kor::Name,
                       PolicyMap::ClassMapStatus, KOR_ON_CHANGE(announceClassMapStatus(key)))
  // The time at which each programmed option was last programmed, in seconds of the event loop's
  // clock.
  KOR_VALUE_COLLECTION(PolicyMapStatus, timeProgrammed, TimeProgrammed, ClassMapMatchOption, double,
                       KOR_ON_CHANGE(announceTimeProgrammed(key)))
  // The interfaces where the policy is applied. Only membership matters; the values have no
  // meaning.
  KOR_VALUE_COLLECTION(PolicyMapStatus, appliedIntf, AppliedIntf, OptionIntf, bool,
                       KOR_ON_CHANGE(announceAppliedIntf(key)))

  // The interfaces where the policy is applied for one option, ascending.
  [[nodiscard]] std::vector<Vorel::IntfId> intfs(ClassMapMatchOption option) const;

  static constexpr Kor::AttributeId keyId = 258;
  static constexpr Kor::AttributeId errorId = 259;
  static constexpr Kor::AttributeId programmedId = 260;
  static constexpr Kor::AttributeId failureId = 261;
  static constexpr Kor::AttributeId classMapStatusId = 262;
  static constexpr Kor::AttributeId timeProgrammedId = 263;
  static constexpr Kor::AttributeId appliedIntfId = 264;

 private:
  void announceProgrammed(ClassMapMatchOption option);
  void announceFailure(ClassMapMatchOption option);
  void announceClassMapStatus(Kor::Name const& className);
  void announceTimeProgrammed(ClassMapMatchOption option);
  void announceAppliedIntf(OptionIntf const& where);

  PolicyMapSmKey key_;
  Kor::String error_;
};

class POLICYMAP_API PolicyMapStatus::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapStatus, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onError() {}
  virtual void onProgrammed(ClassMapMatchOption /*option*/) {}
  virtual void onFailure(ClassMapMatchOption /*option*/) {}
  virtual void onClassMapStatus(Kor::Name const& /*className*/) {}
  virtual void onTimeProgrammed(ClassMapMatchOption /*option*/) {}
  virtual void onAppliedIntf(OptionIntf const& /*where*/) {}
};

class POLICYMAP_API PolicyMapStatus::Notifiee : public PolicyMapStatus::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
