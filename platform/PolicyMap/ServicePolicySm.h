// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Acl/AclDiff.h"
#include "Acl/Config.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "Kor/Reactor.h"
#include "Lag/Config.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapGlobalData.h"
#include "PolicyMap/PolicyMapSm.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "PolicyMapExport.h"
#include "Routing/RoutingInfo.h"
#include "Routing6/RoutingInfo.h"

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace PolicyMap {

// The root machine: it watches configuration and interface status, runs one policy-map machine per
// attached policy-map and direction, and gives them the helper. It only notes what changes;
// policies are programmed when the event loop turns. Two operations are called at once: hwInit() of
// a helper that is new to an active machine, and, when the helper is replaced or taken away,
// deletePolicy() of what is created on the former one. Destroying the machine calls none.
class POLICYMAP_API ServicePolicySm : public Kor::PtrInterface {
 public:
  using Ptr = Kor::Ptr<ServicePolicySm>;
  using PtrConst = Kor::Ptr<ServicePolicySm const>;

  ~ServicePolicySm() override;

  void hasNotificationActiveIs(bool active) override;
  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // Whether an interface exists; here every one does. Asked per interface and pass.
  [[nodiscard]] virtual bool intfExists(Vorel::IntfId intf) const;
  // Whether interfaces of this kind may carry policies at all: layer 2, layer 3, management.
  virtual bool allowedIntf(Vorel::IntfId intf);
  // Whether an allowed interface may carry rules of an option.
  virtual bool allowedIntfForType(Vorel::IntfId intf, ClassMapMatchOption matchOption);

  virtual Kor::Ptr<PolicyMapSm> createPolicyMapSm(
      PolicyMapSmKey const& key, Kor::Ptr<PolicyMapConfig const> const& policyMapConfig,
      Kor::Ptr<PolicyMapStatus> const& status) = 0;
  virtual Kor::Ptr<PolicyMapGlobalData> createCommonData();
  // The attachments of a policy-map, or the policy-map itself, came or went.
  virtual void handlePolicyMap(Kor::Name policyMapName);
  virtual void handlePolicyMapConfig(Kor::Name policyMapName);
  // Re-evaluates an interface at once and marks what depends on it. `force` re-programs even
  // without a difference. Legal at any time; does nothing without active notifications.
  virtual void handleIntf(Vorel::IntfId intf, bool force);
  // Lets all policies go, for good: until notifications are switched on again none is made.
  virtual void cleanup();
  virtual void handleInitialized();

  // False: that option is not programmed.
  virtual void allowIpAclIs(bool allow);
  virtual void allowIp6AclIs(bool allow);
  virtual void allowMacAclIs(bool allow);
  virtual void commonDataDel();
  virtual void commonDataIs(Kor::Ptr<PolicyMapGlobalData> const& commonData);
  KOR_VIRTUAL_VALUE_COLLECTION(ServicePolicySm, policyMapSm, PolicyMapSm, PolicyMapSmKey,
                               Kor::Ptr<PolicyMap::PolicyMapSm>)

  // Seconds: the first and the longest wait before a failed policy is tried again, and how long an
  // asynchronous result may take. A RangeException refuses what is not above 0, and a retryMin
  // above retryMax.
  virtual void retryMinIs(double seconds);
  virtual void retryMaxIs(double seconds);
  virtual void asyncTimeoutIs(double seconds);
  virtual void initializedIs(bool initialized);
  virtual void korDoZombieReactors(bool zombie);

  virtual void policyConfigDel();
  virtual void policyConfigIs(Kor::Ptr<PolicyMapTypeConfig const> const& config);
  virtual void classTypeConfigDel();
  virtual void classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config);
  virtual void statusRequestDirDel();
  virtual void statusRequestDirIs(Kor::Ptr<PolicyMapStatusRequestDir const> const& requests);
  virtual void aclConfigDel();
  virtual void aclConfigIs(Kor::Ptr<Acl::Config const> const& config);
  virtual void lagConfigDel();
  virtual void lagConfigIs(Kor::Ptr<Lag::Input::Config const> const& config);
  virtual void ipStatusDel();
  virtual void ipStatusIs(Kor::Ptr<Ip::Status const> const& status);
  virtual void ip6StatusDel();
  virtual void ip6StatusIs(Kor::Ptr<Ip6::Status const> const& status);
  virtual void routingInfoDel();
  virtual void routingInfoIs(Kor::Ptr<Routing::RoutingInfo const> const& info);
  virtual void routing6InfoDel();
  virtual void routing6InfoIs(Kor::Ptr<Routing6::RoutingInfo const> const& info);
  virtual void aclHelperDel();
  virtual void aclHelperIs(Kor::Ptr<PolicyMapAclHelper> const& helper);

  [[nodiscard]] Kor::Ptr<PolicyMapTypeConfig const> const& policyConfig() const {
    return policyConfig_.object();
  }
  [[nodiscard]] Kor::Ptr<ClassMapTypeConfig const> const& classTypeConfig() const {
    return classTypeConfig_.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapStatusRequestDir const> const& statusRequestDir() const {
    return statusRequestDir_.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapTypeStatus> const& status() const { return status_; }
  [[nodiscard]] Kor::Ptr<Acl::Config const> const& aclConfig() const { return aclConfig_.object(); }
  [[nodiscard]] Kor::Ptr<Lag::Input::Config const> const& lagConfig() const {
    return lagConfig_.object();
  }
  [[nodiscard]] Kor::Ptr<Ip::Status const> const& ipStatus() const { return ipStatus_.object(); }
  [[nodiscard]] Kor::Ptr<Ip6::Status const> const& ip6Status() const { return ip6Status_.object(); }
  [[nodiscard]] Kor::Ptr<Routing::RoutingInfo const> const& routingInfo() const {
    return routingInfo_.object();
  }
  [[nodiscard]] Kor::Ptr<Routing6::RoutingInfo const> const& routing6Info() const {
    return routing6Info_.object();
  }
  [[nodiscard]] Kor::Ptr<PolicyMapAclHelper> const& aclHelper() const {
    return aclHelper_.object();
  }
  [[nodiscard]] Kor::Ptr<Acl::AclDiff> const& aclDiff() const { return aclDiff_; }
  [[nodiscard]] bool allowL2Intf() const { return allowL2Intf_; }
  [[nodiscard]] bool allowL3Intf() const { return allowL3Intf_; }
  [[nodiscard]] bool allowMgmtIntf() const { return allowMgmtIntf_; }
  [[nodiscard]] bool allowIpAcl() const { return allowIpAcl_; }
  [[nodiscard]] bool allowIp6Acl() const { return allowIp6Acl_; }
  [[nodiscard]] bool allowMacAcl() const { return allowMacAcl_; }
  [[nodiscard]] bool allowsOption(ClassMapMatchOption option) const;
  [[nodiscard]] Kor::Ptr<PolicyMapGlobalData> const& commonData() const { return commonData_; }
  [[nodiscard]] double retryMin() const { return retryMin_; }
  [[nodiscard]] double retryMax() const { return retryMax_; }
  [[nodiscard]] double asyncTimeout() const { return asyncTimeout_; }
  [[nodiscard]] bool initialized() const { return initialized_; }

  // What stands for an interface in the hardware: itself, or, for a port-channel and a helper that
  // wants it so, the members that exist.
  [[nodiscard]] std::vector<Vorel::IntfId> memberIntfs(Vorel::IntfId intf) const;
  // Where a policy is to be applied for an option, ascending, each once.
  [[nodiscard]] std::vector<Vorel::IntfId> effectiveIntfs(PolicyMapSmKey const& key,
                                                          ClassMapMatchOption matchOption);

 protected:
  // Calls no hook. Any pointer may be null: without policy configuration, access lists or helper
  // nothing is programmed, without `status` nothing is published.
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
  class PolicyWatch;
  class ClassMapWatch;
  class AclWatch;
  class IpWatch;
  class Ip6Watch;
  class RoutingWatch;
  class Routing6Watch;
  class LagWatch;
  class RequestWatch;
  class HelperWatch;
  class ReconcilerService;

  template <class Call>
  void forEachReactor(Call&& call);
  [[nodiscard]] bool reacting() const { return hasNotificationActive() && !korMarkedForDeletion(); }
  void initialize();
  void servicePolicyChanged(ServicePolicyKey const& key);
  void attachmentIs(ServicePolicyKey const& key, Kor::Name const& policyMapName);
  void attachmentsAre();
  // Brings one policy machine to what is configured.
  void syncPolicy(PolicyMapSmKey const& key);
  void bringPolicy(PolicyMapSmKey const& key);
  void policyGone(PolicyMapSmKey const& key);
  void dependencyChanged(DependencyKind kind, Kor::Name const& name);
  void capabilitiesChanged();
  void initializeHelper();
  void makePolicyMachine(PolicyMapSmKey const& key, Kor::Ptr<PolicyMapConfig const> const& config);
  void intfIs(PolicyMapSmKey const& key, Vorel::IntfId intf);
  void intfChanged(Vorel::IntfId intf, bool force);
  void allIntfsChanged();
  void memberChanged(Vorel::IntfId member);
  void membersAre();
  void optionsChanged();
  void rebuild();
  void renewCommonData();
  [[nodiscard]] bool hasIp(Vorel::IntfId intf) const;
  [[nodiscard]] bool hasIp6(Vorel::IntfId intf) const;
  [[nodiscard]] bool isLayer3(Vorel::IntfId intf) const;
  [[nodiscard]] bool isLayer2(Vorel::IntfId intf) const;

  Kor::Reactor<PolicyMapTypeConfig const, PolicyWatch> policyConfig_;
  Kor::Reactor<ClassMapTypeConfig const, ClassMapWatch> classTypeConfig_;
  Kor::Reactor<PolicyMapStatusRequestDir const, RequestWatch> statusRequestDir_;
  Kor::Ptr<PolicyMapTypeStatus> status_;
  Kor::Reactor<Acl::Config const, AclWatch> aclConfig_;
  Kor::Reactor<Lag::Input::Config const, LagWatch> lagConfig_;
  Kor::Reactor<Ip::Status const, IpWatch> ipStatus_;
  Kor::Reactor<Ip6::Status const, Ip6Watch> ip6Status_;
  Kor::Reactor<Routing::RoutingInfo const, RoutingWatch> routingInfo_;
  Kor::Reactor<Routing6::RoutingInfo const, Routing6Watch> routing6Info_;
  Kor::Reactor<PolicyMapAclHelper, HelperWatch> aclHelper_;
  Kor::Ptr<Acl::AclDiff> aclDiff_;
  bool allowL2Intf_;
  bool allowL3Intf_;
  bool allowMgmtIntf_;
  bool allowIpAcl_ = true;
  bool allowIp6Acl_ = true;
  bool allowMacAcl_ = true;
  Kor::Ptr<PolicyMapGlobalData> commonData_;
  double retryMin_ = 1;
  double retryMax_ = 60;
  double asyncTimeout_ = 30;
  bool initialized_ = false;
  bool cleanedUp_ = false;
  bool rebuildDue_ = false;      // when notifications are on again
  bool changingHelper_ = false;  // policies are leaving the former one
  Settling<PolicyMapSmKey> settlingPolicies_;
  std::unique_ptr<ReconcilerService> reconcilerService_;

  // Attachments as last heard of: by place, by policy, by interface.
  std::map<ServicePolicyKey, Kor::Name> attachedAt_;
  std::map<PolicyMapSmKey, std::set<Vorel::IntfId>> attachments_;
  std::map<Vorel::IntfId, std::set<PolicyMapSmKey>> policiesAt_;
  std::map<Vorel::IntfId, Vorel::IntfId> channelOf_;  // port-channel of each member
};

}  // namespace PolicyMap
