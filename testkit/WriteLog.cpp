// SPDX-License-Identifier: Apache-2.0
#include "testkit/WriteLog.h"

#include "testkit/Printing.h"

namespace PolicyMapTestKit {

namespace {

std::string wordOf(PolicyMap::DependencyKind kind) {
  switch (kind) {
  case PolicyMap::DependencyKind::classMap: return "class-map";
  case PolicyMap::DependencyKind::ipAcl: return "ip access-list";
  case PolicyMap::DependencyKind::ip6Acl: return "ipv6 access-list";
  case PolicyMap::DependencyKind::macAcl: return "mac access-list";
  }
  return {};
}

}  // namespace

void WriteLog::observe(Text::Configuration const& configuration,
                       Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir> const& requests,
                       Kor::Ptr<PolicyMap::PolicyMapAclHelper> const& helper) {
  watches_.policyConfig.objectIs(configuration.policyMaps());
  watches_.classTypeConfig.objectIs(configuration.classMaps());
  watches_.statusRequestDir.objectIs(requests);
  watches_.aclConfig.objectIs(configuration.acls());
  watches_.lagConfig.objectIs(configuration.lag());
  watches_.ipStatus.objectIs(configuration.ip());
  watches_.ip6Status.objectIs(configuration.ip6());
  watches_.routingInfo.objectIs(configuration.routing());
  watches_.routing6Info.objectIs(configuration.routing6());
  watches_.aclHelper.objectIs(helper);
  observing_ = true;
  watches_.hasNotificationActiveIs(true);
}

void WriteLog::policyMapConfigChanged(Kor::Name const& policyMapName) {
  wrote("policy-map " + policyMapName.stdString());
}

void WriteLog::servicePolicyChanged(PolicyMap::ServicePolicyKey const& place) {
  wrote("service-policy " + place.direction().stdString() + " at " +
        place.intf().name().stdString());
}

void WriteLog::dependencyChanged(PolicyMap::DependencyKind kind, Kor::Name const& name) {
  wrote(wordOf(kind) + " " + name.stdString());
}

void WriteLog::countRequested(PolicyMap::PolicyMapSmKey const& policy) {
  wrote("request for counts of " + nameOf(policy));
}

void WriteLog::memberChanged(Vorel::IntfId member) {
  wrote("port-channel of " + member.name().stdString());
}

void WriteLog::intfChanged(Vorel::IntfId intf) {
  wrote("interface " + intf.name().stdString());
}

void WriteLog::routingChanged() {
  wrote("routing");
}

void WriteLog::capabilitiesChanged() {
  wrote("capabilities of the helper");
}

void WriteLog::wrote(std::string const& what) {
  journal_.testWrote(Kor::String(what));
}

}  // namespace PolicyMapTestKit
