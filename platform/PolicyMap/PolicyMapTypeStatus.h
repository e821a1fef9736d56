// SPDX-License-Identifier: Apache-2.0
#pragma once

// What the machines publish: one status per policy key, one per class in it. Statuses go with their
// policy. They change when a pass has ended, not in the midst of it, and only where something is
// different then.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/AclRuleKey.h"
#include "PolicyMap/ClassMapMatchOption.h"
#include "PolicyMap/Export.h"
#include "PolicyMap/PolicyMapSmKey.h"
#include "PolicyMap/ValueText.h"
#include "Vorel/IntfId.h"

#include <compare>
#include <tuple>
#include <vector>

namespace PolicyMap {

// Why a policy does not stand as it should for one option. The default value: it does.
class POLICYMAP_API PolicyFailure {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::PolicyFailure";

  PolicyFailure() = default;
  PolicyFailure(Kor::String error, Kor::String operation, Kor::Name className, AclRuleKey rule)
      : error_(std::move(error)),
        operation_(std::move(operation)),
        className_(std::move(className)),
        rule_(std::move(rule)) {}

  // The text of the helper, byte for byte, or of the core.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  // The helper operation that failed; empty when the core refused.
  [[nodiscard]] Kor::String const& operation() const { return operation_; }
  // The class and the rule concerned; empty where the failure is of the whole policy.
  [[nodiscard]] Kor::Name const& className() const { return className_; }
  [[nodiscard]] AclRuleKey const& rule() const { return rule_; }
  void errorIs(Kor::String const& error) { error_ = error; }
  void operationIs(Kor::String const& operation) { operation_ = operation; }
  void classNameIs(Kor::Name const& className) { className_ = className; }
  void ruleIs(AclRuleKey const& rule) { rule_ = rule; }

  bool operator==(PolicyFailure const&) const = default;
  [[nodiscard]] bool operator!() const { return *this == PolicyFailure(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using F = PolicyFailure;
    return std::tuple(Kor::field("error", &F::error, &F::errorIs),
                      Kor::field("operation", &F::operation, &F::operationIs),
                      Kor::field("className", &F::className, &F::classNameIs),
                      Kor::field("rule", &F::rule, &F::ruleIs));
  }

 private:
  Kor::String error_;
  Kor::String operation_;
  Kor::Name className_;
  AclRuleKey rule_;
};

// An interface to which a policy is applied for a match option.
class POLICYMAP_API OptionIntf {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::OptionIntf";

  OptionIntf() = default;
  OptionIntf(ClassMapMatchOption option, Vorel::IntfId intf) : option_(option), intf_(intf) {}

  [[nodiscard]] ClassMapMatchOption option() const { return option_; }
  [[nodiscard]] Vorel::IntfId intf() const { return intf_; }
  void optionIs(ClassMapMatchOption option) { option_ = option; }
  void intfIs(Vorel::IntfId const& intf) { intf_ = intf; }

  [[nodiscard]] std::uint32_t hash() const {
    return Kor::hashCombine(intf_.hash(), static_cast<std::uint32_t>(option_));
  }
  // By option, then interface.
  friend bool operator==(OptionIntf const&, OptionIntf const&) = default;
  friend std::strong_ordering operator<=>(OptionIntf const& a, OptionIntf const& b) {
    return std::tie(a.option_, a.intf_) <=> std::tie(b.option_, b.intf_);
  }
  [[nodiscard]] bool operator!() const { return *this == OptionIntf(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using K = OptionIntf;
    return std::tuple(Kor::field("option", &K::option, &K::optionIs),
                      Kor::field("intf", &K::intf, &K::intfIs));
  }

 private:
  ClassMapMatchOption option_ = ClassMapMatchOption::ipv4;
  Vorel::IntfId intf_;
};

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
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }

  // Why the class cannot be programmed, or what it refers to and is missing; empty when all is
  // well.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  void errorIs(Kor::String const& error);
  // Whether rules of the class stand in the hardware.
  [[nodiscard]] bool programmed() const { return programmed_; }
  void programmedIs(bool programmed);

  // Packets that each rule had matched when counts were last asked for.
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
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] PolicyMapSmKey const& fwkKey() const { return key_; }
  [[nodiscard]] PolicyMapSmKey const& key() const { return key_; }

  // The first failure of the last pass, byte for byte as the helper answered it; empty after
  // success.
  [[nodiscard]] Kor::String const& error() const { return error_; }
  void errorIs(Kor::String const& error);

  // The options for which the policy stands in the hardware; absent: it does not.
  KOR_VALUE_COLLECTION(PolicyMapStatus, programmed, Programmed, ClassMapMatchOption, bool,
                       KOR_ON_CHANGE(announceProgrammed(key)))
  // What went wrong, by option; absent: nothing.
  KOR_VALUE_COLLECTION(PolicyMapStatus, failure, Failure, ClassMapMatchOption, PolicyFailure,
                       KOR_ON_CHANGE(announceFailure(key)))
  KOR_OWNED_COLLECTION(PolicyMapStatus, classMapStatus, ClassMapStatus, Kor::Name,
                       PolicyMap::ClassMapStatus, KOR_ON_CHANGE(announceClassMapStatus(key)))
  // When each option that stands was last programmed, in seconds of the event loop's clock; absent:
  // it does not stand.
  KOR_VALUE_COLLECTION(PolicyMapStatus, timeProgrammed, TimeProgrammed, ClassMapMatchOption, double,
                       KOR_ON_CHANGE(announceTimeProgrammed(key)))
  // Where the policy is applied; membership alone counts.
  KOR_VALUE_COLLECTION(PolicyMapStatus, appliedIntf, AppliedIntf, OptionIntf, bool,
                       KOR_ON_CHANGE(announceAppliedIntf(key)))

  // Where the policy is applied for one option, ascending.
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

// Requests for what is not kept up to date by itself: hit counts, which are read from the hardware.
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

  // A new number asks for the counts of that policy once more; they stand in its class statuses
  // when the event loop has turned.
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
