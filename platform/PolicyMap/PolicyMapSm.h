// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kor/Reactor.h"
#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapSmCommonData.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/PolicyReconciler.h"
#include "PolicyMap/Settling.h"
#include "PolicyMapExport.h"

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace PolicyMap {

// The machine of one policy-map in one direction: it runs one class machine per class, knows which
// interfaces count, and sees to it that the helper has what is configured.
class POLICYMAP_API PolicyMapSm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<PolicyMapSm>;
  using PtrConst = Kor::Ptr<PolicyMapSm const>;

  ~PolicyMapSm() override;

  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Makes the machine of one class. Any pointer may be null, but not both class-map and raw
  // matches.
  virtual Kor::Ptr<ClassMapSm> createClassMapSm(Kor::Ptr<ClassMapConfig const> const& map,
                                                Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                                                Kor::Ptr<ClassAction const> const& action) = 0;
  virtual Kor::Ptr<PolicyMapSmCommonData> createCommonData();
  // The interface was attached, detached, or counts differently now.
  virtual void handleActiveIntf(Vorel::IntfId intf);
  // Lets all class machines go.
  virtual void cleanup();
  virtual void handleInitialized();

  virtual void policyMapIs(Kor::Ptr<PolicyMapSubConfig const> const& policyMap);
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, classMapSm, ClassMapSm, Kor::Name,
                               Kor::Ptr<PolicyMap::ClassMapSm>)
  // Attached interfaces, and whether each counts.
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, activeIntf, ActiveIntf, Vorel::IntfId, bool,
                               KOR_ON_CHANGE(handleActiveIntf(key)))

  virtual void policyCommonDataDel();
  virtual void policyCommonDataIs(Kor::Ptr<PolicyMapSmCommonData> const& commonData);
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, prioClass, PrioClass, std::uint32_t, Kor::Name)
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, classPrio, ClassPrio, Kor::Name, std::uint32_t)
  // When each option was last programmed, in seconds of the event loop's clock.
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, timeProgrammed, TimeProgrammed, ClassMapMatchOption,
                               double)

  virtual void actionsActiveIs(bool active);
  virtual void initializedIs(bool initialized);
  virtual void korDoZombieReactors(bool zombie);
  virtual void policyMapConfigDel();
  virtual void policyMapConfigIs(Kor::Ptr<PolicyMapConfig const> const& config);
  virtual void classTypeConfigDel();
  virtual void classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config);

  [[nodiscard]] Kor::Ptr<PolicyMapGlobalData> const& globalCommonData() const {
    return globalCommonData_;
  }
  [[nodiscard]] PolicyMapSmKey const& key() const { return key_; }
  [[nodiscard]] Kor::Ptr<PolicyMapConfig const> const& policyMapConfig() const {
    return policyMapConfig_.object();
  }
  [[nodiscard]] Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig() const {
    return classTypeConfig_.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapStatus> const& status() const { return status_; }
  // The sub-configuration in force, null when there is none.
  [[nodiscard]] Kor::Ptr<PolicyMapSubConfig const> const& policyMap() const {
    return policyMap_.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapSmCommonData> const& policyCommonData() const {
    return policyCommonData_;
  }
  [[nodiscard]] bool actionsActive() const { return actionsActive_; }
  [[nodiscard]] bool initialized() const { return initialized_; }

  // The class machines in the order in which their rules are programmed.
  [[nodiscard]] std::vector<Kor::Ptr<ClassMapSm>> classesInOrder() const;
  // The same for those of `names` that are there.
  [[nodiscard]] std::vector<Kor::Ptr<ClassMapSm>> classesInOrder(
      std::set<Kor::Name> const& names) const;

  // Takes up whatever changed while notifications were off.
  void catchUp();
  // Gives the machine what it needs to program; null: it belongs to no service machine, and
  // programs nothing.
  void serviceIs(PolicyReconciler::Service* service);
  // Brings the helper to what is configured.
  [[nodiscard]] PolicyReconciler& reconciler() { return *reconciler_; }

 protected:
  // Any pointer may be null.
  PolicyMapSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData, PolicyMapSmKey key,
              Kor::Ptr<PolicyMapConfig const> const& policyMapConfig,
              Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig,
              Kor::Ptr<PolicyMapStatus> status);

 private:
  class SubConfigWatch;
  class ClassTypeWatch;
  class ClassOwner;
  class ReconciledPolicy;

  void configChanged(Kor::AttributeId id);
  void initialize();
  [[nodiscard]] bool reacting() const { return hasNotificationActive() && !korMarkedForDeletion(); }
  // Brings one class machine, or all, to what is configured.
  void syncClass(Kor::Name const& name);
  void syncClasses();
  void bringClass(Kor::Name const& name);
  [[nodiscard]] bool configured(Kor::Name const& name) const;
  void watchClassMap(Kor::Name const& name);
  void listenForClassMaps();
  void makeClassMachine(Kor::Name const& name, Kor::Ptr<ClassMapConfig const> const& map,
                        Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                        Kor::Ptr<ClassAction const> const& action);
  void dropClassMachine(Kor::Name const& name);
  // Drops the machines of classes that have left the configuration and not come back.
  void dropLeftClasses();
  void classLeft(Kor::Name const& name);
  void publishMissing(Kor::Name const& name);
  void prioIs(Kor::Name const& name);

  Kor::Ptr<PolicyMapGlobalData> globalCommonData_;
  PolicyMapSmKey key_;
  Kor::Reactor<PolicyMapConfig const, Kor::LogWatch<PolicyMapSm>> policyMapConfig_;
  // Quiet where the dependency index tells of class-maps.
  Kor::Reactor<ClassMapTypeConfig const, ClassTypeWatch> classTypeConfig_;
  Kor::Ptr<PolicyMapStatus> status_;
  Kor::Reactor<PolicyMapSubConfig const, SubConfigWatch> policyMap_;
  Kor::Ptr<PolicyMapSmCommonData> policyCommonData_;
  bool actionsActive_ = false;
  bool initialized_ = false;
  std::set<Kor::Name> leftClasses_;  // out of the configuration, their machines still here
  // On the class-map of each configured class, whether or not it exists.
  std::map<Kor::Name, DependencyIndex::Dependent> classWatches_;
  Settling<Kor::Name> settlingClasses_;
  bool cleaningUp_ = false;
  std::unique_ptr<ClassOwner> classOwner_;
  std::unique_ptr<ReconciledPolicy> reconciledPolicy_;
  std::unique_ptr<PolicyReconciler> reconciler_;
};

}  // namespace PolicyMap
