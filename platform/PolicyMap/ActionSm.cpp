// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ActionSm.h"

namespace PolicyMap {

ActionSm::ActionSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData,
                   Kor::Ptr<PolicyMapSmCommonData> policyCommonData,
                   Kor::Ptr<ClassMapSmCommonData> classCommonData,
                   Kor::Ptr<Action const> const& action)
    : globalCommonData_(std::move(globalCommonData)),
      policyCommonData_(std::move(policyCommonData)),
      classCommonData_(std::move(classCommonData)),
      action_(Kor::make<Kor::LogWatch<ActionSm>>(this, &ActionSm::actionChanged)) {
  if (action) {
    newAction(action);
  }
}

ActionSm::~ActionSm() = default;

Kor::KorType const* ActionSm::fwkType() const {
  return _fwkType();
}
Kor::KorType* ActionSm::_fwkType() {
  static Kor::KorType type("PolicyMap::ActionSm", PtrInterface::_fwkType());
  return &type;
}

void ActionSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  action_.hasNotificationActiveIs(active);
  if (active && !korMarkedForDeletion()) {
    initializedIs(true);
  }
}

void ActionSm::cleanup() {}
void ActionSm::handleAction() {}
void ActionSm::handleInitialized() {}

void ActionSm::actionDel() {
  action_.objectIs(nullptr);
}

void ActionSm::actionIs(Kor::Ptr<Action const> const& action) {
  action_.objectIs(action);
}

void ActionSm::initializedIs(bool initialized) {
  if (initialized == initialized_) {
    return;
  }
  initialized_ = initialized;
  if (initialized) {
    handleInitialized();
  }
}

void ActionSm::korDoZombieReactors(bool zombie) {
  action_.korDoZombieReactors(zombie);
}

void ActionSm::newAction(Kor::Ptr<Action const> const& action) {
  action_.objectIs(action);
}

void ActionSm::actionChanged(Kor::AttributeId /*id*/) {
  handleAction();
}

}  // namespace PolicyMap
