// SPDX-License-Identifier: Apache-2.0
#pragma once

// Configured policy-maps and where they are attached. As with class-maps, a sub-configuration takes
// effect when it becomes the current one, and edits to the current one take effect too.

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/Action.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/Export.h"
#include "PolicyMap/ValueText.h"
#include "Vorel/IntfId.h"

#include <compare>
#include <map>
#include <set>
#include <tuple>
#include <vector>

namespace PolicyMap {

// Where a policy is attached: interface and direction ("input" or "output").
class POLICYMAP_API ServicePolicyKey {
 public:
  static constexpr std::string_view korTypeName = "PolicyMap::ServicePolicyKey";

  ServicePolicyKey() = default;
  ServicePolicyKey(Vorel::IntfId intf, Kor::Name direction)
      : intf_(intf), direction_(std::move(direction)) {}

  [[nodiscard]] Vorel::IntfId intf() const { return intf_; }
  [[nodiscard]] Kor::Name const& direction() const { return direction_; }
  void intfIs(Vorel::IntfId const& intf) { intf_ = intf; }
  void directionIs(Kor::Name const& direction) { direction_ = direction; }

  [[nodiscard]] std::uint32_t hash() const {
    return Kor::hashCombine(intf_.hash(), direction_.hash());
  }
  // By interface, then direction.
  friend bool operator==(ServicePolicyKey const&, ServicePolicyKey const&) = default;
  friend std::strong_ordering operator<=>(ServicePolicyKey const& a, ServicePolicyKey const& b) {
    return std::tie(a.intf_, a.direction_) <=> std::tie(b.intf_, b.direction_);
  }
  [[nodiscard]] bool operator!() const { return *this == ServicePolicyKey(); }

  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::KorType const* fwkType() const { return _fwkType(); }

  static constexpr auto korFields() {
    using K = ServicePolicyKey;
    return std::tuple(Kor::field("intf", &K::intf, &K::intfIs),
                      Kor::field("direction", &K::direction, &K::directionIs));
  }

 private:
  Vorel::IntfId intf_;
  Kor::Name direction_;
};

// Throws a RangeException for a direction other than "input" and "output".
POLICYMAP_API void korCheckKey(ServicePolicyKey const& key);

// The actions of one class in one policy-map.
class POLICYMAP_API ClassAction : public Kor::Entity, public Kor::HashMapLink<ClassAction> {
 public:
  using Ptr = Kor::Ptr<ClassAction>;
  using PtrConst = Kor::Ptr<ClassAction const>;
  class NotifieeConst;
  class Notifiee;

  explicit ClassAction(Kor::Name className) : Entity(std::move(className)) {}
  ~ClassAction() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }
  [[nodiscard]] Kor::Name const& className() const { return name(); }

  // action(kind) answers the action or null.
  KOR_VALUE_COLLECTION(ClassAction, action, Action, ActionType, Kor::Ptr<PolicyMap::Action>, ,
                       { announceAction(key); })

 public:
  static constexpr Kor::AttributeId actionId = 258;

 private:
  void announceAction(ActionType type);
};

class POLICYMAP_API ClassAction::NotifieeConst
    : public Kor::NotifieeOf<ClassAction, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onAction(ActionType /*type*/) {}
};

class POLICYMAP_API ClassAction::Notifiee : public ClassAction::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

// The classes of one policy-map.
class POLICYMAP_API PolicyMapSubConfig : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<PolicyMapSubConfig>;
  using PtrConst = Kor::Ptr<PolicyMapSubConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapSubConfig(Kor::Name name) : Entity(std::move(name)) {}
  ~PolicyMapSubConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // The priority of each class; lower numbers come first, equal ones by class name.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, classPrio, ClassPrio, Kor::Name, std::uint32_t, ,
                       { announceClassPrio(key); })
  // The class at each priority: follows classPrio by itself. Of several classes at one priority,
  // the one written last.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, prioClass, PrioClass, std::uint32_t, Kor::Name, ,
                       { announcePrioClass(key); })
  KOR_OWNED_COLLECTION(PolicyMapSubConfig, classAction, ClassAction, Kor::Name,
                       PolicyMap::ClassAction, , { announceClassAction(key); })
  // Matches written in the policy itself, by class; they serve where no class-map of that name
  // exists.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, rawClassMap, RawClassMap, Kor::Name,
                       Kor::Ptr<ClassMapSubConfig>, , { announceRawClassMap(key); })

 public:
  // Classes in the order in which they are programmed.
  [[nodiscard]] std::vector<Kor::Name> classesInOrder() const;
  // The same for those of `names` that are classes. Costs by their number, not by that of all.
  [[nodiscard]] std::vector<Kor::Name> classesInOrder(std::set<Kor::Name> const& names) const;

  static constexpr Kor::AttributeId classPrioId = 258;
  static constexpr Kor::AttributeId prioClassId = 259;
  static constexpr Kor::AttributeId classActionId = 260;
  static constexpr Kor::AttributeId rawClassMapId = 261;

 private:
  void announceClassPrio(Kor::Name const& name);
  void announcePrioClass(std::uint32_t prio);
  void announceClassAction(Kor::Name const& name);
  void announceRawClassMap(Kor::Name const& name);

  std::map<Kor::Name, std::uint32_t>
      prioTaken_;  // what prioClass follows: the last known priorities
};

class POLICYMAP_API PolicyMapSubConfig::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapSubConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onClassPrio(Kor::Name const& /*className*/) {}
  virtual void onPrioClass(std::uint32_t /*prio*/) {}
  virtual void onClassAction(Kor::Name const& /*className*/) {}
  virtual void onRawClassMap(Kor::Name const& /*className*/) {}
};

class POLICYMAP_API PolicyMapSubConfig::Notifiee : public PolicyMapSubConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

// One policy-map.
class POLICYMAP_API PolicyMapConfig : public Kor::Entity, public Kor::HashMapLink<PolicyMapConfig> {
 public:
  using Ptr = Kor::Ptr<PolicyMapConfig>;
  using PtrConst = Kor::Ptr<PolicyMapConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapConfig(Kor::Name name) : Entity(std::move(name)) {}
  ~PolicyMapConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();
  [[nodiscard]] Kor::Name const& fwkKey() const { return name(); }

  // The sub-configuration in force; null: the policy-map has no classes.
  [[nodiscard]] Kor::Ptr<PolicyMapSubConfig> const& currentSubConfig() const { return current_; }
  void currentSubConfigIs(Kor::Ptr<PolicyMapSubConfig> const& subConfig);

  static constexpr Kor::AttributeId currentSubConfigId = 258;

 private:
  Kor::Ptr<PolicyMapSubConfig> current_;
};

class POLICYMAP_API PolicyMapConfig::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  virtual void onCurrentSubConfig() {}
};

class POLICYMAP_API PolicyMapConfig::Notifiee : public PolicyMapConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

// All policy-maps of one type and their attachments.
class POLICYMAP_API PolicyMapTypeConfig : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<PolicyMapTypeConfig>;
  using PtrConst = Kor::Ptr<PolicyMapTypeConfig const>;
  class NotifieeConst;
  class Notifiee;

  explicit PolicyMapTypeConfig(Kor::Name name = {}) : Entity(std::move(name)) {}
  ~PolicyMapTypeConfig() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  KOR_OWNED_COLLECTION(PolicyMapTypeConfig, policyMapConfig, PolicyMapConfig, Kor::Name,
                       PolicyMap::PolicyMapConfig, , { announcePolicyMapConfig(key); })
  // The policy-map attached at an interface in a direction. Writers throw a RangeException for a
  // direction other than "input" and "output".
  KOR_VALUE_COLLECTION(PolicyMapTypeConfig, servicePolicy, ServicePolicy, ServicePolicyKey,
                       Kor::Name, , { announceServicePolicy(key); })

 public:
  static constexpr Kor::AttributeId policyMapConfigId = 258;
  static constexpr Kor::AttributeId servicePolicyId = 259;

 private:
  void announcePolicyMapConfig(Kor::Name const& name);
  void announceServicePolicy(ServicePolicyKey const& key);
};

class POLICYMAP_API PolicyMapTypeConfig::NotifieeConst
    : public Kor::NotifieeOf<PolicyMapTypeConfig, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
  // A policy-map came or went; what changes inside one is told by its own notifiees.
  virtual void onPolicyMapConfig(Kor::Name const& /*name*/) {}
  virtual void onServicePolicy(ServicePolicyKey const& /*key*/) {}
};

class POLICYMAP_API PolicyMapTypeConfig::Notifiee : public PolicyMapTypeConfig::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
