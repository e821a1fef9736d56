// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/ClassAction.h"
#include "PolicyMap/ClassMapSubConfig.h"
#include "PolicyMapExport.h"

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace PolicyMap {

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

  // The priority of each class. Lower numbers come first; equal ones are ordered by class name.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, classPrio, ClassPrio, Kor::Name, std::uint32_t,
                       KOR_ON_CHANGE(announceClassPrio(key)))
  // The class at each priority, derived from classPrio. If several classes have the same priority,
  // the one written last.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, prioClass, PrioClass, std::uint32_t, Kor::Name,
                       KOR_ON_CHANGE(announcePrioClass(key)))
  // The actions of each class.
  KOR_OWNED_COLLECTION(PolicyMapSubConfig, classAction, ClassAction, Kor::Name,
                       PolicyMap::ClassAction, KOR_ON_CHANGE(announceClassAction(key)))
  // Matches written in the policy itself, by class. Used only if no class-map of that name exists.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, rawClassMap, RawClassMap, Kor::Name,
                       Kor::Ptr<ClassMapSubConfig>, KOR_ON_CHANGE(announceRawClassMap(key)))

  // The classes in programming order.
  [[nodiscard]] std::vector<Kor::Name> classesInOrder() const;
  // The same, restricted to those of `names` that are classes. The cost depends on the size of
  // `names`, not on the number of classes.
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

  // The last known priorities, which prioClass reflects.
  std::map<Kor::Name, std::uint32_t> prioTaken_;
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

}  // namespace PolicyMap
