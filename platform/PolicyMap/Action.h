// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Entity.h"
#include "PolicyMap/ActionType.h"
#include "PolicyMapExport.h"
#include "Zub/UniqueId.h"

namespace PolicyMap {

// What a class of a policy-map does with the traffic it matches. To add a kind of action, derive
// from Action: choose an ActionType number, add attributes, and override equalTo(), and
// attributeString() unless the derived class is registered.
class POLICYMAP_API Action : public Kor::Entity {
 public:
  using Ptr = Kor::Ptr<Action>;
  using PtrConst = Kor::Ptr<Action const>;
  class NotifieeConst;
  class Notifiee;

  // The class name becomes the entity's name.
  Action(Kor::Name className, ActionType actionType, Zub::UniqueId id);
  ~Action() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // True if programming `other` instead makes no difference. The base class compares identity.
  [[nodiscard]] virtual bool equalTo(Kor::Ptr<Action const> const& other) const;

  [[nodiscard]] Kor::Name const& className() const { return name(); }
  [[nodiscard]] ActionType actionType() const { return actionType_; }
  [[nodiscard]] Zub::UniqueId const& id() const { return id_; }

  static constexpr Kor::AttributeId classNameId = 258;
  static constexpr Kor::AttributeId actionTypeId = 259;
  static constexpr Kor::AttributeId idId = 260;
  static constexpr Kor::AttributeId equalToId = 261;

 private:
  ActionType actionType_;
  Zub::UniqueId id_;
};

class POLICYMAP_API Action::NotifieeConst
    : public Kor::NotifieeOf<Action, Kor::Entity::NotifieeConst> {
 public:
  using NotifieeOf::NotifieeOf;
  ~NotifieeConst() override;
};

class POLICYMAP_API Action::Notifiee : public Action::NotifieeConst {
 public:
  using NotifieeConst::NotifieeConst;
  ~Notifiee() override;
};

}  // namespace PolicyMap
