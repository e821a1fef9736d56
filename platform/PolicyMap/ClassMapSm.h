// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassMapSm: the machine of one class of one policy. It runs one machine per configured action
// (ClassActions) and compiles the class's rules on demand (CompiledRules).
//
// When hasNotificationActiveIs(true) returns, the machine is complete: it has its class-map, common
// data, status and action machines, as far as global data and class actions exist.

#include "Kor/Reactor.h"
#include "PolicyMap/ActionSm.h"
#include "PolicyMap/ClassActions.h"
#include "PolicyMap/ClassMapMatchSm.h"
#include "PolicyMap/ClassMapSmCommonData.h"
#include "PolicyMap/CompiledRules.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMapExport.h"

#include <memory>

namespace PolicyMap {

class POLICYMAP_API ClassMapSm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<ClassMapSm>;
  using PtrConst = Kor::Ptr<ClassMapSm const>;

  // The policy machine, which is notified of changes.
  class Owner {
   public:
    virtual ~Owner() = default;
    virtual void classRulesChanged(Kor::Name const& className, ClassMapMatchOption option) = 0;
    virtual void classActionsChanged(Kor::Name const& className) = 0;
  };

  ~ClassMapSm() override;

  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Called when the configured action of a kind was added, replaced or removed. Updates the machine
  // of that kind.
  virtual void handleAction(ActionType actionType);
  virtual void handleAction();  // all kinds
  // Called when the traffic that the class matches may have changed. Marks the rules as stale and
  // notifies the owner. Does not compile: that happens when rules are next requested.
  virtual void handleMatch(ClassMapMatchOption option);
  virtual void handleMatch();  // all options

  // Factories for the parts of the machine. A null result is allowed: the part is then absent.
  virtual Kor::Ptr<ClassMapMatchSm> createMatchSm(ClassMapMatchOption option);
  // Called only for configured kinds. After a null result it is called again only when the kind has
  // a different action. The base class returns null.
  virtual Kor::Ptr<ActionSm> createActionSm(ActionType /*actionType*/) { return nullptr; }
  // Called only if the global data exist.
  virtual Kor::Ptr<ClassMapSmCommonData> createCommonData();
  virtual Kor::Ptr<ClassMapStatus> createClassMapStatus();
  // Called when initialized() becomes true: at the end of the first activation.
  virtual void handleInitialized() {}
  // Takes down all action machines, each after its own cleanup(). Actions configured during this
  // call get no machine.
  virtual void cleanup();

  // ...Is(nullptr) removes the object, as does ...Del().

  virtual void classMapConfigDel() { classMapConfigIs(nullptr); }
  virtual void classMapConfigIs(Kor::Ptr<ClassMapConfig const> const& config);
  virtual void rawClassMapSubConfigDel() { rawClassMapSubConfigIs(nullptr); }
  virtual void rawClassMapSubConfigIs(Kor::Ptr<ClassMapSubConfig const> const& subConfig);
  virtual void classActionDel() { classActionIs(nullptr); }
  virtual void classActionIs(Kor::Ptr<ClassAction const> const& classAction);
  virtual void classMapIs(Kor::Ptr<ClassMapSubConfig const> const& classMap);
  virtual void classCommonDataDel() { classCommonDataIs(nullptr); }
  virtual void classCommonDataIs(Kor::Ptr<ClassMapSmCommonData> const& commonData);
  virtual void classMapStatusIs(Kor::Ptr<ClassMapStatus> const& status);

  KOR_VIRTUAL_VALUE_COLLECTION(ClassMapSm, classMapMatchSm, ClassMapMatchSm, ClassMapMatchOption,
                               Kor::Ptr<PolicyMap::ClassMapMatchSm>)
  KOR_VIRTUAL_VALUE_COLLECTION(ClassMapSm, actionSm, ActionSm, ActionType,
                               Kor::Ptr<PolicyMap::ActionSm>)

  virtual void actionsActiveIs(bool active);
  virtual void initializingIs(bool initializing) { initializing_ = initializing; }
  virtual void initializedIs(bool initialized);
  virtual void korDoZombieReactors(bool zombie);

  [[nodiscard]] Kor::Ptr<PolicyMapGlobalData> const& globalCommonData() const {
    return globalCommonData_;
  }
  [[nodiscard]] Kor::Ptr<PolicyMapSmCommonData> const& policyCommonData() const {
    return policyCommonData_;
  }
  // The observed objects; null if absent.
  [[nodiscard]] Kor::Ptr<ClassMapConfig const> const& classMapConfig() const {
    return classMapConfig_.object();
  }
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig const> const& rawClassMapSubConfig() const {
    return rawClassMapSubConfig_.object();
  }
  [[nodiscard]] Kor::Ptr<ClassAction const> const& classAction() const {
    return classAction_.object();
  }
  [[nodiscard]] Kor::Ptr<ClassMapSmCommonData> const& classCommonData() const {
    return classCommonData_.object();
  }
  // The matches in force: those of the configured class-map, otherwise the raw matches.
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig const> const& classMap() const {
    return classMap_.object();
  }
  [[nodiscard]] Kor::Ptr<ClassMapStatus> const& classMapStatus() const { return classMapStatus_; }
  [[nodiscard]] bool actionsActive() const { return actionsActive_; }
  [[nodiscard]] bool initializing() const { return initializing_; }
  [[nodiscard]] bool initialized() const { return initialized_; }
  // The name of the configured class-map, otherwise of the raw matches, otherwise empty.
  [[nodiscard]] Kor::Name name() const;

  // The class's rules as currently configured; never null. Compiles them if they are stale, which
  // may write the status.
  [[nodiscard]] Kor::Ptr<ClassRules const> rules(ClassMapMatchOption option);
  // Why the class must not be programmed, over all options; empty if it may be. Compiles stale
  // rules, which may write the status.
  [[nodiscard]] Kor::String ruleError();
  // The objects that the rules refer to and that did not exist when they were last compiled, e.g.
  // "ip access-list a".
  [[nodiscard]] std::vector<std::string> const& missing() const { return compiledRules_.missing(); }
  // Publishes whether rules of the class are programmed, and the failure of the last pass.
  void programStateIs(bool programmed, Kor::String const& error);
  // `owner` must outlive this machine or be reset before. Null: no owner.
  void ownerIs(Owner* owner) { owner_ = owner; }
  // The class's name in its policy. Raw matches may have a different name or serve several classes.
  [[nodiscard]] Kor::Name const& className() const { return className_; }
  void classNameIs(Kor::Name const& className) { className_ = className; }

 protected:
  // Any pointer may be null.
  ClassMapSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData,
             Kor::Ptr<PolicyMapSmCommonData> policyCommonData,
             Kor::Ptr<ClassMapConfig const> const& classMapConfig,
             Kor::Ptr<ClassMapSubConfig const> const& rawClassMapSubConfig,
             Kor::Ptr<ClassAction const> const& classAction);

  void newClassMapConfig(Kor::Ptr<ClassMapConfig const> const& config) {
    classMapConfig_.objectIs(config);
  }
  void newRawClassMapSubConfig(Kor::Ptr<ClassMapSubConfig const> const& subConfig) {
    rawClassMapSubConfig_.objectIs(subConfig);
  }
  void newClassAction(Kor::Ptr<ClassAction const> const& classAction) {
    classAction_.objectIs(classAction);
  }

 private:
  class CommonDataWatch;
  class ActingClass;

  void dependencyChanged(DependencyKind kind);
  void configChanged(Kor::AttributeId id);
  void contentChanged(Kor::AttributeId id);
  void classActionChanged(Kor::AttributeId id);
  void initialize();
  [[nodiscard]] bool reacting() const { return hasNotificationActive() && !korMarkedForDeletion(); }
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig const> configuredClassMap() const;
  void compileIfStale();
  void distributeRules();
  void publishError();

  Kor::Ptr<PolicyMapGlobalData> globalCommonData_;
  Kor::Ptr<PolicyMapSmCommonData> policyCommonData_;
  Kor::Reactor<ClassMapConfig const, Kor::LogWatch<ClassMapSm>> classMapConfig_;
  Kor::Reactor<ClassMapSubConfig const, Kor::LogWatch<ClassMapSm>> rawClassMapSubConfig_;
  Kor::Reactor<ClassAction const, Kor::LogWatch<ClassMapSm>> classAction_;
  Kor::Reactor<ClassMapSubConfig const, Kor::LogWatch<ClassMapSm>> classMap_;
  Kor::Reactor<ClassMapSmCommonData, CommonDataWatch> classCommonData_;
  Kor::Ptr<ClassMapStatus> classMapStatus_;
  bool actionsActive_ = false;
  bool initializing_ = false;
  bool initialized_ = false;
  CompiledRules compiledRules_;
  Kor::String programError_;  // of the last pass
  std::unique_ptr<ActingClass> actingClass_;
  ClassActions actions_;
  bool cleaningUp_ = false;
  Owner* owner_ = nullptr;
  Kor::Name className_;
};

}  // namespace PolicyMap
