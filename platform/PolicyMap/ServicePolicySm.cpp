// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ServicePolicySm.h"

#include "Kor/Exception.h"
#include "PolicyMap/HelperArbiter.h"

#include <algorithm>
#include <sstream>

namespace PolicyMap {
namespace {

// Refuses a number of seconds for an attribute.
void requireWait(char const* attribute, double seconds, bool good, char const* requirement,
                 std::optional<double> bound = std::nullopt) {
  if (!good) {
    std::ostringstream text;
    text << "ServicePolicySm::" << attribute << " " << seconds << " not allowed, " << requirement;
    if (bound) {
      text << " " << *bound;
    }
    throw Kor::RangeException(text.str());
  }
}

}  // namespace

// What the machine hears from the objects it watches.

class ServicePolicySm::PolicyWatch : public PolicyMapTypeConfig::NotifieeConst {
 public:
  explicit PolicyWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onPolicyMapConfig(Kor::Name const& name) override { machine_->handlePolicyMapConfig(name); }
  void onServicePolicy(ServicePolicyKey const& key) override {
    machine_->servicePolicyChanged(key);
  }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::ClassMapWatch : public ClassMapTypeConfig::NotifieeConst {
 public:
  explicit ClassMapWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onClassMapConfig(Kor::Name const& name) override {
    machine_->dependencyChanged(DependencyKind::classMap, name);
  }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::AclWatch : public Acl::Config::NotifieeConst {
 public:
  explicit AclWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onIpAcl(Kor::Name name) override {
    machine_->dependencyChanged(DependencyKind::ipAcl, name);
  }
  void onIp6Acl(Kor::Name name) override {
    machine_->dependencyChanged(DependencyKind::ip6Acl, name);
  }
  void onMacAcl(Kor::Name name) override {
    machine_->dependencyChanged(DependencyKind::macAcl, name);
  }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::LagWatch : public Lag::Input::Config::NotifieeConst {
 public:
  explicit LagWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onMember(Vorel::IntfId member) override { machine_->memberChanged(member); }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::RequestWatch : public PolicyMapStatusRequestDir::NotifieeConst {
 public:
  explicit RequestWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onCountRequest(PolicyMapSmKey const& key) override {
    if (Kor::Ptr<PolicyMap::PolicyMapSm> const policy = machine_->policyMapSm(key)) {
      policy->reconciler().countsRequested();
    }
  }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::IpWatch : public Ip::Status::NotifieeConst {
 public:
  explicit IpWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onIntfAddress(Vorel::IntfId intf) override { machine_->handleIntf(intf, false); }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::Ip6Watch : public Ip6::Status::NotifieeConst {
 public:
  explicit Ip6Watch(ServicePolicySm* machine) : machine_(machine) {}
  void onIntfAddress(Vorel::IntfId intf) override { machine_->handleIntf(intf, false); }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::RoutingWatch : public Routing::RoutingInfo::NotifieeConst {
 public:
  explicit RoutingWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onRouting() override { machine_->allIntfsChanged(); }
  void onRoutedIntf(Vorel::IntfId intf) override { machine_->handleIntf(intf, false); }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::Routing6Watch : public Routing6::RoutingInfo::NotifieeConst {
 public:
  explicit Routing6Watch(ServicePolicySm* machine) : machine_(machine) {}
  void onRouting() override { machine_->allIntfsChanged(); }
  void onRoutedIntf(Vorel::IntfId intf) override { machine_->handleIntf(intf, false); }

 private:
  ServicePolicySm* machine_;
};

class ServicePolicySm::HelperWatch : public PolicyMapAclHelper::NotifieeConst {
 public:
  explicit HelperWatch(ServicePolicySm* machine) : machine_(machine) {}
  void onUpdateActionSupported() override { machine_->capabilitiesChanged(); }
  void onReprogramPolicyOnIntfChange() override { machine_->capabilitiesChanged(); }
  void onExpandPortChannels() override { machine_->capabilitiesChanged(); }
  void onDenyRulesAllowed() override { machine_->capabilitiesChanged(); }
  void onTtlSupported() override { machine_->capabilitiesChanged(); }
  void onOnlyTtlEqSupported() override { machine_->capabilitiesChanged(); }
  void onAckOrRstSupported() override { machine_->capabilitiesChanged(); }
  void onEstablishedSupported() override { machine_->capabilitiesChanged(); }
  void onSubRulesForL4Ports() override { machine_->capabilitiesChanged(); }
  void onAsyncOperations() override { machine_->capabilitiesChanged(); }

 private:
  ServicePolicySm* machine_;
};

// What the reconcilers of the policies ask of this machine.
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
    : policyConfig_(Kor::make<PolicyWatch>(this)),
      classTypeConfig_(Kor::make<ClassMapWatch>(this)),
      statusRequestDir_(Kor::make<RequestWatch>(this)),
      status_(status),
      aclConfig_(Kor::make<AclWatch>(this)),
      lagConfig_(Kor::make<LagWatch>(this)),
      ipStatus_(Kor::make<IpWatch>(this)),
      ip6Status_(Kor::make<Ip6Watch>(this)),
      routingInfo_(Kor::make<RoutingWatch>(this)),
      routing6Info_(Kor::make<Routing6Watch>(this)),
      aclHelper_(Kor::make<HelperWatch>(this)),
      aclDiff_(aclDiff),
      allowL2Intf_(allowL2Intf),
      allowL3Intf_(allowL3Intf),
      allowMgmtIntf_(allowMgmtIntf),
      reconcilerService_(std::make_unique<ReconcilerService>(*this)) {
  policyConfig_.objectIs(policyConfig);
  statusRequestDir_.objectIs(statusRequestDir);
  classTypeConfig_.objectIs(classTypeConfig);
  aclConfig_.objectIs(aclConfig);
  lagConfig_.objectIs(lagConfig);
  ipStatus_.objectIs(ipStatus);
  ip6Status_.objectIs(ip6Status);
  routingInfo_.objectIs(routingInfo);
  routing6Info_.objectIs(routing6Info);
  aclHelper_.objectIs(aclHelper);
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

// life ----------------------------------------------------------------------------------

template <class Call>
void ServicePolicySm::forEachReactor(Call&& call) {
  call(policyConfig_);
  call(classTypeConfig_);
  call(statusRequestDir_);
  call(aclConfig_);
  call(lagConfig_);
  call(ipStatus_);
  call(ip6Status_);
  call(routingInfo_);
  call(routing6Info_);
  call(aclHelper_);
}

void ServicePolicySm::hasNotificationActiveIs(bool active) {
  PtrInterface::hasNotificationActiveIs(active);
  forEachReactor([active](auto& reactor) { reactor.hasNotificationActiveIs(active); });
  if (reacting()) {
    initialize();
  }
}

void ServicePolicySm::korDoZombieReactors(bool zombie) {
  forEachReactor([zombie](auto& reactor) { reactor.korDoZombieReactors(zombie); });
  if (!zombie) {
    // What the policies noted meanwhile is programmed when the loop turns.
    for (auto const& entry : policyMapSmIteratorConst()) {
      entry.value()->reconciler().rulesChanged();
    }
  }
}

void ServicePolicySm::initialize() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  cleanedUp_ = false;
  if (std::exchange(rebuildDue_, false) || !commonData_) {
    renewCommonData();
  }
  initializeHelper();
  attachmentsAre();
  membersAre();
  if (initialized_) {
    for (auto const& entry : policyMapSmIteratorConst()) {
      entry.value()->catchUp();
    }
  }
  initializedIs(true);
}

Kor::Ptr<PolicyMapGlobalData> ServicePolicySm::createCommonData() {
  return Kor::make<PolicyMapGlobalData>(aclConfig(), classTypeConfig(), aclDiff_);
}

void ServicePolicySm::handleInitialized() {}

void ServicePolicySm::cleanup() {
  cleanedUp_ = true;
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().wantedIs(false);
  }
}

// policies ------------------------------------------------------------------------------

// Whoever hears of a status may end this machine, in the midst of any of what follows: all that
// goes on after a policy was made, dropped or asked for its interfaces holds on to the machine.

void ServicePolicySm::servicePolicyChanged(ServicePolicyKey const& key) {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  attachmentIs(key, policyConfig() ? policyConfig()->servicePolicy(key) : Kor::Name());
}

void ServicePolicySm::attachmentIs(ServicePolicyKey const& key, Kor::Name const& policyMapName) {
  auto const known = attachedAt_.find(key);
  if (known != attachedAt_.end()) {
    if (known->second == policyMapName) {
      return;
    }
    PolicyMapSmKey const left(known->second, key.direction());
    attachedAt_.erase(known);
    attachments_[left].erase(key.intf());
    if (attachments_[left].empty()) {
      attachments_.erase(left);
    }
    policiesAt_[key.intf()].erase(left);
    if (policiesAt_[key.intf()].empty()) {
      policiesAt_.erase(key.intf());
    }
    intfIs(left, key.intf());
    handlePolicyMap(Kor::Name(left.first()));
  }
  if (!policyMapName.empty()) {
    PolicyMapSmKey const joined(policyMapName, key.direction());
    attachedAt_.emplace(key, policyMapName);
    attachments_[joined].insert(key.intf());
    policiesAt_[key.intf()].insert(joined);
    handlePolicyMap(policyMapName);
    intfIs(joined, key.intf());
  }
}

void ServicePolicySm::attachmentsAre() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  std::vector<ServicePolicyKey> keys;
  for (auto const& [key, name] : attachedAt_) {
    keys.push_back(key);
  }
  if (policyConfig()) {
    for (auto const& entry : policyConfig()->servicePolicyIteratorConst()) {
      keys.push_back(entry.key());
    }
  }
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  for (ServicePolicyKey const& key : keys) {
    servicePolicyChanged(key);
  }
  std::vector<PolicyMapSmKey> policies;
  for (auto const& [key, intfs] : attachments_) {
    policies.push_back(key);
  }
  for (PolicyMapSmKey const& key : policies) {
    syncPolicy(key);
  }
  allIntfsChanged();
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
  bool const attached = !cleanedUp_ && attachments_.find(key) != attachments_.end();
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
  // Those who hear of the new status may take the policy away again.
  Kor::Ptr<PolicyMapStatus> const status = status_ ? status_->policyMapStatusIs(key) : nullptr;
  Kor::Ptr<PolicyMap::PolicyMapSm> const machine = createPolicyMapSm(key, config, status);
  if (!machine) {
    return;
  }
  policyMapSmIs(key, machine);
  machine->serviceIs(reconcilerService_.get());
  if (auto const attached = attachments_.find(key); attached != attachments_.end()) {
    for (Vorel::IntfId const intf : std::set<Vorel::IntfId>(attached->second)) {
      intfIs(key, intf);
    }
  }
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
  // Wanted again meanwhile, or to be built anew on other configuration.
  if (reacting()) {
    syncPolicy(key);
  }
}

void ServicePolicySm::dependencyChanged(DependencyKind kind, Kor::Name const& name) {
  // A reaction may drop the last reference to the machine.
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  if (Kor::Ptr<PolicyMapGlobalData> const data = commonData_) {
    data->dependencies().changed(kind, name);
  }
}

void ServicePolicySm::rebuild() {
  if (!reacting()) {
    rebuildDue_ = true;
    return;
  }
  renewCommonData();
  attachmentsAre();
}

// The machines below were built with the old data: they are built anew.
void ServicePolicySm::renewCommonData() {
  commonDataIs(createCommonData());
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().restart();
  }
}

// interfaces ----------------------------------------------------------------------------

bool ServicePolicySm::hasIp(Vorel::IntfId intf) const {
  return ipStatus() && !!ipStatus()->intfAddress(intf);
}
bool ServicePolicySm::hasIp6(Vorel::IntfId intf) const {
  return ip6Status() && !!ip6Status()->intfAddress(intf);
}
bool ServicePolicySm::isLayer3(Vorel::IntfId intf) const {
  return hasIp(intf) || hasIp6(intf) || (routingInfo() && routingInfo()->routedIntf(intf)) ||
         (routing6Info() && routing6Info()->routedIntf(intf));
}
bool ServicePolicySm::isLayer2(Vorel::IntfId intf) const {
  return (intf.isPhysical() || intf.isPortChannel()) && !isLayer3(intf);
}

bool ServicePolicySm::intfExists(Vorel::IntfId /*intf*/) const {
  return true;
}

bool ServicePolicySm::allowedIntf(Vorel::IntfId intf) {
  if (intf.isManagement()) {
    return allowMgmtIntf_;
  }
  if (isLayer3(intf)) {
    return allowL3Intf_;
  }
  return isLayer2(intf) && allowL2Intf_;
}

bool ServicePolicySm::allowedIntfForType(Vorel::IntfId intf, ClassMapMatchOption matchOption) {
  bool const layer2 = isLayer2(intf);
  switch (matchOption) {
  case ClassMapMatchOption::ipv4: return layer2 || hasIp(intf);
  case ClassMapMatchOption::ipv6: return layer2 || hasIp6(intf);
  case ClassMapMatchOption::mac: return layer2 || (isLayer3(intf) && intf.isPhysical());
  default: return routingInfo() && routingInfo()->routing();
  }
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

// The channels that a member leaves and joins are applied elsewhere from now on.
void ServicePolicySm::memberChanged(Vorel::IntfId member) {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  Vorel::IntfId const channel = lagConfig() ? lagConfig()->memberOf(member) : Vorel::IntfId();
  Vorel::IntfId const left = std::exchange(channelOf_[member], channel);
  if (!channel) {
    channelOf_.erase(member);
  }
  for (Vorel::IntfId const intf : {left, channel, member}) {
    handleIntf(intf, false);
  }
}

void ServicePolicySm::membersAre() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  std::set<Vorel::IntfId> members;
  for (auto const& [member, channel] : channelOf_) {
    members.insert(member);
  }
  if (lagConfig()) {
    for (auto const& entry : lagConfig()->memberOfIteratorConst()) {
      members.insert(entry.key());
    }
  }
  for (Vorel::IntfId const member : members) {
    memberChanged(member);
  }
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

void ServicePolicySm::handleIntf(Vorel::IntfId intf, bool force) {
  if (!reacting()) {
    return;
  }
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  // A member stands for its channel where channels are expanded. What that channel may be a member
  // of does not matter: members of members are no members.
  if (auto const member = channelOf_.find(intf);
      member != channelOf_.end() && member->second != intf) {
    intfChanged(member->second, force);
  }
  intfChanged(intf, force);
}

void ServicePolicySm::intfChanged(Vorel::IntfId intf, bool force) {
  auto const found = policiesAt_.find(intf);
  if (found == policiesAt_.end()) {
    return;
  }
  for (PolicyMapSmKey const& key : std::set<PolicyMapSmKey>(found->second)) {
    intfIs(key, intf);
    if (Kor::Ptr<PolicyMap::PolicyMapSm> const machine = policyMapSm(key)) {
      if (force) {
        machine->reconciler().reprogram();
      } else {
        machine->reconciler().intfsChanged();
      }
    }
  }
}

void ServicePolicySm::intfIs(PolicyMapSmKey const& key, Vorel::IntfId intf) {
  Kor::Ptr<PolicyMap::PolicyMapSm> const machine = policyMapSm(key);
  if (!machine) {
    return;
  }
  auto const found = attachments_.find(key);
  if (found != attachments_.end() && found->second.count(intf) != 0) {
    machine->activeIntfIs(intf, intfExists(intf) && allowedIntf(intf));
  } else {
    machine->activeIntfDel(intf);
  }
}

void ServicePolicySm::allIntfsChanged() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  std::vector<Vorel::IntfId> intfs;
  for (auto const& [intf, policies] : policiesAt_) {
    intfs.push_back(intf);
  }
  for (Vorel::IntfId const intf : intfs) {
    handleIntf(intf, false);
  }
}

// attributes ----------------------------------------------------------------------------

bool ServicePolicySm::allowsOption(ClassMapMatchOption option) const {
  switch (option) {
  case ClassMapMatchOption::ipv4: return allowIpAcl_;
  case ClassMapMatchOption::ipv6: return allowIp6Acl_;
  case ClassMapMatchOption::mac: return allowMacAcl_;
  default: return true;
  }
}

void ServicePolicySm::optionsChanged() {
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().rulesChanged();
  }
}

void ServicePolicySm::allowIpAclIs(bool allow) {
  allowIpAcl_ = allow;
  optionsChanged();
}
void ServicePolicySm::allowIp6AclIs(bool allow) {
  allowIp6Acl_ = allow;
  optionsChanged();
}
void ServicePolicySm::allowMacAclIs(bool allow) {
  allowMacAcl_ = allow;
  optionsChanged();
}

void ServicePolicySm::commonDataIs(Kor::Ptr<PolicyMapGlobalData> const& commonData) {
  commonData_ = commonData;
}
void ServicePolicySm::commonDataDel() {
  commonDataIs(nullptr);
}

void ServicePolicySm::retryMinIs(double seconds) {
  requireWait("retryMin", seconds, seconds > 0 && seconds <= retryMax_,
              "must be above 0 and not above retryMax", retryMax_);
  retryMin_ = seconds;
}
void ServicePolicySm::retryMaxIs(double seconds) {
  requireWait("retryMax", seconds, seconds > 0 && seconds >= retryMin_,
              "must be above 0 and not below retryMin", retryMin_);
  retryMax_ = seconds;
}
void ServicePolicySm::asyncTimeoutIs(double seconds) {
  requireWait("asyncTimeout", seconds, seconds > 0, "must be above 0");
  asyncTimeout_ = seconds;
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

void ServicePolicySm::policyConfigIs(Kor::Ptr<PolicyMapTypeConfig const> const& config) {
  if (config != policyConfig()) {
    policyConfig_.objectIs(config);
    rebuild();
  }
}
void ServicePolicySm::policyConfigDel() {
  policyConfigIs(nullptr);
}

void ServicePolicySm::classTypeConfigIs(Kor::Ptr<ClassMapTypeConfig const> const& config) {
  if (config != classTypeConfig()) {
    classTypeConfig_.objectIs(config);
    rebuild();
  }
}
void ServicePolicySm::classTypeConfigDel() {
  classTypeConfigIs(nullptr);
}

void ServicePolicySm::statusRequestDirIs(
    Kor::Ptr<PolicyMapStatusRequestDir const> const& requests) {
  statusRequestDir_.objectIs(requests);
}
void ServicePolicySm::statusRequestDirDel() {
  statusRequestDirIs(nullptr);
}

void ServicePolicySm::aclConfigIs(Kor::Ptr<Acl::Config const> const& config) {
  if (config != aclConfig()) {
    aclConfig_.objectIs(config);
    rebuild();
  }
}
void ServicePolicySm::aclConfigDel() {
  aclConfigIs(nullptr);
}

void ServicePolicySm::lagConfigIs(Kor::Ptr<Lag::Input::Config const> const& config) {
  lagConfig_.objectIs(config);
  membersAre();
}
void ServicePolicySm::lagConfigDel() {
  lagConfigIs(nullptr);
}

void ServicePolicySm::ipStatusIs(Kor::Ptr<Ip::Status const> const& status) {
  ipStatus_.objectIs(status);
  allIntfsChanged();
}
void ServicePolicySm::ipStatusDel() {
  ipStatusIs(nullptr);
}

void ServicePolicySm::ip6StatusIs(Kor::Ptr<Ip6::Status const> const& status) {
  ip6Status_.objectIs(status);
  allIntfsChanged();
}
void ServicePolicySm::ip6StatusDel() {
  ip6StatusIs(nullptr);
}

void ServicePolicySm::routingInfoIs(Kor::Ptr<Routing::RoutingInfo const> const& info) {
  routingInfo_.objectIs(info);
  allIntfsChanged();
}
void ServicePolicySm::routingInfoDel() {
  routingInfoIs(nullptr);
}

void ServicePolicySm::routing6InfoIs(Kor::Ptr<Routing6::RoutingInfo const> const& info) {
  routing6Info_.objectIs(info);
  allIntfsChanged();
}
void ServicePolicySm::routing6InfoDel() {
  routing6InfoIs(nullptr);
}

void ServicePolicySm::initializeHelper() {
  if (Kor::Ptr<PolicyMapAclHelper> const helper = aclHelper()) {
    helper->arbiter().initialize([&] { helper->hwInit(); });
  }
}

void ServicePolicySm::capabilitiesChanged() {
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  for (auto const& entry : policyMapSmIteratorConst()) {
    entry.value()->reconciler().rulesChanged();
  }
}

void ServicePolicySm::aclHelperIs(Kor::Ptr<PolicyMapAclHelper> const& helper) {
  if (helper == aclHelper()) {
    return;
  }
  // A deletion on the old helper may set another one, or end this machine.
  Kor::Ptr<ServicePolicySm> const pinned = Kor::share(this);
  Kor::Ptr<PolicyMapAclHelper> const left = aclHelper();
  aclHelper_.objectIs(helper);
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
void ServicePolicySm::aclHelperDel() {
  aclHelperIs(nullptr);
}

}  // namespace PolicyMap
