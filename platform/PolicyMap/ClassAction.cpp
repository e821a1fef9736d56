// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassAction.h"

namespace PolicyMap {

ClassAction::~ClassAction() = default;
ClassAction::NotifieeConst::~NotifieeConst() = default;
ClassAction::Notifiee::~Notifiee() = default;

Kor::KorType const* ClassAction::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassAction::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassAction", Entity::_fwkType());
  return &type;
}

void ClassAction::announceAction(ActionType type) {
  attributeChanged<ClassAction>(actionId, &NotifieeConst::onAction, type);
}

}  // namespace PolicyMap
