// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyClasses.h"

#include <utility>

namespace PolicyMap {

PolicyClasses::PolicyClasses(Policy& policy, ClassMapWatches& classMaps,
                             Kor::Ptr<PolicyMapStatus> status)
    : policy_(policy), classMaps_(classMaps), status_(std::move(status)) {}

void PolicyClasses::sync(Kor::Name const& name) {
  if (takingDown_) {
    return;
  }
  // A copy: the name may be stored in an entry that is removed during the call.
  settling_.settle(name, [this, held = Kor::Name(name)] { bring(held); });
}

void PolicyClasses::dropLeft() {
  while (!left_.empty()) {
    Kor::Name const name = *left_.begin();
    left_.erase(left_.begin());
    bool dropped = false;
    settling_.settle(name, [&] {
      if (!std::exchange(dropped, true)) {
        takeDown(name);
      }
      bring(name);  // it may be configured again by now
    });
  }
}

void PolicyClasses::takeDownAll() {
  ScopedFlag const flag(takingDown_);
  for (Kor::Name const& name : policy_.machineNames()) {
    takeDown(name);
  }
}

bool PolicyClasses::configured(Kor::Name const& name) const {
  return policy_.policyMap() && policy_.policyMap()->korClassPrio(name);
}

void PolicyClasses::bring(Kor::Name const& name) {
  policy_.mirrorPrio(name);
  if (!configured(name)) {
    classMaps_.unwatch(name);
    leave(name);
    return;
  }
  classMaps_.watch(name);
  Kor::Ptr<ClassMapConfig const> const map = classMaps_.classMapConfig(name);
  Kor::Ptr<ClassMapSubConfig const> const rawMap = policy_.policyMap()->rawClassMap(name);
  Kor::Ptr<ClassAction const> const action = policy_.policyMap()->classAction(name);
  if (!map && !rawMap) {
    leave(name);
    publishMissing(name);
    return;
  }
  if (left_.erase(name) != 0) {
    policy_.classChanged(name);  // its status may have been skipped while it was absent
  }
  if (Kor::Ptr<ClassMapSm> const machine = policy_.classMapSm(name)) {
    machine->classMapConfigIs(map);
    machine->rawClassMapSubConfigIs(rawMap);
    machine->classActionIs(action);
  } else {
    build(name, map, rawMap, action);
  }
}

void PolicyClasses::build(Kor::Name const& name, Kor::Ptr<ClassMapConfig const> const& map,
                          Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                          Kor::Ptr<ClassAction const> const& action) {
  Kor::Ptr<ClassMapSm> const machine = policy_.createClassMapSm(map, rawMap, action);
  if (!machine) {
    return;
  }
  machine->ownerIs(&policy_);
  machine->classNameIs(name);
  policy_.classMapSmIs(name, machine);
  if (status_ && machine->classMapStatus()) {
    Kor::Ptr<ClassMapStatus> const status = status_->classMapStatusIs(name);
    status->errorIs({});  // clears "missing class-map"
    machine->classMapStatusIs(status);
  }
  policy_.classChanged(name);
}

void PolicyClasses::leave(Kor::Name const& name) {
  if (!policy_.classMapSm(name)) {
    if (status_ && !configured(name)) {
      status_->classMapStatusDel(name);
    }
  } else if (policy_.dropsLeftLater()) {
    left_.insert(name);
    policy_.classChanged(name);
  } else {
    takeDown(name);
  }
}

void PolicyClasses::takeDown(Kor::Name const& name) {
  Kor::Ptr<ClassMapSm> const machine = policy_.classMapSm(name);
  if (!machine) {
    return;
  }
  machine->ownerIs(nullptr);
  machine->cleanup();
  machine->korDoZombieReactors(true);
  policy_.classMapSmDel(name);
  if (status_) {
    status_->classMapStatusDel(name);
  }
  policy_.classChanged(name);
}

// A class without class-map has no machine, but a status that reports the missing class-map.
void PolicyClasses::publishMissing(Kor::Name const& name) {
  if (status_ && !policy_.classMapSm(name)) {
    Kor::Ptr<ClassMapStatus> const status = status_->classMapStatusIs(name);
    status->errorIs(Kor::String("missing class-map " + name.stdString()));
  }
}

}  // namespace PolicyMap
