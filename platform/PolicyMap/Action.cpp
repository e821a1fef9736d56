// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/Action.h"

namespace PolicyMap {

Action::Action(Kor::Name className, ActionType actionType, Zub::UniqueId id)
    : Entity(std::move(className)), actionType_(actionType), id_(std::move(id)) {}

Action::~Action() = default;
Action::NotifieeConst::~NotifieeConst() = default;
Action::Notifiee::~Notifiee() = default;

Kor::KorType const* Action::fwkType() const {
  return _fwkType();
}

Kor::KorType* Action::_fwkType() {
  static Kor::KorType type("PolicyMap::Action", Entity::_fwkType());
  return &type;
}

bool Action::equalTo(Kor::Ptr<Action const> const& other) const {
  return other.get() == this;
}

}  // namespace PolicyMap
