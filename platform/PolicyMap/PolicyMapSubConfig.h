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

  // The priority of each class; lower numbers come first, equal ones by class name.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, classPrio, ClassPrio, Kor::Name, std::uint32_t,
                       KOR_ON_CHANGE(announceClassPrio(key)))
  // The class at each priority: kept up to date from classPrio. Of several classes at one priority,
  // the one written last.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, prioClass, PrioClass, std::uint32_t, Kor::Name,
                       KOR_ON_CHANGE(announcePrioClass(key)))
  KOR_OWNED_COLLECTION(PolicyMapSubConfig, classAction, ClassAction, Kor::Name,
                       PolicyMap::ClassAction, KOR_ON_CHANGE(announceClassAction(key)))
  // Matches written in the policy itself, by class; used where no class-map of that name
  // exists.
  KOR_VALUE_COLLECTION(PolicyMapSubConfig, rawClassMap, RawClassMap, Kor::Name,
                       Kor::Ptr<ClassMapSubConfig>, KOR_ON_CHANGE(announceRawClassMap(key)))

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

  // What prioClass follows: the last known priorities.
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
