// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ServicePolicySm.h"

#include "PolicyMap/HelperArbiter.h"

#include <set>
#include <utility>

namespace PolicyMap {

// The machine as seen by its parts.
class ServicePolicySm::Parts final : public ServicePolicyWatches::Owner,
                                     public AttachedPolicies::Owner,
                                     public PolicyHost {
 public:
  explicit Parts(ServicePolicySm& machine) : machine_(machine) {}

  // ServicePolicyWatches::Owner
  void policyMapConfigChanged(Kor::Name const& policyMapName) override {
    machine_.handlePolicyMapConfig(policyMapName);
  }
  void servicePolicyChanged(ServicePolicyKey const& place) override {
    Kor::Ptr<ServicePolicySm> const pinned = Kor::share(&machine_);
    machine_.policies_.syncPlace(place);
  }
  void dependencyChanged(DependencyKind kind, Kor::Name const& name) override {
    machine_.dependencyChanged(kind, name);
  }
  void countRequested(PolicyMapSmKey const& policy) override {
    if (Kor::Ptr<PolicyMap::PolicyMapSm> const machine = machine_.policyMapSm(policy)) {
      machine->reconciler().countsRequested();
    }
  }
  void memberChanged(Vorel::IntfId member) override { machine_.syncMember(member); }
  void intfChanged(Vorel::IntfId intf) override { machine_.handleIntf(intf, false); }
  void routingChanged() override { machine_.allIntfsChanged(); }
  void capabilitiesChanged() override { machine_.rulesChanged(); }

  // AttachedPolicies::Owner
  Kor::Ptr<PolicyMapTypeConfig const> const& policyConfig() const override {
    return machine_.policyConfig();
  }
  Kor::Ptr<PolicyMapTypeStatus> const& status() const override { return machine_.status(); }
  bool reacting() const override { return machine_.reacting(); }
  bool mayCarryPolicies(Vorel::IntfId intf) override {
    return machine_.intfExists(intf) && machine_.allowedIntf(intf);
  }
  void handlePolicyMap(Kor::Name const& name) override { machine_.handlePolicyMap(name); }
  Kor::Ptr<PolicyMap::PolicyMapSm> policyMapSm(PolicyMapSmKey const& key) const override {
    return machine_.policyMapSm(key);
  }
  Kor::Ptr<PolicyMap::PolicyMapSm> createPolicyMapSm(
      PolicyMapSmKey const& key, Kor::Ptr<PolicyMapConfig const> const& config,
      Kor::Ptr<PolicyMapStatus> const& status) override {
    return machine_.createPolicyMapSm(key, config, status);
  }
  void policyMapSmIs(PolicyMapSmKey const& key,
                     Kor::Ptr<PolicyMap::PolicyMapSm> const& machine) override {
    machine_.policyMapSmIs(key, machine);
    machine->serviceIs(this);
  }
  void policyMapSmDel(PolicyMapSmKey const& key) override { machine_.policyMapSmDel(key); }

  // PolicyHost
  Kor::EventLoop& eventLoop() const override { return machine_.eventLoop_; }
  Kor::Ptr<PolicyMapAclHelper> const& aclHelper() const override { return machine_.aclHelper(); }
  Kor::Ptr<Acl::AclDiff> const& aclDiff() const override { return machine_.aclDiff(); }
  bool active() const override { return machine_.reacting() && !machine_.changingHelper_; }
  bool allowsOption(ClassMapMatchOption option) const override {
    return machine_.allowsOption(option);
  }
  std::vector<Vorel::IntfId> effectiveIntfs(PolicyMapSmKey const& key,
                                            ClassMapMatchOption option) override {
    return machine_.effectiveIntfs(key, option);
  }
  double retryMin() const override { return machine_.retryMin(); }
  double retryMax() const override { return machine_.retryMax(); }
  double asyncTimeout() const override { return machine_.asyncTimeout(); }
  void policyGone(PolicyMapSmKey const& key) override {
    Kor::Ptr<ServicePolicySm> const pinned = Kor::share(&machine_);
    machine_.policies_.policyGone(key);
  }

 private:
  ServicePolicySm& machine_;
};

ServicePolicySm::ServicePolicySm(Kor::Ptr<PolicyMapTypeConfig const> const& policyConfig,
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
                                 Kor::Ptr<Acl::AclDiff> const& aclDiff, bool allowL2Intf,
                                 bool allowL3Intf, bool allowMgmtIntf)
    : parts_(std::make_unique<Parts>(*this)),
      watches_(*parts_),
      status_(status),
      aclDiff_(aclDiff),
      allowedKinds_{allowL2Intf, allowL3Intf, allowMgmtIntf},
      policies_(*parts_) {
  watches_.policyConfig.objectIs(policyConfig);
  watches_.statusRequestDir.objectIs(statusRequestDir);
  watches_.classTypeConfig.objectIs(classTypeConfig);
  watches_.aclConfig.objectIs(aclConfig);
  watches_.lagConfig.objectIs(lagConfig);
  watches_.ipStatus.objectIs(ipStatus);
  watches_.ip6Status.objectIs(ip6Status);
  watches_.routingInfo.objectIs(routingInfo);
  watches_.routing6Info.objectIs(routing6Info);
  watches_.aclHelper.objectIs(aclHelper);
}

// A machine that was taken from the collection may still exist.
ServicePolicySm::~ServicePolicySm() {
  parts_->dismissUsers();
}

Kor::KorType const* ServicePolicySm::fwkType() const {
  return _fwkType();
}
Kor::KorType* ServicePolicySm::_fwkType() {
  static Kor::KorType type("PolicyMap::ServicePolicySm", PtrInterface::_fwkType());
  return &type;
}

// lifecycle -----------------------------------------------------------------------------

void ServicePolicySm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  watches_.hasNotificationActiveIs(active);
  if (reacting()) {
    initialize();
  }
}

void ServicePolicySm::korDoZombieReactors(bool zombie) {
  watches_.korDoZombieReactors(zombie);
  if (!zombie) {
    // Schedules the changes that the policies recorded in the meantime.
    rulesChanged();
  }
}

void ServicePolicySm::initialize() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  policies_.noneWantedIs(false);
  if (std::exchange(rebuildDue_, false) || !commonData_) {
    renewCommonData();
  }
  initializeHelper();
  policies_.sync();
  allIntfsChanged();
  syncMembers();
  if (initialized_) {
    for (auto const& entry : policyMapSmIteratorConst()) {
      entry.value()->catchUp();
    }
  }
  initializedIs(true);
}

void ServicePolicySm::initializedIs(bool initialized) {
  if (initialized == initialized_) {
    return;
  }
  initialized_ = initialized;
  if (initialized) {
    handleInitialized();
  }
}

void ServicePolicySm::initializeHelper() {
  if (Kor::Ptr<PolicyMapAclHelper> const helper = aclHelper()) {
    helper->arbiter().initialize([&] { helper->hwInit(); });
  }
}

Kor::Ptr<PolicyMapGlobalData> ServicePolicySm::createCommonData() {
  return Kor::make<PolicyMapGlobalData>(aclConfig(), classTypeConfig(), aclDiff_);
}

void ServicePolicySm::cleanup() {
  policies_.noneWantedIs(true);
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().wantedIs(false);
  }
}

void ServicePolicySm::rebuild() {
  if (!reacting()) {
    rebuildDue_ = true;
    return;
  }
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  renewCommonData();
  policies_.sync();
  allIntfsChanged();
}

// The policy machines refer to the previous data, so they are built again.
void ServicePolicySm::renewCommonData() {
  commonDataIs(createCommonData());
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().restart();
  }
}

void ServicePolicySm::dependencyChanged(DependencyKind kind, Kor::Name const& name) {
  // A reaction may drop the last reference to this machine.
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  if (Kor::Ptr<PolicyMapGlobalData> const data = commonData_) {
    data->dependencies().changed(kind, name);
  }
}

void ServicePolicySm::rulesChanged() {
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().rulesChanged();
  }
}

// policies ------------------------------------------------------------------------------

void ServicePolicySm::handlePolicyMap(Kor::Name policyMapName) {
  if (reacting()) {
    Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
    policies_.syncPolicyMap(policyMapName);
  }
}

// interfaces ----------------------------------------------------------------------------

IntfEligibility ServicePolicySm::eligibility() const {
  return IntfEligibility(
      {ipStatus().get(), ip6Status().get(), routingInfo().get(), routing6Info().get()});
}

bool ServicePolicySm::allowedIntf(Vorel::IntfId intf) {
  return eligibility().isAllowed(intf, allowedKinds_);
}

bool ServicePolicySm::allowedIntfForType(Vorel::IntfId intf, ClassMapMatchOption matchOption) {
  return eligibility().allowsOption(intf, matchOption);
}

std::vector<Vorel::IntfId> ServicePolicySm::memberIntfs(Vorel::IntfId intf) const {
  if (!intf.isPortChannel() || !aclHelper() || !aclHelper()->expandPortChannels()) {
    return {intf};
  }
  std::vector<Vorel::IntfId> members;
  if (lagConfig()) {
    for (Vorel::IntfId const member : lagConfig()->members(intf)) {
      if (intfExists(member)) {
        members.push_back(member);
      }
    }
  }
  return members;
}

std::vector<Vorel::IntfId> ServicePolicySm::effectiveIntfs(PolicyMapSmKey const& key,
                                                           ClassMapMatchOption matchOption) {
  std::set<Vorel::IntfId> intfs;
  if (Kor::Ptr<PolicyMap::PolicyMapSm> const machine = policyMapSm(key)) {
    for (auto const& entry : machine->activeIntfIteratorConst()) {
      if (entry.value() && allowedIntfForType(entry.key(), matchOption)) {
        std::vector<Vorel::IntfId> const members = memberIntfs(entry.key());
        intfs.insert(members.begin(), members.end());
      }
    }
  }
  return {intfs.begin(), intfs.end()};
}

void ServicePolicySm::syncMember(Vorel::IntfId member) {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  Vorel::IntfId const channel = lagConfig() ? lagConfig()->memberOf(member) : Vorel::IntfId();
  for (Vorel::IntfId const intf : portChannels_.set(member, channel)) {
    handleIntf(intf, false);
  }
}

void ServicePolicySm::syncMembers() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  std::set<Vorel::IntfId> members = portChannels_.members();
  if (lagConfig()) {
    for (auto const& entry : lagConfig()->memberOfIteratorConst()) {
      members.insert(entry.key());
    }
  }
  for (Vorel::IntfId const member : members) {
    syncMember(member);
  }
}

void ServicePolicySm::handleIntf(Vorel::IntfId intf, bool force) {
  if (!reacting()) {
    return;
  }
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  for (Vorel::IntfId const concerned : portChannels_.concernedBy(intf)) {
    policies_.intfChanged(concerned, force);
  }
}

void ServicePolicySm::allIntfsChanged() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  for (Vorel::IntfId const intf : policies_.attachments().intfs()) {
    handleIntf(intf, false);
  }
}

// attributes ----------------------------------------------------------------------------

void ServicePolicySm::allowOption(ClassMapMatchOption option, bool allow) {
  allowedOptions_[option] = allow;
  rulesChanged();
}

void ServicePolicySm::aclHelperIs(Kor::Ptr<PolicyMapAclHelper> const& helper) {
  if (helper == aclHelper()) {
    return;
  }
  // A deletion on the previous helper may set another helper or destroy this machine.
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  Kor::Ptr<PolicyMapAclHelper> const left = aclHelper();
  watches_.aclHelper.objectIs(helper);
  {
    ScopedFlag const flag(changingHelper_);
    for (auto const& entry : policyMapSmIteratorConst()) {
      entry.value()->reconciler().leaveHelper(left);
    }
  }
  if (reacting()) {
    initializeHelper();
  }
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().everythingChanged();
  }
}

}  // namespace PolicyMap
