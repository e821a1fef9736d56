// SPDX-License-Identifier: Apache-2.0
#pragma once

// ClassMapSm: the machine of one class of one policy. It runs one machine per configured action
// (ClassActions), and compiles the class's rules when a caller asks for them (CompiledRules).
//
// It is complete when hasNotificationActiveIs(true) returns: it has its class-map, common data,
// status and action machines, as far as global data and class action exist.

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

  // The policy machine that is told of changes.
  class Owner {
   public:
    virtual ~Owner() = default;
    virtual void classRulesChanged(ClassMapMatchOption option) = 0;
    virtual void classActionsChanged(Kor::Name const& className) = 0;
  };

  ~ClassMapSm() override;

  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // The configured action of a kind was added, replaced or removed: its machine follows.
  virtual void handleAction(ActionType actionType);
  virtual void handleAction();  // all kinds
  // What the class matches may have changed: its rules are compiled again when a caller asks for
  // them, and the owner is told.
  virtual void handleMatch(ClassMapMatchOption option);
  virtual void handleMatch();  // all options

  // What the machine is made of. Each may return null: then it does without.
  virtual Kor::Ptr<ClassMapMatchSm> createMatchSm(ClassMapMatchOption option);
  // Called for a configured kind only. After null it is called again when the kind has another
  // action. The base class returns null.
  virtual Kor::Ptr<ActionSm> createActionSm(ActionType /*actionType*/) { return nullptr; }
  // The global data exist.
  virtual Kor::Ptr<ClassMapSmCommonData> createCommonData();
  virtual Kor::Ptr<ClassMapStatus> createClassMapStatus();
  // The machine is complete: `initialized` became true.
  virtual void handleInitialized() {}
  // Takes all action machines down, each after its own cleanup(). Actions that are configured
  // meanwhile get none.
  virtual void cleanup();

  // Null takes the object away; ...Del() does the same.

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
  // What the machine watches; null when there is none.
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
  // The matches in force: those of the configured class-map, else the raw ones.
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig const> const& classMap() const {
    return classMap_.object();
  }
  [[nodiscard]] Kor::Ptr<ClassMapStatus> const& classMapStatus() const { return classMapStatus_; }
  [[nodiscard]] bool actionsActive() const { return actionsActive_; }
  [[nodiscard]] bool initializing() const { return initializing_; }
  [[nodiscard]] bool initialized() const { return initialized_; }
  // That of the configured class-map, else of the raw matches, else empty.
  [[nodiscard]] Kor::Name name() const;

  // The class's rules as configured now; never null. May write the status.
  [[nodiscard]] Kor::Ptr<ClassRules const> rules(ClassMapMatchOption option);
  // Why the class may not be programmed, for whichever option; empty: it may. May write the status.
  [[nodiscard]] Kor::String ruleError();
  // Whether rules of the class are programmed, and what failed in the last pass; for its status.
  void programStateIs(bool programmed, Kor::String const& error);
  // `owner` must outlive this machine, or be taken away before; null: none.
  void ownerIs(Owner* owner) { owner_ = owner; }
  // The name of the class in its policy. Raw matches may have another, or serve several classes.
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
