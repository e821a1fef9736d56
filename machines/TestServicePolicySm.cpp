// SPDX-License-Identifier: Apache-2.0
#include "machines/TestServicePolicySm.h"

#include "machines/TestPolicyMapSm.h"

namespace PolicyMapTest {

TestServicePolicySm::TestServicePolicySm(
    Kor::Ptr<PolicyMap::PolicyMapTypeConfig const> const& policyConfig,
    Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classTypeConfig,
    Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const> const& statusRequestDir,
    Kor::Ptr<PolicyMap::PolicyMapTypeStatus> const& status,
    Kor::Ptr<Acl::Config const> const& aclConfig,
    Kor::Ptr<Lag::Input::Config const> const& lagConfig, Kor::Ptr<Ip::Status const> const& ipStatus,
    Kor::Ptr<Ip6::Status const> const& ip6Status,
    Kor::Ptr<Routing::RoutingInfo const> const& routingInfo,
    Kor::Ptr<Routing6::RoutingInfo const> const& routing6Info,
    Kor::Ptr<PolicyMap::PolicyMapAclHelper> const& aclHelper, Kor::Ptr<Acl::AclDiff> const& aclDiff,
    bool allowL2Intf, bool allowL3Intf, bool allowMgmtIntf)
    : Toggles(policyConfig, classTypeConfig, statusRequestDir, status, aclConfig, lagConfig,
              ipStatus, ip6Status, routingInfo, routing6Info, aclHelper, aclDiff, allowL2Intf,
              allowL3Intf, allowMgmtIntf) {}

TestServicePolicySm::~TestServicePolicySm() {
  TestServicePolicySm::korDoZombieReactors(true);
}

Kor::KorType const* TestServicePolicySm::fwkType() const {
  return _fwkType();
}
Kor::KorType* TestServicePolicySm::_fwkType() {
  static Kor::KorType type("PolicyMapTest::TestServicePolicySm", ServicePolicySm::_fwkType());
  return &type;
}

bool TestServicePolicySm::intfExists(Vorel::IntfId intf) const {
  return !nonexistentIntf(intf);
}

Kor::Ptr<PolicyMap::PolicyMapSm> TestServicePolicySm::createPolicyMapSm(
    PolicyMap::PolicyMapSmKey const& key,
    Kor::Ptr<PolicyMap::PolicyMapConfig const> const& policyMapConfig,
    Kor::Ptr<PolicyMap::PolicyMapStatus> const& status) {
  return TestPolicyMapSm::make(commonData(), key, policyMapConfig, classTypeConfig(), status);
}

Kor::Ptr<TestServicePolicySm> testServicePolicySmFactory(
    Kor::Ptr<PolicyMap::PolicyMapTypeConfig const> const& policyConfig,
    Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classTypeConfig,
    Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const> const& statusRequestDir,
    Kor::Ptr<PolicyMap::PolicyMapTypeStatus> const& status,
    Kor::Ptr<Acl::Config const> const& aclConfig,
    Kor::Ptr<Lag::Input::Config const> const& lagConfig, Kor::Ptr<Ip::Status const> const& ipStatus,
    Kor::Ptr<Ip6::Status const> const& ip6Status,
    Kor::Ptr<Routing::RoutingInfo const> const& routingInfo,
    Kor::Ptr<Routing6::RoutingInfo const> const& routing6Info,
    Kor::Ptr<PolicyMap::PolicyMapAclHelper> const& aclHelper, Kor::Ptr<Acl::AclDiff> const& aclDiff,
    bool allowL2Intf, bool allowL3Intf, bool allowMgmtIntf) {
  auto machine = Kor::validPtr(Kor::Ptr<TestServicePolicySm>(
      new TestServicePolicySm(policyConfig, classTypeConfig, statusRequestDir, status, aclConfig,
                              lagConfig, ipStatus, ip6Status, routingInfo, routing6Info, aclHelper,
                              aclDiff, allowL2Intf, allowL3Intf, allowMgmtIntf)));
  machine->hasNotificationActiveIs(true);
  return machine;
}

}  // namespace PolicyMapTest
