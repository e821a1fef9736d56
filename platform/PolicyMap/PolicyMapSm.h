// SPDX-License-Identifier: Apache-2.0
#pragma once

// PolicyMapSm: the machine of one policy-map in one direction. It runs one class machine per class
// (PolicyClasses), records the interfaces to which the policy is attached, and reconciles the
// helper with the configuration (PolicyReconciler).
//
// When hasNotificationActiveIs(true) returns, the machine is complete: it has its common data and
// class machines. It programs the helper only below a service-policy machine (serviceIs).

#include "Kor/Reactor.h"
#include "PolicyMap/ClassMapSm.h"
#include "PolicyMap/ClassMapWatches.h"
#include "PolicyMap/PolicyClasses.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapSmCommonData.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/PolicyReconciler.h"
#include "PolicyMapExport.h"

#include <memory>
#include <set>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API PolicyMapSm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<PolicyMapSm>;
  using PtrConst = Kor::Ptr<PolicyMapSm const>;

  ~PolicyMapSm() override;

  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Creates the machine of one class; null if it is to have none. Any pointer may be null, but not
  // both `map` and `rawMap`.
  virtual Kor::Ptr<ClassMapSm> createClassMapSm(Kor::Ptr<ClassMapConfig const> const& map,
                                                Kor::Ptr<ClassMapSubConfig const> const& rawMap,
                                                Kor::Ptr<ClassAction const> const& action) = 0;
  virtual Kor::Ptr<PolicyMapSmCommonData> createCommonData();
  // Called when the interface was attached or detached, or became eligible or ineligible.
  virtual void handleActiveIntf(Vorel::IntfId intf);
  // Takes down all class machines, each after its own cleanup(). Classes configured during this
  // call get no machine.
  virtual void cleanup();
  // Called when initialized() becomes true: at the end of the first activation.
  virtual void handleInitialized();

  virtual void policyMapIs(Kor::Ptr<PolicyMapSubConfig const> const& policyMap);
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, classMapSm, ClassMapSm, Kor::Name,
                               Kor::Ptr<PolicyMap::ClassMapSm>)
  // Attached interfaces; true if the policy may be programmed there.
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, activeIntf, ActiveIntf, Vorel::IntfId, bool,
                               KOR_ON_CHANGE(handleActiveIntf(key)))

  virtual void policyCommonDataDel();
  virtual void policyCommonDataIs(Kor::Ptr<PolicyMapSmCommonData> const& commonData);
  // Copies of the configured priorities.
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, prioClass, PrioClass, std::uint32_t, Kor::Name)
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, classPrio, ClassPrio, Kor::Name, std::uint32_t)
  // The time at which each option was last programmed, in seconds of the event loop's clock.
  KOR_VIRTUAL_VALUE_COLLECTION(PolicyMapSm, timeProgrammed, TimeProgrammed, ClassMapMatchOption,
                               double)

  virtual void actionsActiveIs(bool active);
  virtual void initializedIs(bool initialized);
  virtual void korDoZombieReactors(bool zombie);
  // ...Is(nullptr) removes the object, as does ...Del().
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
    return classMaps_.classTypeConfig();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapStatus> const& status() const { return status_; }
  // The sub-configuration in force, or null.
  [[nodiscard]] Kor::Ptr<PolicyMapSubConfig const> const& policyMap() const {
    return policyMap_.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapSmCommonData> const& policyCommonData() const {
    return policyCommonData_;
  }
  [[nodiscard]] bool actionsActive() const { return actionsActive_; }
  [[nodiscard]] bool initialized() const { return initialized_; }

  // The class machines in programming order.
  [[nodiscard]] std::vector<Kor::Ptr<ClassMapSm>> classesInOrder() const;
  // The same, restricted to those of `names` that are configured and have a machine.
  [[nodiscard]] std::vector<Kor::Ptr<ClassMapSm>> classesInOrder(
      std::set<Kor::Name> const& names) const;

  // Processes changes made while notifications were off, here and in the class machines.
  void catchUp();
  // The service-policy machine, which provides helper and interfaces. Null: none, and nothing is
  // programmed. It must outlive this machine or be reset before.
  void serviceIs(PolicyReconciler::Service* service);
  [[nodiscard]] PolicyReconciler& reconciler() { return *reconciler_; }

 protected:
  // Any pointer may be null.
  PolicyMapSm(Kor::Ptr<PolicyMapGlobalData> globalCommonData, PolicyMapSmKey key,
              Kor::Ptr<PolicyMapConfig const> const& policyMapConfig,
              Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig,
              Kor::Ptr<PolicyMapStatus> status);

 private:
  class SubConfigWatch;
  class ClassesPolicy;
  class ReconciledPolicy;

  void configChanged(Kor::AttributeId id);
  void initialize();
  [[nodiscard]] bool reacting() const { return hasNotificationActive() && !korMarkedForDeletion(); }
  // Reconcile one class, or all, with the configuration.
  void syncClass(Kor::Name const& name);
  void syncClasses();
  void mirrorPrio(Kor::Name const& name);
  // Takes down the machines of classes that left the configuration and have not returned.
  void dropLeftClasses();
  [[nodiscard]] std::vector<Kor::Ptr<PolicyMap::ClassMapSm>> machinesOf(
      std::vector<Kor::Name> const& names) const;

  Kor::Ptr<PolicyMapGlobalData> globalCommonData_;
  PolicyMapSmKey key_;
  Kor::Reactor<PolicyMapConfig const, Kor::LogWatch<PolicyMapSm>> policyMapConfig_;
  ClassMapWatches classMaps_;
  Kor::Ptr<PolicyMapStatus> status_;
  Kor::Reactor<PolicyMapSubConfig const, SubConfigWatch> policyMap_;
  Kor::Ptr<PolicyMapSmCommonData> policyCommonData_;
  bool actionsActive_ = false;
  bool initialized_ = false;
  std::unique_ptr<ClassesPolicy> classesPolicy_;
  PolicyClasses classes_;
  std::unique_ptr<ReconciledPolicy> reconciledPolicy_;
  std::unique_ptr<PolicyReconciler> reconciler_;
};

}  // namespace PolicyMap
