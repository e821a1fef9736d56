// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Collection.h"
#include "Kor/Entity.h"
#include "PolicyMap/Action.h"
#include "PolicyMapExport.h"

#include <utility>

namespace PolicyMap {

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

  // action(kind) returns the action, or null.
  KOR_VALUE_COLLECTION(ClassAction, action, Action, ActionType, Kor::Ptr<PolicyMap::Action>,
                       KOR_ON_CHANGE(announceAction(key)))

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

}  // namespace PolicyMap
