// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/PolicyMapSm.h"

#include <utility>

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

// The machine as seen by its PolicyClasses.
class PolicyMapSm::ClassesPolicy final : public PolicyClasses::Policy {
 public:
  explicit ClassesPolicy(PolicyMapSm& machine) : machine_(machine) {}

  Kor::Ptr<PolicyMapSubConfig const> const& policyMap() const override {
    return machine_.policyMap();
  }
  void mirrorPrio(Kor::Name const& name) override { machine_.mirrorPrio(name); }
  std::vector<Kor::Name> machineNames() const override {
    std::vector<Kor::Name> names;
    for (auto const& entry : machine_.classMapSmIteratorConst()) {
      names.push_back(entry.key());
    }
    return names;
  }
  Kor::Ptr<PolicyMap::ClassMapSm> classMapSm(Kor::Name const& name) const override {
    return machine_.classMapSm(name);
  }
  Kor::Ptr<PolicyMap::ClassMapSm> createClassMapSm(
      Kor::Ptr<ClassMapConfig const> const& map, Kor::Ptr<ClassMapSubConfig const> const& rawMap,
      Kor::Ptr<ClassAction const> const& action) override {
    return machine_.createClassMapSm(map, rawMap, action);
  }
  void classMapSmIs(Kor::Name const& name, Kor::Ptr<PolicyMap::ClassMapSm> const& sm) override {
    machine_.classMapSmIs(name, sm);
  }
  void classMapSmDel(Kor::Name const& name) override { machine_.classMapSmDel(name); }
  bool dropsLeftLater() const override { return machine_.reconciler_->attached(); }
  void classChanged(Kor::Name const& name) override { machine_.reconciler_->classChanged(name); }
  void classRulesChanged(Kor::Name const& name, ClassMapMatchOption option) override {
    machine_.reconciler_->classChanged(name, option);
  }
  void classActionsChanged(Kor::Name const& name) override {
    machine_.reconciler_->actionsChanged(name);
  }

 private:
  PolicyMapSm& machine_;
};

// The machine as seen by its reconciler.
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
      classMaps_(globalCommonData_,
                 [this](Kor::Name const& name) {
                   if (reacting()) {
                     syncClass(name);
                   }
                 }),
      status_(std::move(status)),
      policyMap_(Kor::make<SubConfigWatch>(this)),
      classesPolicy_(std::make_unique<ClassesPolicy>(*this)),
      classes_(*classesPolicy_, classMaps_, status_),
      reconciledPolicy_(std::make_unique<ReconciledPolicy>(*this)),
      reconciler_(std::make_unique<PolicyReconciler>(*reconciledPolicy_)) {
  policyMapConfig_.objectIs(policyMapConfig);
  classMaps_.classTypeConfigIs(classTypeConfig);
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

// lifecycle -----------------------------------------------------------------------------

void PolicyMapSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  policyMapConfig_.hasNotificationActiveIs(active);
  policyMap_.hasNotificationActiveIs(active);
  classMaps_.hasNotificationActiveIs(active);
  if (reacting()) {
    initialize();
  }
}

void PolicyMapSm::korDoZombieReactors(bool zombie) {
  policyMapConfig_.korDoZombieReactors(zombie);
  classMaps_.korDoZombieReactors(zombie);
  policyMap_.korDoZombieReactors(zombie);
}

void PolicyMapSm::serviceIs(PolicyReconciler::Service* service) {
  reconciler_->serviceIs(service);
  classMaps_.attachedIs(reconciler_->attached());
}

void PolicyMapSm::initialize() {
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  if (!policyCommonData_) {
    policyCommonDataIs(createCommonData());
  }
  configChanged(PolicyMapConfig::currentSubConfigId);
  if (initialized_) {
    syncClasses();  // changes made while notifications were off
  }
  initializedIs(true);
}

Kor::Ptr<PolicyMapSmCommonData> PolicyMapSm::createCommonData() {
  return Kor::make<PolicyMapSmCommonData>(key_);
}

void PolicyMapSm::handleInitialized() {}

void PolicyMapSm::cleanup() {
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  classes_.takeDownAll();
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

void PolicyMapSm::syncClasses() {
  // Observers of machines that are created and taken down may drop the last reference to this one.
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
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  classes_.sync(name);
}

void PolicyMapSm::dropLeftClasses() {
  Kor::Ptr<PolicyMapSm> const pinned = Kor::share(this);
  classes_.dropLeft();
}

void PolicyMapSm::mirrorPrio(Kor::Name const& name) {
  Kor::Ptr<PolicyMapSubConfig::KorClassPrio const> const configured =
      policyMap() ? policyMap()->korClassPrio(name) : nullptr;
  Kor::Ptr<KorClassPrio> const known = korClassPrio(name);
  if (known && (!configured || configured->value() != known->value())) {
    if (prioClass(known->value()) == name) {
      prioClassDel(known->value());
    }
    classPrioDel(name);
    reconciler_->classChanged(name);
  }
  if (configured && (!known || configured->value() != known->value())) {
    classPrioIs(name, configured->value());
    prioClassIs(configured->value(), name);
    reconciler_->classChanged(name);
  }
}

std::vector<Kor::Ptr<ClassMapSm>> PolicyMapSm::classesInOrder() const {
  return policyMap() ? machinesOf(policyMap()->classesInOrder())
                     : std::vector<Kor::Ptr<PolicyMap::ClassMapSm>>();
}

std::vector<Kor::Ptr<ClassMapSm>> PolicyMapSm::classesInOrder(
    std::set<Kor::Name> const& names) const {
  return policyMap() ? machinesOf(policyMap()->classesInOrder(names))
                     : std::vector<Kor::Ptr<PolicyMap::ClassMapSm>>();
}

std::vector<Kor::Ptr<ClassMapSm>> PolicyMapSm::machinesOf(
    std::vector<Kor::Name> const& names) const {
  std::vector<Kor::Ptr<PolicyMap::ClassMapSm>> machines;
  for (Kor::Name const& name : names) {
    if (Kor::Ptr<PolicyMap::ClassMapSm> const machine = classMapSm(name)) {
      machines.push_back(machine);
    }
  }
  return machines;
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
  classMaps_.classTypeConfigIs(config);
  if (reacting()) {
    syncClasses();
  }
}
void PolicyMapSm::classTypeConfigDel() {
  classTypeConfigIs(nullptr);
}

}  // namespace PolicyMap
