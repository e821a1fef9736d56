// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassActions.h"

namespace PolicyMap {

std::set<ActionType> ClassActions::kinds() const {
  std::vector<ActionType> const some = class_.machineKinds();
  std::set<ActionType> kinds(some.begin(), some.end());
  for (auto const& [kind, action] : refused_) {
    kinds.insert(kind);
  }
  if (class_.classAction()) {
    for (auto const& entry : class_.classAction()->actionIteratorConst()) {
      kinds.insert(entry.key());
    }
  }
  return kinds;
}

void ClassActions::sync(ActionType kind) {
  settling_.settle(kind, [this, kind] { bring(kind); });
}

Kor::Ptr<Action> ClassActions::configured(ActionType kind) const {
  return class_.classAction() ? class_.classAction()->action(kind) : nullptr;
}

void ClassActions::bring(ActionType kind) {
  Kor::Ptr<Action> const action = announceConfigured(kind);
  if (auto const refused = refused_.find(kind);
      refused != refused_.end() && refused->second != action) {
    refused_.erase(refused);
  }
  Kor::Ptr<ActionSm> const machine = class_.actionSm(kind);
  if (!action) {
    takeDown(kind);
  } else if (machine) {
    if (machine->action() != action) {
      machine->actionIs(action);
      machine->handleAction();
    }
  } else if (class_.classCommonData() && !refused_.contains(kind)) {
    if (Kor::Ptr<ActionSm> const created = class_.createActionSm(kind)) {
      class_.actionSmIs(kind, created);
    } else {
      refused_[kind] = action;
    }
  }
}

// Writes the configured action to the common data until no observer changes the configuration
// again. Returns the action, or null.
Kor::Ptr<Action> ClassActions::announceConfigured(ActionType kind) {
  Kor::Ptr<Action> action;
  do {
    action = configured(kind);
    if (Kor::Ptr<ClassMapSmCommonData> const data = class_.classCommonData()) {
      if (action) {
        data->actionIs(kind, action);
      } else {
        data->actionDel(kind);
      }
    }
  } while (action != configured(kind));
  return action;
}

void ClassActions::takeDownAll() {
  for (ActionType const kind : class_.machineKinds()) {
    takeDown(kind);
  }
}

void ClassActions::takeDown(ActionType kind) {
  if (Kor::Ptr<ActionSm> const machine = class_.actionSm(kind)) {
    machine->cleanup();
    machine->korDoZombieReactors(true);
    class_.actionSmDel(kind);
  }
}

}  // namespace PolicyMap
