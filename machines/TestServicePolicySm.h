// SPDX-License-Identifier: Apache-2.0
#pragma once

// TestServicePolicySm: the root of the test machines. A test says which interfaces exist, and
// creates it with testServicePolicySmFactory().

#include "machines/Toggles.h"
#include "records/Export.h"

#include <Kor/Collection.h>
#include <PolicyMap/ServicePolicySm.h>

namespace PolicyMapTest {

class TestServicePolicySm;

// Returns a new root machine whose notifications are on; never null. The arguments are those of
// PolicyMap::ServicePolicySm; any pointer may be null.
[[nodiscard]] POLICYMAPTEST_API Kor::Ptr<TestServicePolicySm> testServicePolicySmFactory(
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
    bool allowL2Intf, bool allowL3Intf, bool allowMgmtIntf);

// The machine for all policies of a system.
class POLICYMAPTEST_API TestServicePolicySm : public Toggles<PolicyMap::ServicePolicySm> {
 public:
  using Ptr = Kor::Ptr<TestServicePolicySm>;
  using PtrConst = Kor::Ptr<TestServicePolicySm const>;

  ~TestServicePolicySm() override;

  [[nodiscard]] Kor::KorType const* fwkType() const override;
  [[nodiscard]] static Kor::KorType* _fwkType();

  // False only for interfaces whose entry in nonexistentIntf is true.
  [[nodiscard]] bool intfExists(Vorel::IntfId intf) const override;
  // Returns a new TestPolicyMapSm whose notifications are on; never null.
  Kor::Ptr<PolicyMap::PolicyMapSm> createPolicyMapSm(
      PolicyMap::PolicyMapSmKey const& key,
      Kor::Ptr<PolicyMap::PolicyMapConfig const> const& policyMapConfig,
      Kor::Ptr<PolicyMap::PolicyMapStatus> const& status) override;

  // Interfaces with `true` do not exist. A change re-evaluates the interface before the write
  // returns; destroying the machine re-evaluates none.
  KOR_VALUE_COLLECTION(TestServicePolicySm, nonexistentIntf, NonexistentIntf, Vorel::IntfId, bool,
                       KOR_ON_CHANGE(handleIntf(key, false)))

 protected:
  TestServicePolicySm(Kor::Ptr<PolicyMap::PolicyMapTypeConfig const> const& policyConfig,
                      Kor::Ptr<PolicyMap::ClassMapTypeConfig const> const& classTypeConfig,
                      Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir const> const& statusRequestDir,
                      Kor::Ptr<PolicyMap::PolicyMapTypeStatus> const& status,
                      Kor::Ptr<Acl::Config const> const& aclConfig,
                      Kor::Ptr<Lag::Input::Config const> const& lagConfig,
                      Kor::Ptr<Ip::Status const> const& ipStatus,
                      Kor::Ptr<Ip6::Status const> const& ip6Status,
                      Kor::Ptr<Routing::RoutingInfo const> const& routingInfo,
                      Kor::Ptr<Routing6::RoutingInfo const> const& routing6Info,
                      Kor::Ptr<PolicyMap::PolicyMapAclHelper> const& aclHelper,
                      Kor::Ptr<Acl::AclDiff> const& aclDiff, bool allowL2Intf, bool allowL3Intf,
                      bool allowMgmtIntf);

 private:
  friend decltype(testServicePolicySmFactory) testServicePolicySmFactory;
};

}  // namespace PolicyMapTest
