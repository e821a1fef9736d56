// SPDX-License-Identifier: Apache-2.0
#include "PolicyMap/ServicePolicyWatches.h"

namespace PolicyMap {
namespace {

using Owner = ServicePolicyWatches::Owner;

// A notifiee that reports to the owner of the watches.
template <class Notifiee>
class Reporting : public Notifiee {
 public:
  explicit Reporting(Owner& owner) : owner_(owner) {}

 protected:
  Owner& owner_;
};

class OfPolicyConfig final : public Reporting<PolicyMapTypeConfig::NotifieeConst> {
 public:
  using Reporting::Reporting;
  void onPolicyMapConfig(Kor::Name const& name) override { owner_.policyMapConfigChanged(name); }
  void onServicePolicy(ServicePolicyKey const& key) override { owner_.servicePolicyChanged(key); }
};

class OfClassMaps final : public Reporting<ClassMapTypeConfig::NotifieeConst> {
 public:
  using Reporting::Reporting;
  void onClassMapConfig(Kor::Name const& name) override {
    owner_.dependencyChanged(DependencyKind::classMap, name);
  }
};

class OfStatusRequests final : public Reporting<PolicyMapStatusRequestDir::NotifieeConst> {
 public:
  using Reporting::Reporting;
  void onCountRequest(PolicyMapSmKey const& key) override { owner_.countRequested(key); }
};

class OfAccessLists final : public Reporting<Acl::Config::NotifieeConst> {
 public:
  using Reporting::Reporting;
  void onIpAcl(Kor::Name name) override { owner_.dependencyChanged(DependencyKind::ipAcl, name); }
  void onIp6Acl(Kor::Name name) override { owner_.dependencyChanged(DependencyKind::ip6Acl, name); }
  void onMacAcl(Kor::Name name) override { owner_.dependencyChanged(DependencyKind::macAcl, name); }
};

class OfPortChannels final : public Reporting<Lag::Input::Config::NotifieeConst> {
 public:
  using Reporting::Reporting;
  void onMember(Vorel::IntfId member) override { owner_.memberChanged(member); }
};

// For Ip::Status and Ip6::Status.
template <class Status>
class OfAddresses final : public Reporting<typename Status::NotifieeConst> {
 public:
  using Reporting<typename Status::NotifieeConst>::Reporting;
  void onIntfAddress(Vorel::IntfId intf) override { this->owner_.intfChanged(intf); }
};

// For Routing::RoutingInfo and Routing6::RoutingInfo.
template <class Info>
class OfRouting final : public Reporting<typename Info::NotifieeConst> {
 public:
  using Reporting<typename Info::NotifieeConst>::Reporting;
  void onRouting() override { this->owner_.routingChanged(); }
  void onRoutedIntf(Vorel::IntfId intf) override { this->owner_.intfChanged(intf); }
};

class OfHelper final : public Reporting<PolicyMapAclHelper::NotifieeConst> {
 public:
  using Reporting::Reporting;
  void onUpdateActionSupported() override { owner_.capabilitiesChanged(); }
  void onReprogramPolicyOnIntfChange() override { owner_.capabilitiesChanged(); }
  void onExpandPortChannels() override { owner_.capabilitiesChanged(); }
  void onDenyRulesAllowed() override { owner_.capabilitiesChanged(); }
  void onTtlSupported() override { owner_.capabilitiesChanged(); }
  void onOnlyTtlEqSupported() override { owner_.capabilitiesChanged(); }
  void onAckOrRstSupported() override { owner_.capabilitiesChanged(); }
  void onEstablishedSupported() override { owner_.capabilitiesChanged(); }
  void onSubRulesForL4Ports() override { owner_.capabilitiesChanged(); }
  void onAsyncOperations() override { owner_.capabilitiesChanged(); }
};

}  // namespace

ServicePolicyWatches::ServicePolicyWatches(Owner& owner)
    : policyConfig(Kor::make<OfPolicyConfig>(owner)),
      classTypeConfig(Kor::make<OfClassMaps>(owner)),
      statusRequestDir(Kor::make<OfStatusRequests>(owner)),
      aclConfig(Kor::make<OfAccessLists>(owner)),
      lagConfig(Kor::make<OfPortChannels>(owner)),
      ipStatus(Kor::make<OfAddresses<Ip::Status>>(owner)),
      ip6Status(Kor::make<OfAddresses<Ip6::Status>>(owner)),
      routingInfo(Kor::make<OfRouting<Routing::RoutingInfo>>(owner)),
      routing6Info(Kor::make<OfRouting<Routing6::RoutingInfo>>(owner)),
      aclHelper(Kor::make<OfHelper>(owner)) {}

template <class Call>
void ServicePolicyWatches::forEach(Call&& call) {
  call(policyConfig);
  call(classTypeConfig);
  call(statusRequestDir);
  call(aclConfig);
  call(lagConfig);
  call(ipStatus);
  call(ip6Status);
  call(routingInfo);
  call(routing6Info);
  call(aclHelper);
}

void ServicePolicyWatches::hasNotificationActiveIs(bool active) {
  forEach([active](auto& watch) { watch.hasNotificationActiveIs(active); });
}

void ServicePolicyWatches::korDoZombieReactors(bool zombie) {
  forEach([zombie](auto& watch) { watch.korDoZombieReactors(zombie); });
}

}  // namespace PolicyMap
