// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapSm.h"

#include "PolicyMap/Settling.h"

#include <utility>
#include <vector>

namespace PolicyMap {

// Observes requests to reprogram the class's actions.
class ClassMapSm::CommonDataWatch : public ClassMapSmCommonData::NotifieeConst {
 public:
  explicit CommonDataWatch(ClassMapSm* machine) : machine_(machine) {}
  void onUpdateAclActions() override {
    if (machine_->owner_ != nullptr) {
      machine_->owner_->classActionsChanged(machine_->className_);
    }
  }

 private:
  ClassMapSm* machine_;
};

// The machine as seen by its ClassActions.
class ClassMapSm::ActingClass final : public ClassActions::Class {
 public:
  explicit ActingClass(ClassMapSm& machine) : machine_(machine) {}

  Kor::Ptr<ClassAction const> const& classAction() const override { return machine_.classAction(); }
  Kor::Ptr<ClassMapSmCommonData> const& classCommonData() const override {
    return machine_.classCommonData();
  }
  std::vector<ActionType> machineKinds() const override {
    std::vector<ActionType> kinds;
    for (auto const& entry : machine_.actionSmIteratorConst()) {
      kinds.push_back(entry.key());
    }
    return kinds;
  }
  Kor::Ptr<PolicyMap::ActionSm> actionSm(ActionType kind) const override {
    return machine_.actionSm(kind);
  }
  Kor::Ptr<PolicyMap::ActionSm> createActionSm(ActionType kind) override {
    return machine_.createActionSm(kind);
  }
  void actionSmIs(ActionType kind, Kor::Ptr<PolicyMap::ActionSm> const& machine) override {
    machine_.actionSmIs(kind, machine);
  }
  void actionSmDel(ActionType kind) override { machine_.actionSmDel(kind); }

 private:
  ClassMapSm& machine_;
};

ClassMapSm::ClassMapSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData,
                       Kor::Ptr<PolicyMapSmCommonData> policyCommonData,
                       Kor::Ptr<ClassMapConfig const> const& classMapConfig,
                       Kor::Ptr<ClassMapSubConfig const> const& rawClassMapSubConfig,
                       Kor::Ptr<ClassAction const> const& classAction)
    : globalCommonData_(std::move(globalCommonData)),
      policyCommonData_(std::move(policyCommonData)),
      classMapConfig_(Kor::make<Kor::LogWatch<ClassMapSm>>(this, &ClassMapSm::configChanged)),
      rawClassMapSubConfig_(Kor::make<Kor::LogWatch<ClassMapSm>>(this, &ClassMapSm::configChanged)),
      classAction_(Kor::make<Kor::LogWatch<ClassMapSm>>(this, &ClassMapSm::classActionChanged)),
      classMap_(Kor::make<Kor::LogWatch<ClassMapSm>>(this, &ClassMapSm::contentChanged)),
      classCommonData_(Kor::make<CommonDataWatch>(this)),
      compiledRules_(globalCommonData_, [this](DependencyKind kind) { dependencyChanged(kind); }),
      actingClass_(std::make_unique<ActingClass>(*this)),
      actions_(*actingClass_) {
  newClassMapConfig(classMapConfig);
  newRawClassMapSubConfig(rawClassMapSubConfig);
  newClassAction(classAction);
}

ClassMapSm::~ClassMapSm() = default;

Kor::KorType const* ClassMapSm::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapSm::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapSm", PtrInterface::_fwkType());
  return &type;
}

Kor::Name ClassMapSm::name() const {
  if (classMapConfig()) {
    return classMapConfig()->name();
  }
  return rawClassMapSubConfig() ? rawClassMapSubConfig()->name() : Kor::Name();
}

// lifecycle -----------------------------------------------------------------------------

void ClassMapSm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  classMapConfig_.hasNotificationActiveIs(active);
  rawClassMapSubConfig_.hasNotificationActiveIs(active);
  classAction_.hasNotificationActiveIs(active);
  classMap_.hasNotificationActiveIs(active);
  classCommonData_.hasNotificationActiveIs(active);
  if (reacting()) {
    initialize();
  }
}

void ClassMapSm::korDoZombieReactors(bool zombie) {
  classMapConfig_.korDoZombieReactors(zombie);
  rawClassMapSubConfig_.korDoZombieReactors(zombie);
  classAction_.korDoZombieReactors(zombie);
  classMap_.korDoZombieReactors(zombie);
  classCommonData_.korDoZombieReactors(zombie);
}

void ClassMapSm::initialize() {
  Kor::Ptr<ClassMapSm> const pinned = Kor::share(this);
  initializingIs(true);
  classMapIs(configuredClassMap());
  if (!classCommonData() && globalCommonData_) {
    classCommonDataIs(createCommonData());
  }
  if (!classMapStatus_) {
    classMapStatusIs(createClassMapStatus());
  }
  handleAction();
  handleMatch();
  initializingIs(false);
  initializedIs(true);
}

void ClassMapSm::cleanup() {
  Kor::Ptr<ClassMapSm> const pinned = Kor::share(this);
  ScopedFlag const flag(cleaningUp_);
  actions_.takeDownAll();
  actionsActiveIs(false);
}

Kor::Ptr<ClassMapMatchSm> ClassMapSm::createMatchSm(ClassMapMatchOption option) {
  return Kor::make<PolicyMap::ClassMapMatchSm>(option);
}

Kor::Ptr<ClassMapSmCommonData> ClassMapSm::createCommonData() {
  return Kor::make<ClassMapSmCommonData>(name(), classMap(), globalCommonData_->aclConfig());
}

Kor::Ptr<ClassMapStatus> ClassMapSm::createClassMapStatus() {
  return Kor::make<ClassMapStatus>(name());
}

// actions -------------------------------------------------------------------------------

void ClassMapSm::handleAction() {
  Kor::Ptr<ClassMapSm> const pinned = Kor::share(this);
  actions_.lookAgain();  // a kind being settled may have neither configuration nor machine yet
  for (ActionType const kind : actions_.kinds()) {
    handleAction(kind);
  }
}

void ClassMapSm::handleAction(ActionType actionType) {
  if (cleaningUp_) {
    return;
  }
  // Observers of the class common data may drop the last reference to this machine.
  Kor::Ptr<ClassMapSm> const pinned = Kor::share(this);
  actions_.sync(actionType);
  actionsActiveIs(actionSms() != 0);
}

void ClassMapSm::classActionChanged(Kor::AttributeId /*id*/) {
  handleAction();
}

// matches -------------------------------------------------------------------------------

Kor::Ptr<ClassMapSubConfig const> ClassMapSm::configuredClassMap() const {
  return classMapConfig() ? Kor::Ptr<ClassMapSubConfig const>(classMapConfig()->currentSubConfig())
                          : rawClassMapSubConfig();
}

void ClassMapSm::handleMatch() {
  for (ClassMapMatchOption const option : allMatchOptions) {
    handleMatch(option);
  }
}

void ClassMapSm::handleMatch(ClassMapMatchOption option) {
  compiledRules_.makeStale();
  if (owner_ != nullptr) {
    owner_->classRulesChanged(className_, option);
  }
}

void ClassMapSm::configChanged(Kor::AttributeId /*id*/) {
  classMapIs(configuredClassMap());
}

void ClassMapSm::contentChanged(Kor::AttributeId /*id*/) {
  handleMatch();
}

void ClassMapSm::dependencyChanged(DependencyKind kind) {
  if (!reacting()) {
    return;
  }
  switch (kind) {
  case DependencyKind::ipAcl: handleMatch(ClassMapMatchOption::ipv4); break;
  case DependencyKind::ip6Acl: handleMatch(ClassMapMatchOption::ipv6); break;
  case DependencyKind::macAcl:
    handleMatch(ClassMapMatchOption::mac);
    handleMatch(ClassMapMatchOption::mpls);
    break;
  case DependencyKind::classMap: handleMatch(); break;
  }
}

void ClassMapSm::compileIfStale() {
  if (!compiledRules_.stale()) {
    return;
  }
  Kor::String const errorBefore = compiledRules_.error();
  compiledRules_.compile(classMap());
  bool const errorChanged = compiledRules_.error() != errorBefore;
  distributeRules();
  publishError();
  // An error in the rules of one option refuses all options.
  if (errorChanged && owner_ != nullptr) {
    for (ClassMapMatchOption const option : allMatchOptions) {
      owner_->classRulesChanged(className_, option);
    }
  }
}

// An option without rules needs no machine.
void ClassMapSm::distributeRules() {
  for (ClassMapMatchOption const option : allMatchOptions) {
    Kor::Ptr<PolicyMap::ClassMapMatchSm> machine = classMapMatchSm(option);
    if (!machine && !compiledRules_.of(option)->empty()) {
      machine = createMatchSm(option);
      classMapMatchSmIs(option, machine);
    }
    if (machine) {
      machine->rulesIs(compiledRules_.of(option),
                       globalCommonData_ ? globalCommonData_->aclDiff().get() : nullptr);
    }
  }
}

void ClassMapSm::programStateIs(bool programmed, Kor::String const& error) {
  programError_ = error;
  publishError();
  if (classMapStatus_) {
    classMapStatus_->programmedIs(programmed);
  }
}

void ClassMapSm::publishError() {
  if (classMapStatus_) {
    classMapStatus_->errorIs(compiledRules_.problems(programError_));
  }
}

Kor::Ptr<ClassRules const> ClassMapSm::rules(ClassMapMatchOption option) {
  compileIfStale();
  Kor::Ptr<PolicyMap::ClassMapMatchSm> const machine = classMapMatchSm(option);
  if (machine && machine->rules()) {
    return machine->rules();
  }
  return Kor::make<ClassRules>(ClassRules::emptySources(option));
}

Kor::String ClassMapSm::ruleError() {
  compileIfStale();
  return compiledRules_.error();
}

// attributes ----------------------------------------------------------------------------

void ClassMapSm::classMapConfigIs(Kor::Ptr<ClassMapConfig const> const& config) {
  if (config == classMapConfig()) {
    return;
  }
  newClassMapConfig(config);
  if (reacting()) {
    classMapIs(configuredClassMap());
  }
}

void ClassMapSm::rawClassMapSubConfigIs(Kor::Ptr<ClassMapSubConfig const> const& subConfig) {
  if (subConfig == rawClassMapSubConfig()) {
    return;
  }
  newRawClassMapSubConfig(subConfig);
  if (reacting()) {
    classMapIs(configuredClassMap());
  }
}

void ClassMapSm::classActionIs(Kor::Ptr<ClassAction const> const& classAction) {
  if (classAction == this->classAction()) {
    return;
  }
  newClassAction(classAction);
  if (reacting()) {
    handleAction();
  }
}

void ClassMapSm::classMapIs(Kor::Ptr<ClassMapSubConfig const> const& classMap) {
  if (classMap == this->classMap()) {
    return;
  }
  Kor::Ptr<ClassMapSm> const pinned = Kor::share(this);
  classMap_.objectIs(classMap);
  if (classCommonData()) {
    classCommonData()->classMapIs(classMap);
  }
  handleMatch();
}

void ClassMapSm::classCommonDataIs(Kor::Ptr<ClassMapSmCommonData> const& commonData) {
  classCommonData_.objectIs(commonData);
  if (commonData && classMapStatus_) {
    commonData->classMapStatusIs(classMapStatus_);
  }
}

void ClassMapSm::classMapStatusIs(Kor::Ptr<ClassMapStatus> const& status) {
  classMapStatus_ = status;
  if (classCommonData()) {
    classCommonData()->classMapStatusIs(status);
  }
}

void ClassMapSm::actionsActiveIs(bool active) {
  actionsActive_ = active;
}

void ClassMapSm::initializedIs(bool initialized) {
  if (initialized == initialized_) {
    return;
  }
  initialized_ = initialized;
  if (initialized) {
    handleInitialized();
  }
}

}  // namespace PolicyMap
