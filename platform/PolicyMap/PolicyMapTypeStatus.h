// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the machines publish: one status per policy key, one per class in it. Statuses go with their
// policy.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/Export.h"
#include "PolicyMap/PolicyMapSmKey.h"

namespace PolicyMap {

// How one class of one policy stands.
class POLICYMAP_API ClassMapStatus : public Kor::Entity, public Kor::HashMapLink<ClassMapStatus> {
 public:
  using Ptr = Kor::Ptr<ClassMapStatus>;
  using PtrConst = Kor::Ptr<ClassMapStatus const>;
  class NotifieeConst;
  class Notifiee;

  explicit ClassMapStatus(Kor::Name className) : Entity(std::move(className)) {}
  ~ClassMapStatus() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType const* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }

  // Why the class cannot be programmed, or what it refers to and is missing; empty when all is
  // well.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  void errorIs(Kor::String const& error);

  static constexpr Kor::AttributeId errorId = 258;

 private:
  Kor::String error_;
};

class POLICYMAP_API ClassMapStatus::NotifieeConst
    : public Kor::NotifieeOf<ClassMapStatus, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onError() {}
};

class POLICYMAP_API ClassMapStatus::Notifiee : public ClassMapStatus::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

// How one policy stands.
class POLICYMAP_API PolicyMapStatus : public Kor::Entity, public Kor::HashMapLink<PolicyMapStatus> {
 public:
  using Ptr = Kor::Ptr<PolicyMapStatus>;
  using PtrConst = Kor::Ptr<PolicyMapStatus const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapStatus(PolicyMapSmKey const& key) : Entity(key.first()), key_(key) {}
  ~PolicyMapStatus() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType const* _fwkType();
  [[nodiscard]] PolicyMapSmKey const& fwkKey() const { return key_; }
  [[nodiscard]] PolicyMapSmKey const& key() const { return key_; }

  // The first failure of the last pass, byte for byte as the helper answered it; empty after
  // success.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  void errorIs(Kor::String const& error);

  // The options for which the policy stands in the hardware; absent: it does not.
  KOR_VALUE_COLLECTION(PolicyMapStatus, programmed, Programmed, ClassMapMatchOption, bool, ,
                       { announceProgrammed(key); })
  KOR_OWNED_COLLECTION(PolicyMapStatus, classMapStatus, ClassMapStatus, Kor::Name,
                       PolicyMap::ClassMapStatus, , { announceClassMapStatus(key); })

 public:
  static constexpr Kor::AttributeId keyId = 258;
  static constexpr Kor::AttributeId errorId = 259;
  static constexpr Kor::AttributeId programmedId = 260;
  static constexpr Kor::AttributeId classMapStatusId = 261;

 private:
  void announceProgrammed(ClassMapMatchOption option);
  void announceClassMapStatus(Kor::Name const& className);

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
  virtual void onClassMapStatus(Kor::Name const& /*className*/) {}
};

class POLICYMAP_API PolicyMapStatus::Notifiee : public PolicyMapStatus::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

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
  [[nodiscard]] static Kor::KorType const* _fwkType();

  KOR_OWNED_COLLECTION(PolicyMapTypeStatus, policyMapStatus, PolicyMapStatus, PolicyMapSmKey,
                       PolicyMap::PolicyMapStatus, , { announcePolicyMapStatus(key); })

 public:
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

// Who wants statuses brought up to date, such as hit counts read from the hardware.
class POLICYMAP_API PolicyMapStatusRequestDir : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<PolicyMapStatusRequestDir>;
  using PtrConst = Kor::Ptr<PolicyMapStatusRequestDir const>;

  explicit PolicyMapStatusRequestDir(Kor::Name name = {}) : Entity(std::move(name)) {}
  ~PolicyMapStatusRequestDir() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType const* _fwkType();
};

}  // namespace PolicyMap
