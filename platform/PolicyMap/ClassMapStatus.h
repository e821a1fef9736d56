// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <utility>

namespace PolicyMap {

// The status of one class of one policy.
class POLICYMAP_API ClassMapStatus : public Kor::Entity, public Kor::HashMapLink<ClassMapStatus> {
 public:
  using Ptr = Kor::Ptr<ClassMapStatus>;
  using PtrConst = Kor::Ptr<ClassMapStatus const>;
  class NotifieeConst;
  class Notifiee;

  explicit ClassMapStatus(Kor::Name className) : Entity(std::move(className)) {}
  ~ClassMapStatus() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }

  // Why the class cannot be programmed, or which objects it refers to are missing; empty if
  // neither.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  void errorIs(Kor::String const& error);
  // True if rules of the class are programmed.
  [[nodiscard]] bool programmed() const { return programmed_; }
  void programmedIs(bool programmed);

  // The packets each rule had matched when counts were last requested.
  KOR_VALUE_COLLECTION(ClassMapStatus, hitCount, HitCount, AclRuleKey, std::uint64_t,
                       KOR_ON_CHANGE(announceHitCount(key)))

  static constexpr Kor::AttributeId errorId = 258;
  static constexpr Kor::AttributeId programmedId = 259;
  static constexpr Kor::AttributeId hitCountId = 260;

 private:
  void announceHitCount(AclRuleKey const& key);

  Kor::String error_;
  bool programmed_ = false;
};

class POLICYMAP_API ClassMapStatus::NotifieeConst
    : public Kor::NotifieeOf<ClassMapStatus, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onError() {}
  virtual void onProgrammed() {}
  virtual void onHitCount(AclRuleKey const& /*key*/) {}
};

class POLICYMAP_API ClassMapStatus::Notifiee : public ClassMapStatus::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
