// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapSm.h"

#include "PolicyMap/PolicyProgram.h"

namespace PolicyMap {

// Hears which classes of the current sub-configuration change.
class PolicyMapSm::SubConfigWatch : public PolicyMapSubConfig::NotifieeConst {
 public:
  explicit SubConfigWatch(PolicyMapSm* machine) : machine_(machine) {}
  void onClassPrio(Kor::Name const& className) override { machine_->classIs(className); }
  void onClassAction(Kor::Name const& className) override { machine_->classIs(className); }
  void onRawClassMap(Kor::Name const& className) override { machine_->classIs(className); }

 private:
  PolicyMapSm* machine_;
};

PolicyMapSm::PolicyMapSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData, PolicyMapSmKey key,
                         Kor::Ptr<PolicyMapConfig const> const& policyMapConfig,
                         Kor::Ptr<ClassMapTypeConfig const> classTypeConfig,
                         Kor::Ptr<PolicyMapStatus> status)
    : globalCommonData_(std::move(globalCommonData)),
      key_(std::move(key)),
      policyMapConfig_(Kor::make<Kor::LogWatch<PolicyMapSm>>(this, &PolicyMapSm::configChanged)),
      classTypeConfig_(std::move(classTypeConfig)),
      status_(std::move(status)),
      policyMap_(Kor::make<SubConfigWatch>(this)),
      program_(std::make_unique<PolicyProgram>(*this)) {
  if (policyMapConfig) {
    policyMapConfig_.objectIs(policyMapConfig);
  }
}

PolicyMapSm::~PolicyMapSm() {
  for (auto const& entry : classMapSmIteratorConst()) {
    entry.value()->policyIs(nullptr);
  }
}

Kor::KorType const* PolicyMapSm::fwkType() const {
  return _fwkType();
}
Kor::KorType* PolicyMapSm::_fwkType() {
  static Kor::KorType type("PolicyMap::PolicyMapSm", PtrInterface::_fwkType());
  return &type;
}

// life ----------------------------------------------------------------------------------

void PolicyMapSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  policyMapConfig_.hasNotificationActiveIs(active);
  policyMap_.hasNotificationActiveIs(active);
  if (reacting()) {
    initialize();
  }
}

void PolicyMapSm::korDoZombieReactors(bool zombie) {
  policyMapConfig_.korDoZombieReactors(zombie);
  policyMap_.korDoZombieReactors(zombie);
}

void PolicyMapSm::initialize() {
  if (!policyCommonData_) {
    policyCommonDataIs(createCommonData());
  }
  configChanged(PolicyMapConfig::currentSubConfigId);
  if (initialized_) {
    classesAre();  // what changed while nobody listened
  }
  initializedIs(true);
}

Kor::Ptr<PolicyMapSmCommonData> PolicyMapSm::createCommonData() {
  return Kor::make<PolicyMapSmCommonData>(key_);
}

void PolicyMapSm::handleInitialized() {}

void PolicyMapSm::cleanup() {
  std::vector<Kor::Name> names;
  for (auto const& entry : classMapSmIteratorConst()) {
    names.push_back(entry.key());
  }
  for (Kor::Name const& name : names) {
    dropClassMachine(name);
  }
}

// classes -------------------------------------------------------------------------------

void PolicyMapSm::configChanged(Kor::AttributeId /*id*/) {
  policyMapIs(policyMapConfig() ? policyMapConfig()->currentSubConfig() : nullptr);
}

void PolicyMapSm::policyMapIs(Kor::Ptr<PolicyMapSubConfig const> const& policyMap) {
  if (policyMap == this->policyMap()) {
    return;
  }
  policyMap_.objectIs(policyMap);
  classesAre();
}

void PolicyMapSm::classesAre() {
  std::set<Kor::Name> names;
  for (auto const& [name, watch] : classWatches_) {
    names.insert(name);
  }
  if (policyMap()) {
    for (auto const& entry : policyMap()->classPrioIteratorConst()) {
      names.insert(entry.key());
    }
  }
  for (Kor::Name const& name : names) {
    classIs(name);
  }
}

void PolicyMapSm::catchUp() {
  classesAre();
  for (auto const& entry : classMapSmIteratorConst()) {
    entry.value()->handleMatch();
  }
  program_->everythingChanged();
}

void PolicyMapSm::classIs(Kor::Name const& name) {
  if (!policyMap() || !policyMap()->korClassPrio(name)) {
    classWatches_.erase(name);
    prioIs(name);
    classLeft(name);
    return;
  }
  if (globalCommonData_ && classWatches_.find(name) == classWatches_.end()) {
    auto const react = [this](DependencyKind, Kor::Name const& changed) {
      if (reacting()) {
        classIs(changed);
      }
    };
    auto& watch = classWatches_.try_emplace(name, react).first->second;
    watch.indexIs(&globalCommonData_->dependencies());
    watch.namesAre({{DependencyKind::classMap, name}});
  }
  prioIs(name);
  Kor::Ptr<ClassMapConfig const> const map =
      classTypeConfig_ ? classTypeConfig_->classMapConfig(name) : nullptr;
  Kor::Ptr<ClassMapSubConfig const> const rawMap = policyMap()->rawClassMap(name);
  Kor::Ptr<ClassAction const> const action = policyMap()->classAction(name);
  if (!map && !rawMap) {
    classLeft(name);
    return;
  }
  leftClasses_.erase(name);
  if (Kor::Ptr<PolicyMap::ClassMapSm> const machine = classMapSm(name)) {
    machine->classMapConfigIs(map);
    machine->rawClassMapSubConfigIs(rawMap);
    machine->classActionIs(action);
  } else {
    makeClassMachine(name, map, rawMap, action);
  }
}

void PolicyMapSm::makeClassMachine(Kor::Name const& name, Kor::Ptr<ClassMapConfig const> const& map,
                                   Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                                   Kor::Ptr<ClassAction const> const& action) {
  Kor::Ptr<PolicyMap::ClassMapSm> const machine = createClassMapSm(map, rawMap, action);
  if (!machine) {
    return;
  }
  machine->policyIs(this);
  machine->classNameIs(name);
  if (status_ && machine->classMapStatus()) {
    machine->classMapStatusIs(status_->classMapStatusIs(name));
  }
  classMapSmIs(name, machine);
  program_->rulesChanged();
}

// Below a service-policy machine the class machine stays until the event loop turns: a class that
// is back by then has not left.
void PolicyMapSm::classLeft(Kor::Name const& name) {
  if (!program_->attached()) {
    dropClassMachine(name);
  } else if (korClassMapSm(name)) {
    leftClasses_.insert(name);
    program_->rulesChanged();
  }
}

void PolicyMapSm::dropLeftClasses() {
  for (Kor::Name const& name : std::exchange(leftClasses_, {})) {
    dropClassMachine(name);
  }
}

void PolicyMapSm::dropClassMachine(Kor::Name const& name) {
  Kor::Ptr<PolicyMap::ClassMapSm> const machine = classMapSm(name);
  if (!machine) {
    return;
  }
  machine->policyIs(nullptr);
  machine->cleanup();
  machine->korDoZombieReactors(true);
  classMapSmDel(name);
  if (status_) {
    status_->classMapStatusDel(name);
  }
  program_->rulesChanged();
}

void PolicyMapSm::prioIs(Kor::Name const& name) {
  Kor::Ptr<PolicyMapSubConfig::KorClassPrio const> const configured =
      policyMap() ? policyMap()->korClassPrio(name) : nullptr;
  Kor::Ptr<KorClassPrio> const known = korClassPrio(name);
  if (known && (!configured || configured->value() != known->value())) {
    if (prioClass(known->value()) == name) {
      prioClassDel(known->value());
    }
    classPrioDel(name);
    program_->rulesChanged();
  }
  if (configured && (!known || configured->value() != known->value())) {
    classPrioIs(name, configured->value());
    prioClassIs(configured->value(), name);
    program_->rulesChanged();
  }
}

std::vector<Kor::Ptr<ClassMapSm>> PolicyMapSm::classesInOrder() const {
  std::vector<Kor::Ptr<PolicyMap::ClassMapSm>> classes;
  if (policyMap()) {
    for (Kor::Name const& name : policyMap()->classesInOrder()) {
      if (Kor::Ptr<PolicyMap::ClassMapSm> const machine = classMapSm(name)) {
        classes.push_back(machine);
      }
    }
  }
  return classes;
}

void PolicyMapSm::classRulesChanged(ClassMapMatchOption option) {
  program_->rulesChanged(option);
}

void PolicyMapSm::classActionsChanged() {
  program_->actionsChanged();
}

void PolicyMapSm::handleActiveIntf(Vorel::IntfId /*intf*/) {
  program_->intfsChanged();
}

// attributes ----------------------------------------------------------------------------

void PolicyMapSm::policyCommonDataIs(Kor::Ptr<PolicyMapSmCommonData> const& commonData) {
  policyCommonData_ = commonData;
}
void PolicyMapSm::policyCommonDataDel() {
  policyCommonDataIs(nullptr);
}

void PolicyMapSm::actionsActiveIs(bool active) {
  actionsActive_ = active;
}

void PolicyMapSm::initializedIs(bool initialized) {
  if (initialized == initialized_) {
    return;
  }
  initialized_ = initialized;
  if (initialized) {
    handleInitialized();
  }
}

void PolicyMapSm::policyMapConfigIs(Kor::Ptr<PolicyMapConfig const> const& config) {
  if (config == policyMapConfig()) {
    return;
  }
  policyMapConfig_.objectIs(config);
  if (reacting()) {
    configChanged(PolicyMapConfig::currentSubConfigId);
  }
}
void PolicyMapSm::policyMapConfigDel() {
  policyMapConfigIs(nullptr);
}

void PolicyMapSm::classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config) {
  if (config == classTypeConfig_) {
    return;
  }
  classTypeConfig_ = config;
  if (reacting()) {
    classesAre();
  }
}
void PolicyMapSm::classTypeConfigDel() {
  classTypeConfigIs(nullptr);
}

}  // namespace PolicyMap
