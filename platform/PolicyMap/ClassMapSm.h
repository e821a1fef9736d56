// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Reactor.h"
#include "PolicyMap/ActionSm.h"
#include "PolicyMap/ClassMapSmCommonData.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/Settling.h"
#include "PolicyMapExport.h"

#include <set>

namespace PolicyMap {

// The rules of one class for one match option.
class POLICYMAP_API ClassMapMatchSm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<ClassMapMatchSm>;
  using PtrConst = Kor::Ptr<ClassMapMatchSm const>;

  explicit ClassMapMatchSm(ClassMapMatchOption option) : option_(option) {}
  ~ClassMapMatchSm() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  [[nodiscard]] ClassMapMatchOption option() const { return option_; }
  // Null before the first compilation.
  [[nodiscard]] Kor::Ptr<ClassRules const> const& rules() const { return rules_; }
  // Takes rules over unless they make no difference; answers whether they were taken.
  bool rulesIs(Kor::Ptr<ClassRules const> const& rules, Acl::AclDiff const* aclDiff);

 private:
  ClassMapMatchOption option_;
  Kor::Ptr<ClassRules const> rules_;
};

// The machine of one class of one policy: it knows the class's rules and runs one machine per
// configured action. Once its notifications are on it is complete: class-map, common data, action
// machines, as far as global data and class action are there. Rules are compiled when somebody asks
// for them.
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

  // The configured action of a kind came, was replaced, or went.
  virtual void handleAction(ActionType actionType);
  virtual void handleAction();  // all kinds
  // What the class matches may have changed.
  virtual void handleMatch(ClassMapMatchOption option);
  virtual void handleMatch();  // all options

  virtual Kor::Ptr<ClassMapMatchSm> createMatchSm(ClassMapMatchOption option);
  // Called for a configured kind only; an empty answer is taken once, until the configuration
  // changes.
  virtual Kor::Ptr<ActionSm> createActionSm(ActionType actionType);
  virtual Kor::Ptr<ClassMapSmCommonData> createCommonData();
  virtual Kor::Ptr<ClassMapStatus> createClassMapStatus();
  virtual void handleInitialized();
  // Lets all action machines go, each after its own cleanup().
  virtual void cleanup();

  virtual void classMapConfigDel();
  virtual void classMapConfigIs(Kor::Ptr<ClassMapConfig const> const& config);
  virtual void rawClassMapSubConfigDel();
  virtual void rawClassMapSubConfigIs(Kor::Ptr<ClassMapSubConfig const> const& subConfig);
  virtual void classActionDel();
  virtual void classActionIs(Kor::Ptr<ClassAction const> const& classAction);
  virtual void classMapIs(Kor::Ptr<ClassMapSubConfig const> const& classMap);
  virtual void classCommonDataDel();
  virtual void classCommonDataIs(Kor::Ptr<ClassMapSmCommonData> const& commonData);
  virtual void classMapStatusIs(Kor::Ptr<ClassMapStatus> const& status);

  KOR_VIRTUAL_VALUE_COLLECTION(ClassMapSm, classMapMatchSm, ClassMapMatchSm, ClassMapMatchOption,
                               Kor::Ptr<PolicyMap::ClassMapMatchSm>)
  KOR_VIRTUAL_VALUE_COLLECTION(ClassMapSm, actionSm, ActionSm, ActionType,
                               Kor::Ptr<PolicyMap::ActionSm>)

  virtual void actionsActiveIs(bool active);
  virtual void initializingIs(bool initializing);
  virtual void initializedIs(bool initialized);
  virtual void korDoZombieReactors(bool zombie);

  [[nodiscard]] Kor::Ptr<PolicyMapGlobalData> const& globalCommonData() const {
    return globalCommonData_;
  }
  [[nodiscard]] Kor::Ptr<PolicyMapSmCommonData> const& policyCommonData() const {
    return policyCommonData_;
  }
  // What the reactors watch; null when empty.
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
  // Of the configured class-map, else of the raw sub-configuration, else empty.
  [[nodiscard]] Kor::Name name() const;

  // The class's rules as configured now; never null.
  [[nodiscard]] Kor::Ptr<ClassRules const> rules(ClassMapMatchOption option);
  // Why the class may not be programmed; empty: it may.
  [[nodiscard]] Kor::String ruleError();
  // How the class stands in the helper, for its status.
  void programStateIs(bool programmed, Kor::String const& error);
  // `owner` must outlive this machine, or be taken away before; null: none.
  void ownerIs(Owner* owner) { owner_ = owner; }
  // What the policy calls the class. Raw matches may be called otherwise, or serve several classes.
  [[nodiscard]] Kor::Name const& className() const { return className_; }
  void classNameIs(Kor::Name const& className) { className_ = className; }

 protected:
  // Any pointer may be null.
  ClassMapSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData,
             Kor::Ptr<PolicyMapSmCommonData> policyCommonData,
             Kor::Ptr<ClassMapConfig const> const& classMapConfig,
             Kor::Ptr<ClassMapSubConfig const> const& rawClassMapSubConfig,
             Kor::Ptr<ClassAction const> const& classAction);

  void newClassMapConfig(Kor::Ptr<ClassMapConfig const> const& config);
  void newRawClassMapSubConfig(Kor::Ptr<ClassMapSubConfig const> const& subConfig);
  void newClassAction(Kor::Ptr<ClassAction const> const& classAction);

 private:
  class CommonDataWatch;

  void dependencyChanged(DependencyKind kind);
  void configChanged(Kor::AttributeId id);
  void contentChanged(Kor::AttributeId id);
  void classActionChanged(Kor::AttributeId id);
  void updateAclActionsChanged();
  void initialize();
  [[nodiscard]] bool reacting() const { return hasNotificationActive() && !korMarkedForDeletion(); }
  [[nodiscard]] Kor::Ptr<ClassMapSubConfig const> configuredClassMap() const;
  [[nodiscard]] Kor::Ptr<Action> configuredAction(ActionType actionType) const;
  void syncAction(ActionType actionType);
  void takeDown(ActionType actionType);
  void compile();
  void publishError();
  void commonDataActionIs(ActionType actionType, Kor::Ptr<Action> const& action);

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
  bool rulesStale_ = true;
  Kor::String ruleError_;
  Kor::String missing_;                                   // what the class refers to and is absent
  Kor::String programError_;                              // of the last pass
  std::map<ActionType, Kor::Ptr<Action const>> refused_;  // actions for which no machine was given
  DependencyIndex::Dependent dependencies_;  // leaves the index before the global data go
  Owner* owner_ = nullptr;
  Kor::Name className_;
  Settling<ActionType> settlingActions_;
  bool cleaningUp_ = false;
};

}  // namespace PolicyMap
