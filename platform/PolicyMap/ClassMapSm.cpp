// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ClassMapSm.h"

#include "PolicyMap/RuleCompiler.h"

#include <vector>

namespace PolicyMap {

ClassMapMatchSm::~ClassMapMatchSm() = default;

Kor::KorType const* ClassMapMatchSm::fwkType() const {
  return _fwkType();
}
Kor::KorType* ClassMapMatchSm::_fwkType() {
  static Kor::KorType type("PolicyMap::ClassMapMatchSm", PtrInterface::_fwkType());
  return &type;
}

bool ClassMapMatchSm::rulesIs(Kor::Ptr<ClassRules const> const& rules,
                              Acl::AclDiff const* aclDiff) {
  if (rules_ && rules_->sameEffect(*rules, aclDiff)) {
    return false;
  }
  rules_ = rules;
  return true;
}

// Hears when the actions of the class are to be programmed once more.
class ClassMapSm::CommonDataWatch : public ClassMapSmCommonData::NotifieeConst {
 public:
  explicit CommonDataWatch(ClassMapSm* machine) : machine_(machine) {}
  void onUpdateAclActions() override { machine_->updateAclActionsChanged(); }

 private:
  ClassMapSm* machine_;
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
      dependencies_([this](DependencyKind kind, Kor::Name const&) { dependencyChanged(kind); }) {
  if (globalCommonData_) {
    dependencies_.indexIs(&globalCommonData_->dependencies());
  }
  if (classMapConfig) {
    newClassMapConfig(classMapConfig);
  }
  if (rawClassMapSubConfig) {
    newRawClassMapSubConfig(rawClassMapSubConfig);
  }
  if (classAction) {
    newClassAction(classAction);
  }
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

// life ----------------------------------------------------------------------------------

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

void ClassMapSm::handleInitialized() {}

void ClassMapSm::cleanup() {
  Kor::Ptr<ClassMapSm> const pinned = Kor::share(this);
  ScopedFlag const flag(cleaningUp_);
  std::vector<ActionType> kinds;
  for (auto const& entry : actionSmIteratorConst()) {
    kinds.push_back(entry.key());
  }
  for (ActionType const kind : kinds) {
    takeDown(kind);
  }
  actionsActiveIs(false);
}

void ClassMapSm::takeDown(ActionType actionType) {
  if (Kor::Ptr<PolicyMap::ActionSm> const machine = actionSm(actionType)) {
    machine->cleanup();
    machine->korDoZombieReactors(true);
    actionSmDel(actionType);
  }
}

Kor::Ptr<ClassMapMatchSm> ClassMapSm::createMatchSm(ClassMapMatchOption option) {
  return Kor::make<PolicyMap::ClassMapMatchSm>(option);
}

Kor::Ptr<ActionSm> ClassMapSm::createActionSm(ActionType /*actionType*/) {
  return nullptr;
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
  settlingActions_.lookAgain();  // a kind may be neither configured nor have its machine yet
  std::set<ActionType> kinds;
  for (auto const& entry : actionSmIteratorConst()) {
    kinds.insert(entry.key());
  }
  for (auto const& [kind, action] : refused_) {
    kinds.insert(kind);
  }
  if (classAction()) {
    for (auto const& entry : classAction()->actionIteratorConst()) {
      kinds.insert(entry.key());
    }
  }
  for (ActionType const kind : kinds) {
    handleAction(kind);
  }
}

void ClassMapSm::handleAction(ActionType actionType) {
  if (cleaningUp_) {
    return;
  }
  // Observers of the class common data may drop the last reference.
  Kor::Ptr<ClassMapSm> const pinned = Kor::share(this);
  settlingActions_.settle(actionType, [&] { syncAction(actionType); });
  actionsActiveIs(actionSms() != 0);
}

Kor::Ptr<Action> ClassMapSm::configuredAction(ActionType actionType) const {
  return classAction() ? classAction()->action(actionType) : nullptr;
}

void ClassMapSm::syncAction(ActionType actionType) {
  Kor::Ptr<Action> action;
  do {
    action = configuredAction(actionType);
    commonDataActionIs(actionType, action);
  } while (action != configuredAction(actionType));

  Kor::Ptr<PolicyMap::ActionSm> const machine = actionSm(actionType);
  if (!action) {
    refused_.erase(actionType);
    takeDown(actionType);
  } else if (machine) {
    if (machine->action() != action) {
      machine->actionIs(action);
      machine->handleAction();
    }
  } else if (classCommonData() && refused_[actionType] != action) {
    if (Kor::Ptr<PolicyMap::ActionSm> const created = createActionSm(actionType)) {
      refused_.erase(actionType);
      actionSmIs(actionType, created);
    } else {
      refused_[actionType] = action;
    }
  }
}

void ClassMapSm::commonDataActionIs(ActionType actionType, Kor::Ptr<Action> const& action) {
  if (!classCommonData()) {
    return;
  }
  if (action) {
    classCommonData()->actionIs(actionType, action);
  } else {
    classCommonData()->actionDel(actionType);
  }
}

void ClassMapSm::updateAclActionsChanged() {
  if (owner_ != nullptr) {
    owner_->classActionsChanged(className_);
  }
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
  rulesStale_ = true;
  if (owner_ != nullptr) {
    owner_->classRulesChanged(option);
  }
}

void ClassMapSm::configChanged(Kor::AttributeId /*id*/) {
  classMapIs(configuredClassMap());
}

void ClassMapSm::contentChanged(Kor::AttributeId /*id*/) {
  handleMatch();
}

void ClassMapSm::dependencyChanged(DependencyKind kind) {
  rulesStale_ = true;
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

void ClassMapSm::compile() {
  rulesStale_ = false;
  Kor::Ptr<ClassMapTypeConfig const> classMaps;
  Kor::Ptr<Acl::Config const> acls;
  Acl::AclDiff const* aclDiff = nullptr;
  if (globalCommonData_) {
    classMaps = globalCommonData_->classTypeConfig();
    acls = globalCommonData_->aclConfig();
    aclDiff = globalCommonData_->aclDiff().get();
  }
  CompiledClass const compiled = compileClass(classMap(), classMaps, acls);
  for (ClassMapMatchOption const option : allMatchOptions) {
    Kor::Ptr<ClassRules const> const& rules = compiled.rules[static_cast<std::size_t>(option)];
    Kor::Ptr<PolicyMap::ClassMapMatchSm> machine = classMapMatchSm(option);
    if (!machine && !rules->empty()) {
      machine = createMatchSm(option);
      classMapMatchSmIs(option, machine);
    }
    if (machine) {
      machine->rulesIs(rules, aclDiff);
    }
  }
  // An error in the rules of one option refuses those of all.
  bool const errorChanged = ruleError_ != compiled.error;
  ruleError_ = compiled.error;
  std::string missing;
  for (std::string const& name : compiled.missing) {
    missing += (missing.empty() ? "missing " : ", missing ") + name;
  }
  missing_ = missing;
  publishError();
  DependencyIndex::Dependent::Names names;
  auto const add = [&names](DependencyKind kind, std::vector<Kor::Name> const& some) {
    for (Kor::Name const& name : some) {
      names.emplace_back(kind, name);
    }
  };
  add(DependencyKind::ipAcl, compiled.ipAcls);
  add(DependencyKind::ip6Acl, compiled.ip6Acls);
  add(DependencyKind::macAcl, compiled.macAcls);
  add(DependencyKind::classMap, compiled.classMaps);
  dependencies_.namesAre(std::move(names));
  if (errorChanged && owner_ != nullptr) {
    for (ClassMapMatchOption const option : allMatchOptions) {
      owner_->classRulesChanged(option);
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
  if (!classMapStatus_) {
    return;
  }
  Kor::String const& first = programError_.empty() ? ruleError_ : programError_;
  classMapStatus_->errorIs(first.empty() || missing_.empty() ? first + missing_
                                                             : first + ", " + missing_);
}

Kor::Ptr<ClassRules const> ClassMapSm::rules(ClassMapMatchOption option) {
  if (rulesStale_) {
    compile();
  }
  Kor::Ptr<PolicyMap::ClassMapMatchSm> const machine = classMapMatchSm(option);
  if (machine && machine->rules()) {
    return machine->rules();
  }
  return Kor::make<ClassRules>(ClassRules::emptySources(option));
}

Kor::String ClassMapSm::ruleError() {
  if (rulesStale_) {
    compile();
  }
  return ruleError_;
}

// attributes ----------------------------------------------------------------------------

void ClassMapSm::newClassMapConfig(Kor::Ptr<ClassMapConfig const> const& config) {
  classMapConfig_.objectIs(config);
}
void ClassMapSm::classMapConfigIs(Kor::Ptr<ClassMapConfig const> const& config) {
  if (config == classMapConfig()) {
    return;
  }
  newClassMapConfig(config);
  if (reacting()) {
    classMapIs(configuredClassMap());
  }
}
void ClassMapSm::classMapConfigDel() {
  classMapConfigIs(nullptr);
}

void ClassMapSm::newRawClassMapSubConfig(Kor::Ptr<ClassMapSubConfig const> const& subConfig) {
  rawClassMapSubConfig_.objectIs(subConfig);
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
void ClassMapSm::rawClassMapSubConfigDel() {
  rawClassMapSubConfigIs(nullptr);
}

void ClassMapSm::newClassAction(Kor::Ptr<ClassAction const> const& classAction) {
  classAction_.objectIs(classAction);
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
void ClassMapSm::classActionDel() {
  classActionIs(nullptr);
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
void ClassMapSm::classCommonDataDel() {
  classCommonDataIs(nullptr);
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
void ClassMapSm::initializingIs(bool initializing) {
  initializing_ = initializing;
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
