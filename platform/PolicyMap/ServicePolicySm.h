// SPDX-License-Identifier: Apache-2.0
#pragma once

// ServicePolicySm: the root machine. It observes configuration and interface status, runs one
// policy-map machine per attached policy-map and direction, and provides them with the helper.
//
// Changes are only recorded; policies are programmed from the event loop that is current when the
// machine is created. Two operations of the helper are called at once: hwInit(), when an active
// machine is given a helper for the first time, and deletePolicy(), for policies on a helper that
// is replaced or removed. Destroying the machine calls no operation.
//
// Its parts: AttachedPolicies (which policies have a machine), PortChannels (members),
// IntfEligibility (which interfaces may carry policies), ServicePolicyWatches (what it observes),
// Waits.

#include "Acl/AclDiff.h"
#include "Acl/Config.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "Kor/EventLoop.h"
#include "Lag/Config.h"
#include "PolicyMap/AttachedPolicies.h"
#include "PolicyMap/IntfEligibility.h"
#include "PolicyMap/PerOption.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapSm.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMap/PortChannels.h"
#include "PolicyMap/ServicePolicyWatches.h"
#include "PolicyMap/Waits.h"
#include "PolicyMapExport.h"
#include "Routing/RoutingInfo.h"
#include "Routing6/RoutingInfo.h"

#include <memory>
#include <utility>
#include <vector>

namespace PolicyMap {

class POLICYMAP_API ServicePolicySm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<ServicePolicySm>;
  using PtrConst = Kor::Ptr<ServicePolicySm const>;

  ~ServicePolicySm() override;

  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // True if the interface exists; the base class returns true. Called for each interface in each
  // pass.
  [[nodiscard]] virtual bool intfExists(Vorel::IntfId /*intf*/) const { return true; }
  // True if the interface is of a kind (layer 2, layer 3, management) that may carry policies.
  virtual bool allowedIntf(Vorel::IntfId intf);
  // True if an allowed interface may carry rules of an option.
  virtual bool allowedIntfForType(Vorel::IntfId intf, ClassMapMatchOption matchOption);

  // Creates the machine of one policy; null if it is not to be programmed. `status` may be null.
  virtual Kor::Ptr<PolicyMapSm> createPolicyMapSm(
      PolicyMapSmKey const& key, Kor::Ptr<PolicyMapConfig const> const& policyMapConfig,
      Kor::Ptr<PolicyMapStatus> const& status) = 0;
  virtual Kor::Ptr<PolicyMapGlobalData> createCommonData();
  // Called when a policy-map was attached, detached, created or removed. Creates its policy
  // machines or requests their removal.
  virtual void handlePolicyMap(Kor::Name policyMapName);
  // Called when a policy-map was created or removed. Calls handlePolicyMap().
  virtual void handlePolicyMapConfig(Kor::Name policyMapName) {
    handlePolicyMap(std::move(policyMapName));
  }
  // Re-evaluates an interface at once and marks the policies that depend on it. With `force` they
  // are programmed again even if nothing differs. May be called at any time; does nothing while
  // notifications are off.
  virtual void handleIntf(Vorel::IntfId intf, bool force);
  // Requests the removal of all policies. None is created until notifications are activated again.
  virtual void cleanup();
  // Called when initialized() becomes true: at the end of the first activation.
  virtual void handleInitialized() {}

  // False: the option is not programmed.
  virtual void allowIpAclIs(bool allow) { allowOption(ClassMapMatchOption::ipv4, allow); }
  virtual void allowIp6AclIs(bool allow) { allowOption(ClassMapMatchOption::ipv6, allow); }
  virtual void allowMacAclIs(bool allow) { allowOption(ClassMapMatchOption::mac, allow); }
  virtual void commonDataDel() { commonDataIs(nullptr); }
  virtual void commonDataIs(Kor::Ptr<PolicyMapGlobalData> const& commonData) {
    commonData_ = commonData;
  }
  KOR_VIRTUAL_VALUE_COLLECTION(ServicePolicySm, policyMapSm, PolicyMapSm, PolicyMapSmKey,
                               Kor::Ptr<PolicyMap::PolicyMapSm>)

  // In seconds. An invalid value throws Kor::RangeException and changes nothing; see Waits.
  virtual void retryMinIs(double seconds) { waits_.retryMinIs(seconds); }
  virtual void retryMaxIs(double seconds) { waits_.retryMaxIs(seconds); }
  virtual void asyncTimeoutIs(double seconds) { waits_.asyncTimeoutIs(seconds); }
  virtual void initializedIs(bool initialized);
  virtual void korDoZombieReactors(bool zombie);

  // The observed objects. ...Del() is ...Is(nullptr). Without policy configuration, access lists or
  // helper, nothing is programmed.
  //
  // Replacing policy configuration, class-maps or access lists builds all policies again on new
  // common data.
  virtual void policyConfigDel() { policyConfigIs(nullptr); }
  virtual void policyConfigIs(Kor::Ptr<PolicyMapTypeConfig const> const& config) {
    rebuildWith(watches_.policyConfig, config);
  }
  virtual void classTypeConfigDel() { classTypeConfigIs(nullptr); }
  virtual void classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config) {
    rebuildWith(watches_.classTypeConfig, config);
  }
  virtual void statusRequestDirDel() { statusRequestDirIs(nullptr); }
  virtual void statusRequestDirIs(Kor::Ptr<PolicyMapStatusRequestDir const> const& requests) {
    watches_.statusRequestDir.objectIs(requests);
  }
  virtual void aclConfigDel() { aclConfigIs(nullptr); }
  virtual void aclConfigIs(Kor::Ptr<Acl::Config const> const& config) {
    rebuildWith(watches_.aclConfig, config);
  }
  // Replacing port-channels, addresses or routing re-evaluates the interfaces at once.
  virtual void lagConfigDel() { lagConfigIs(nullptr); }
  virtual void lagConfigIs(Kor::Ptr<Lag::Input::Config const> const& config) {
    watches_.lagConfig.objectIs(config);
    syncMembers();
  }
  virtual void ipStatusDel() { ipStatusIs(nullptr); }
  virtual void ipStatusIs(Kor::Ptr<Ip::Status const> const& status) {
    watches_.ipStatus.objectIs(status);
    allIntfsChanged();
  }
  virtual void ip6StatusDel() { ip6StatusIs(nullptr); }
  virtual void ip6StatusIs(Kor::Ptr<Ip6::Status const> const& status) {
    watches_.ip6Status.objectIs(status);
    allIntfsChanged();
  }
  virtual void routingInfoDel() { routingInfoIs(nullptr); }
  virtual void routingInfoIs(Kor::Ptr<Routing::RoutingInfo const> const& info) {
    watches_.routingInfo.objectIs(info);
    allIntfsChanged();
  }
  virtual void routing6InfoDel() { routing6InfoIs(nullptr); }
  virtual void routing6InfoIs(Kor::Ptr<Routing6::RoutingInfo const> const& info) {
    watches_.routing6Info.objectIs(info);
    allIntfsChanged();
  }
  // Replacing the helper deletes at once what was created on the previous one. The new one is
  // programmed from the event loop.
  virtual void aclHelperDel() { aclHelperIs(nullptr); }
  virtual void aclHelperIs(Kor::Ptr<PolicyMapAclHelper> const& helper);

  [[nodiscard]] Kor::Ptr<PolicyMapTypeConfig const> const& policyConfig() const {
    return watches_.policyConfig.object();
  }
  [[nodiscard]] Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig() const {
    return watches_.classTypeConfig.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapStatusRequestDir const> const& statusRequestDir() const {
    return watches_.statusRequestDir.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapTypeStatus> const& status() const { return status_; }
  [[nodiscard]] Kor::Ptr<Acl::Config const> const& aclConfig() const {
    return watches_.aclConfig.object();
  }
  [[nodiscard]] Kor::Ptr<Lag::Input::Config const> const& lagConfig() const {
    return watches_.lagConfig.object();
  }
  [[nodiscard]] Kor::Ptr<Ip::Status const> const& ipStatus() const {
    return watches_.ipStatus.object();
  }
  [[nodiscard]] Kor::Ptr<Ip6::Status const> const& ip6Status() const {
    return watches_.ip6Status.object();
  }
  [[nodiscard]] Kor::Ptr<Routing::RoutingInfo const> const& routingInfo() const {
    return watches_.routingInfo.object();
  }
  [[nodiscard]] Kor::Ptr<Routing6::RoutingInfo const> const& routing6Info() const {
    return watches_.routing6Info.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapAclHelper> const& aclHelper() const {
    return watches_.aclHelper.object();
  }
  [[nodiscard]] Kor::Ptr<Acl::AclDiff> const& aclDiff() const { return aclDiff_; }
  [[nodiscard]] bool allowL2Intf() const { return allowedKinds_.layer2; }
  [[nodiscard]] bool allowL3Intf() const { return allowedKinds_.layer3; }
  [[nodiscard]] bool allowMgmtIntf() const { return allowedKinds_.management; }
  [[nodiscard]] bool allowIpAcl() const { return allowsOption(ClassMapMatchOption::ipv4); }
  [[nodiscard]] bool allowIp6Acl() const { return allowsOption(ClassMapMatchOption::ipv6); }
  [[nodiscard]] bool allowMacAcl() const { return allowsOption(ClassMapMatchOption::mac); }
  [[nodiscard]] bool allowsOption(ClassMapMatchOption option) const {
    return allowedOptions_[option];
  }
  [[nodiscard]] Kor::Ptr<PolicyMapGlobalData> const& commonData() const { return commonData_; }
  [[nodiscard]] double retryMin() const { return waits_.retryMin(); }
  [[nodiscard]] double retryMax() const { return waits_.retryMax(); }
  [[nodiscard]] double asyncTimeout() const { return waits_.asyncTimeout(); }
  [[nodiscard]] bool initialized() const { return initialized_; }

  // The kinds of interfaces that may carry policies, and what the current statuses say.
  [[nodiscard]] AllowedKinds const& allowedKinds() const { return allowedKinds_; }
  [[nodiscard]] IntfEligibility eligibility() const;
  // The hardware interfaces of `intf`: itself, or the existing members of a port-channel if the
  // helper expands port-channels.
  [[nodiscard]] std::vector<Vorel::IntfId> memberIntfs(Vorel::IntfId intf) const;
  // The interfaces where a policy is to be applied for an option; ascending, unique.
  [[nodiscard]] std::vector<Vorel::IntfId> effectiveIntfs(PolicyMapSmKey const& key,
                                                          ClassMapMatchOption matchOption);

 protected:
  // Calls no virtual function. Any pointer may be null; without `status` nothing is published.
  ServicePolicySm(Kor::Ptr<PolicyMapTypeConfig const> const& policyConfig,
                  Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig,
                  Kor::Ptr<PolicyMapStatusRequestDir const> const& statusRequestDir,
                  Kor::Ptr<PolicyMapTypeStatus> const& status,
                  Kor::Ptr<Acl::Config const> const& aclConfig,
                  Kor::Ptr<Lag::Input::Config const> const& lagConfig,
                  Kor::Ptr<Ip::Status const> const& ipStatus,
                  Kor::Ptr<Ip6::Status const> const& ip6Status,
                  Kor::Ptr<Routing::RoutingInfo const> const& routingInfo,
                  Kor::Ptr<Routing6::RoutingInfo const> const& routing6Info,
                  Kor::Ptr<PolicyMapAclHelper> const& aclHelper,
                  Kor::Ptr<Acl::AclDiff> const& aclDiff, bool allowL2Intf, bool allowL3Intf,
                  bool allowMgmtIntf);

 private:
  class Parts;

  [[nodiscard]] bool reacting() const { return hasNotificationActive() && !korMarkedForDeletion(); }
  void initialize();
  void initializeHelper();
  void rebuild();
  // Observes another object and builds all policies again.
  template <class Watch, class Object>
  void rebuildWith(Watch& watch, Object const& object) {
    if (object != watch.object()) {
      watch.objectIs(object);
      rebuild();
    }
  }
  void renewCommonData();
  void dependencyChanged(DependencyKind kind, Kor::Name const& name);
  // Marks all rules of all policies to be checked.
  void rulesChanged();
  void allowOption(ClassMapMatchOption option, bool allow);

  void syncMembers();
  void syncMember(Vorel::IntfId member);
  void allIntfsChanged();

  Kor::EventLoop& eventLoop_ = Kor::EventLoop::current();
  std::unique_ptr<Parts> parts_;
  ServicePolicyWatches watches_;
  Kor::Ptr<PolicyMapTypeStatus> status_;
  Kor::Ptr<Acl::AclDiff> aclDiff_;
  AllowedKinds allowedKinds_;
  PerOption<bool> allowedOptions_{true};
  Kor::Ptr<PolicyMapGlobalData> commonData_;
  Waits waits_;
  bool initialized_ = false;
  bool rebuildDue_ = false;      // set while inactive: rebuild at the next activation
  bool changingHelper_ = false;  // policies are leaving the previous helper
  AttachedPolicies policies_;
  PortChannels portChannels_;
};

}  // namespace PolicyMap
