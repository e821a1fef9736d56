// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapSm.h"

#include <algorithm>

namespace PolicyMap {

// Observes the classes of the current sub-configuration.
class PolicyMapSm::SubConfigWatch : public PolicyMapSubConfig::NotifieeConst {
 public:
  explicit SubConfigWatch(PolicyMapSm* machine) : machine_(machine) {}
  void onClassPrio(Kor::Name const& className) override { machine_->syncClass(className); }
  void onClassAction(Kor::Name const& className) override { machine_->syncClass(className); }
  void onRawClassMap(Kor::Name const& className) override { machine_->syncClass(className); }

 private:
  PolicyMapSm* machine_;
};

// Observes which class-maps there are.
class PolicyMapSm::ClassTypeWatch : public ClassMapTypeConfig::NotifieeConst {
 public:
  explicit ClassTypeWatch(PolicyMapSm* machine) : machine_(machine) {}
  void onClassMapConfig(Kor::Name const& name) override {
    if (machine_->configured(name)) {
      machine_->syncClass(name);
    }
  }

 private:
  PolicyMapSm* machine_;
};

class PolicyMapSm::ClassOwner final : public ClassMapSm::Owner {
 public:
  explicit ClassOwner(PolicyMapSm& machine) : machine_(machine) {}
  void classRulesChanged(ClassMapMatchOption option) override {
    machine_.reconciler().rulesChanged(option);
  }
  void classActionsChanged(Kor::Name const& className) override {
    machine_.reconciler().actionsChanged(className);
  }

 private:
  PolicyMapSm& machine_;
};

class PolicyMapSm::ReconciledPolicy final : public PolicyReconciler::Policy {
 public:
  explicit ReconciledPolicy(PolicyMapSm& machine) : machine_(machine) {}

  Kor::Ptr<Kor::PtrInterface> pinned() override { return Kor::share(&machine_); }
  PolicyMapSmKey const& key() const override { return machine_.key(); }
  Kor::Ptr<PolicyMapSmCommonData> const& commonData() const override {
    return machine_.policyCommonData();
  }
  Kor::Ptr<PolicyMapStatus> const& status() const override { return machine_.status(); }
  Classes classesInOrder() const override { return machine_.classesInOrder(); }
  Classes classesInOrder(std::set<Kor::Name> const& names) const override {
    return machine_.classesInOrder(names);
  }
  void dropLeftClasses() override { machine_.dropLeftClasses(); }
  std::optional<double> timeProgrammed(ClassMapMatchOption option) const override {
    auto const time = machine_.korTimeProgrammed(option);
    return time ? std::optional(time->value()) : std::nullopt;
  }
  void timeProgrammedIs(ClassMapMatchOption option, std::optional<double> time) override {
    if (time) {
      machine_.timeProgrammedIs(option, *time);
    } else {
      machine_.timeProgrammedDel(option);
    }
  }

 private:
  PolicyMapSm& machine_;
};

PolicyMapSm::PolicyMapSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData, PolicyMapSmKey key,
                         Kor::Ptr<PolicyMapConfig const> const& policyMapConfig,
                         Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig,
                         Kor::Ptr<PolicyMapStatus> status)
    : globalCommonData_(std::move(globalCommonData)),
      key_(std::move(key)),
      policyMapConfig_(Kor::make<Kor::LogWatch<PolicyMapSm>>(this, &PolicyMapSm::configChanged)),
      classTypeConfig_(Kor::make<ClassTypeWatch>(this)),
      status_(std::move(status)),
      policyMap_(Kor::make<SubConfigWatch>(this)),
      classOwner_(std::make_unique<ClassOwner>(*this)),
      reconciledPolicy_(std::make_unique<ReconciledPolicy>(*this)),
      reconciler_(std::make_unique<PolicyReconciler>(*reconciledPolicy_)) {
  if (policyMapConfig) {
    policyMapConfig_.objectIs(policyMapConfig);
  }
  if (classTypeConfig) {
    classTypeConfig_.objectIs(classTypeConfig);
  }
}

PolicyMapSm::~PolicyMapSm() {
  for (auto const& entry : classMapSmIteratorConst()) {
    entry.value()->ownerIs(nullptr);
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
  listenForClassMaps();
  if (reacting()) {
    initialize();
  }
}

void PolicyMapSm::korDoZombieReactors(bool zombie) {
  policyMapConfig_.korDoZombieReactors(zombie);
  classTypeConfig_.korDoZombieReactors(zombie);
  policyMap_.korDoZombieReactors(zombie);
}

// A service-policy machine feeds the index of the global data, which costs what depends on a name.
// Without it this machine listens for itself.
void PolicyMapSm::listenForClassMaps() {
  bool const indexed = reconciler_->attached() && globalCommonData_ &&
                       globalCommonData_->classTypeConfig() == classTypeConfig();
  classTypeConfig_.hasNotificationActiveIs(hasNotificationActive() && !indexed);
}

void PolicyMapSm::serviceIs(PolicyReconciler::Service* service) {
  reconciler_->serviceIs(service);
  listenForClassMaps();
}

void PolicyMapSm::initialize() {
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  if (!policyCommonData_) {
    policyCommonDataIs(createCommonData());
  }
  configChanged(PolicyMapConfig::currentSubConfigId);
  if (initialized_) {
    syncClasses();  // what changed while notifications were off
  }
  initializedIs(true);
}

Kor::Ptr<PolicyMapSmCommonData> PolicyMapSm::createCommonData() {
  return Kor::make<PolicyMapSmCommonData>(key_);
}

void PolicyMapSm::handleInitialized() {}

void PolicyMapSm::cleanup() {
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  ScopedFlag const flag(cleaningUp_);
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
  syncClasses();
}

bool PolicyMapSm::configured(Kor::Name const& name) const {
  return policyMap() && policyMap()->korClassPrio(name);
}

void PolicyMapSm::syncClasses() {
  // Observers of what is brought up and taken down may drop the last reference.
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  std::set<Kor::Name> names;
  for (auto const& entry : classPrioIteratorConst()) {
    names.insert(entry.key());
  }
  if (policyMap()) {
    for (auto const& entry : policyMap()->classPrioIteratorConst()) {
      names.insert(entry.key());
    }
  }
  for (Kor::Name const& name : names) {
    syncClass(name);
  }
}

void PolicyMapSm::catchUp() {
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  syncClasses();
  for (auto const& entry : classMapSmIteratorConst()) {
    entry.value()->handleMatch();
  }
  reconciler_->everythingChanged();
}

void PolicyMapSm::syncClass(Kor::Name const& name) {
  if (cleaningUp_) {
    return;
  }
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  settlingClasses_.settle(name, [this, held = Kor::Name(name)] { bringClass(held); });
}

void PolicyMapSm::bringClass(Kor::Name const& name) {
  prioIs(name);
  if (!configured(name)) {
    classWatches_.erase(name);
    classLeft(name);
    return;
  }
  watchClassMap(name);
  Kor::Ptr<ClassMapConfig const> const map =
      classTypeConfig() ? classTypeConfig()->classMapConfig(name) : nullptr;
  Kor::Ptr<ClassMapSubConfig const> const rawMap = policyMap()->rawClassMap(name);
  Kor::Ptr<ClassAction const> const action = policyMap()->classAction(name);
  if (!map && !rawMap) {
    classLeft(name);
    publishMissing(name);
    return;
  }
  if (leftClasses_.erase(name) != 0) {
    reconciler_->rulesChanged();  // its status may have been passed over while it was away
  }
  if (Kor::Ptr<PolicyMap::ClassMapSm> const machine = classMapSm(name)) {
    machine->classMapConfigIs(map);
    machine->rawClassMapSubConfigIs(rawMap);
    machine->classActionIs(action);
  } else {
    makeClassMachine(name, map, rawMap, action);
  }
}

void PolicyMapSm::watchClassMap(Kor::Name const& name) {
  if (!globalCommonData_ || classWatches_.contains(name)) {
    return;
  }
  auto const react = [this](DependencyKind, Kor::Name const& changed) {
    if (reacting()) {
      syncClass(changed);
    }
  };
  auto& watch = classWatches_.try_emplace(name, react).first->second;
  watch.indexIs(&globalCommonData_->dependencies());
  watch.namesAre({{DependencyKind::classMap, name}});
}

void PolicyMapSm::makeClassMachine(Kor::Name const& name, Kor::Ptr<ClassMapConfig const> const& map,
                                   Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                                   Kor::Ptr<ClassAction const> const& action) {
  Kor::Ptr<PolicyMap::ClassMapSm> const machine = createClassMapSm(map, rawMap, action);
  if (!machine) {
    return;
  }
  machine->ownerIs(classOwner_.get());
  machine->classNameIs(name);
  classMapSmIs(name, machine);
  if (status_ && machine->classMapStatus()) {
    Kor::Ptr<ClassMapStatus> const status = status_->classMapStatusIs(name);
    status->errorIs({});  // that the class-map is missing
    machine->classMapStatusIs(status);
  }
  reconciler_->rulesChanged();
}

// Below a service-policy machine the class machine stays until the event loop turns: a class that
// is back by then has not left.
void PolicyMapSm::classLeft(Kor::Name const& name) {
  if (korClassMapSm(name) && reconciler_->attached()) {
    leftClasses_.insert(name);
    reconciler_->rulesChanged();
  } else if (korClassMapSm(name)) {
    dropClassMachine(name);
  } else if (status_ && !configured(name)) {
    status_->classMapStatusDel(name);
  }
}

void PolicyMapSm::dropLeftClasses() {
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  while (!leftClasses_.empty()) {
    Kor::Name const name = *leftClasses_.begin();
    leftClasses_.erase(leftClasses_.begin());
    bool dropped = false;
    settlingClasses_.settle(name, [&] {
      if (!std::exchange(dropped, true)) {
        dropClassMachine(name);
      }
      bringClass(name);  // it may have come back meanwhile
    });
  }
}

void PolicyMapSm::dropClassMachine(Kor::Name const& name) {
  Kor::Ptr<PolicyMap::ClassMapSm> const machine = classMapSm(name);
  if (!machine) {
    return;
  }
  machine->ownerIs(nullptr);
  machine->cleanup();
  machine->korDoZombieReactors(true);
  classMapSmDel(name);
  if (status_) {
    status_->classMapStatusDel(name);
  }
  reconciler_->rulesChanged();
}

// A class that refers to no class-map has a status that says so.
void PolicyMapSm::publishMissing(Kor::Name const& name) {
  if (status_ && !korClassMapSm(name)) {
    Kor::Ptr<ClassMapStatus> const status = status_->classMapStatusIs(name);
    status->errorIs(Kor::String("missing class-map " + name.stdString()));
  }
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
    reconciler_->rulesChanged();
  }
  if (configured && (!known || configured->value() != known->value())) {
    classPrioIs(name, configured->value());
    prioClassIs(configured->value(), name);
    reconciler_->rulesChanged();
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

std::vector<Kor::Ptr<ClassMapSm>> PolicyMapSm::classesInOrder(
    std::set<Kor::Name> const& names) const {
  std::vector<std::pair<std::uint32_t, Kor::Ptr<PolicyMap::ClassMapSm>>> byPrio;
  for (Kor::Name const& name : names) {
    Kor::Ptr<PolicyMap::ClassMapSm> const machine = classMapSm(name);
    if (machine && configured(name)) {
      byPrio.emplace_back(policyMap()->classPrio(name), machine);
    }
  }
  // Equal priorities go by name, as the set does.
  std::stable_sort(byPrio.begin(), byPrio.end(),
                   [](auto const& a, auto const& b) { return a.first < b.first; });
  std::vector<Kor::Ptr<PolicyMap::ClassMapSm>> classes;
  classes.reserve(byPrio.size());
  for (auto const& [prio, machine] : byPrio) {
    classes.push_back(machine);
  }
  return classes;
}

void PolicyMapSm::handleActiveIntf(Vorel::IntfId /*intf*/) {
  reconciler_->intfsChanged();
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
  if (config == classTypeConfig()) {
    return;
  }
  classTypeConfig_.objectIs(config);
  listenForClassMaps();
  if (reacting()) {
    syncClasses();
  }
}
void PolicyMapSm::classTypeConfigDel() {
  classTypeConfigIs(nullptr);
}

}  // namespace PolicyMap
