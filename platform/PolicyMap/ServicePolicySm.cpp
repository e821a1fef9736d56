// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ServicePolicySm.h"

#include "PolicyMap/HelperArbiter.h"

#include <set>
#include <utility>

namespace PolicyMap {

// The machine's reactions to its watches.
class ServicePolicySm::Reactions final : public ServicePolicyWatches::Owner {
 public:
  explicit Reactions(ServicePolicySm& machine) : machine_(machine) {}

  void policyMapConfigChanged(Kor::Name const& policyMapName) override {
    machine_.handlePolicyMapConfig(policyMapName);
  }
  void servicePolicyChanged(ServicePolicyKey const& place) override {
    machine_.syncAttachment(place);
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

 private:
  ServicePolicySm& machine_;
};

// The machine as seen by the reconcilers of its policies.
class ServicePolicySm::ReconcilerService final : public PolicyReconciler::Service {
 public:
  explicit ReconcilerService(ServicePolicySm& machine) : machine_(machine) {}

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
  void policyGone(PolicyMapSmKey const& key) override { machine_.policyGone(key); }

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
    : reactions_(std::make_unique<Reactions>(*this)),
      watches_(*reactions_),
      status_(status),
      aclDiff_(aclDiff),
      allowedKinds_{allowL2Intf, allowL3Intf, allowMgmtIntf},
      reconcilerService_(std::make_unique<ReconcilerService>(*this)) {
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

ServicePolicySm::~ServicePolicySm() {
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->serviceIs(nullptr);
  }
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
  cleanedUp_ = false;
  if (std::exchange(rebuildDue_, false) || !commonData_) {
    renewCommonData();
  }
  initializeHelper();
  syncAttachments();
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
  cleanedUp_ = true;
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().wantedIs(false);
  }
}

void ServicePolicySm::rebuild() {
  if (!reacting()) {
    rebuildDue_ = true;
    return;
  }
  renewCommonData();
  syncAttachments();
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

// A status observer may destroy this machine during any of the functions below. Each function that
// continues after a policy was created, dropped or queried holds a reference to it.

void ServicePolicySm::syncAttachments() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  std::set<ServicePolicyKey> places = attachments_.places();
  if (policyConfig()) {
    for (auto const& entry : policyConfig()->servicePolicyIteratorConst()) {
      places.insert(entry.key());
    }
  }
  for (ServicePolicyKey const& place : places) {
    syncAttachment(place);
  }
  for (PolicyMapSmKey const& key : attachments_.policies()) {
    syncPolicy(key);
  }
  allIntfsChanged();
}

// Updates `attachments_` completely before it calls anything, because the calls may change the
// attachments again.
void ServicePolicySm::syncAttachment(ServicePolicyKey const& place) {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  Attachments::Change const change =
      attachments_.set(place, policyConfig() ? policyConfig()->servicePolicy(place) : Kor::Name());
  if (change.left) {
    syncIntf(*change.left, place.intf());
    handlePolicyMap(Kor::Name(change.left->first()));
  }
  if (change.joined) {
    handlePolicyMap(Kor::Name(change.joined->first()));
    syncIntf(*change.joined, place.intf());
  }
}

void ServicePolicySm::handlePolicyMapConfig(Kor::Name policyMapName) {
  handlePolicyMap(std::move(policyMapName));
}

void ServicePolicySm::handlePolicyMap(Kor::Name policyMapName) {
  if (!reacting()) {
    return;
  }
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  for (char const* const direction : {"input", "output"}) {
    syncPolicy(PolicyMapSmKey(policyMapName, direction));
  }
}

void ServicePolicySm::syncPolicy(PolicyMapSmKey const& key) {
  settlingPolicies_.settle(key, [this, held = PolicyMapSmKey(key)] { bringPolicy(held); });
}

void ServicePolicySm::bringPolicy(PolicyMapSmKey const& key) {
  bool const attached = !cleanedUp_ && attachments_.contains(key);
  Kor::Ptr<PolicyMapConfig const> const config =
      policyConfig() ? policyConfig()->policyMapConfig(Kor::Name(key.first())) : nullptr;
  Kor::Ptr<PolicyMap::PolicyMapSm> const machine = policyMapSm(key);
  if (machine) {
    if (config) {
      machine->policyMapConfigIs(config);
    }
    machine->reconciler().wantedIs(attached && config);
  } else if (attached && config) {
    makePolicyMachine(key, config);
  }
}

void ServicePolicySm::makePolicyMachine(PolicyMapSmKey const& key,
                                        Kor::Ptr<PolicyMapConfig const> const& config) {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  Kor::Ptr<PolicyMapStatus> const status = status_ ? status_->policyMapStatusIs(key) : nullptr;
  Kor::Ptr<PolicyMap::PolicyMapSm> const machine = createPolicyMapSm(key, config, status);
  if (!machine) {
    return;
  }
  policyMapSmIs(key, machine);
  machine->serviceIs(reconcilerService_.get());
  for (Vorel::IntfId const intf : attachments_.intfsOf(key)) {
    syncIntf(key, intf);
  }
  // The calls above may have changed the configuration.
  syncPolicy(key);
}

void ServicePolicySm::policyGone(PolicyMapSmKey const& key) {
  Kor::Ptr<PolicyMap::PolicyMapSm> const machine = policyMapSm(key);
  if (!machine) {
    return;
  }
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  machine->serviceIs(nullptr);
  machine->cleanup();
  machine->korDoZombieReactors(true);
  policyMapSmDel(key);
  if (status_) {
    status_->policyMapStatusDel(key);
  }
  // It may be wanted again, or have to be built again with a different configuration.
  if (reacting()) {
    syncPolicy(key);
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
    intfChanged(concerned, force);
  }
}

void ServicePolicySm::intfChanged(Vorel::IntfId intf, bool force) {
  for (PolicyMapSmKey const& key : attachments_.policiesAt(intf)) {
    syncIntf(key, intf);
    if (Kor::Ptr<PolicyMap::PolicyMapSm> const machine = policyMapSm(key)) {
      if (force) {
        machine->reconciler().reprogram();
      } else {
        machine->reconciler().intfsChanged();
      }
    }
  }
}

void ServicePolicySm::syncIntf(PolicyMapSmKey const& key, Vorel::IntfId intf) {
  Kor::Ptr<PolicyMap::PolicyMapSm> const machine = policyMapSm(key);
  if (!machine) {
    return;
  }
  if (attachments_.contains(key, intf)) {
    machine->activeIntfIs(intf, intfExists(intf) && allowedIntf(intf));
  } else {
    machine->activeIntfDel(intf);
  }
}

void ServicePolicySm::allIntfsChanged() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  for (Vorel::IntfId const intf : attachments_.intfs()) {
    handleIntf(intf, false);
  }
}

// attributes ----------------------------------------------------------------------------

void ServicePolicySm::allowOption(ClassMapMatchOption option, bool allow) {
  allowedOptions_[option] = allow;
  rulesChanged();
}

void ServicePolicySm::policyConfigIs(Kor::Ptr<PolicyMapTypeConfig const> const& config) {
  if (config != policyConfig()) {
    watches_.policyConfig.objectIs(config);
    rebuild();
  }
}
void ServicePolicySm::classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config) {
  if (config != classTypeConfig()) {
    watches_.classTypeConfig.objectIs(config);
    rebuild();
  }
}
void ServicePolicySm::aclConfigIs(Kor::Ptr<Acl::Config const> const& config) {
  if (config != aclConfig()) {
    watches_.aclConfig.objectIs(config);
    rebuild();
  }
}
void ServicePolicySm::statusRequestDirIs(
    Kor::Ptr<PolicyMapStatusRequestDir const> const& requests) {
  watches_.statusRequestDir.objectIs(requests);
}
void ServicePolicySm::lagConfigIs(Kor::Ptr<Lag::Input::Config const> const& config) {
  watches_.lagConfig.objectIs(config);
  syncMembers();
}
void ServicePolicySm::ipStatusIs(Kor::Ptr<Ip::Status const> const& status) {
  watches_.ipStatus.objectIs(status);
  allIntfsChanged();
}
void ServicePolicySm::ip6StatusIs(Kor::Ptr<Ip6::Status const> const& status) {
  watches_.ip6Status.objectIs(status);
  allIntfsChanged();
}
void ServicePolicySm::routingInfoIs(Kor::Ptr<Routing::RoutingInfo const> const& info) {
  watches_.routingInfo.objectIs(info);
  allIntfsChanged();
}
void ServicePolicySm::routing6InfoIs(Kor::Ptr<Routing6::RoutingInfo const> const& info) {
  watches_.routing6Info.objectIs(info);
  allIntfsChanged();
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
