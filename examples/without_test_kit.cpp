// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"
#include "machines/PolicyMapTestSm.h"

#include <Kor/EventLoop.h>

#include <gtest/gtest.h>

using namespace PolicyMap;
using namespace PolicyMapTest;

TEST(WithoutTestKit, TheActionOfAClassReachesItsRule) {
  auto const acls = Kor::make<Acl::Config>();
  acls->ipAclIs("web")->ruleIs(10, Acl::IpRuleConfig());
  auto const matches = Kor::make<ClassMapSubConfig>("web");
  matches->matchIs(1, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "web"));
  auto const classMaps = Kor::make<ClassMapTypeConfig>();
  classMaps->classMapConfigIs("web")->currentSubConfigIs(matches);
  auto const action = testAction1Factory("web", Zub::UniqueId::next());
  action->valueIs(7);
  auto const policy = Kor::make<PolicyMapSubConfig>("edge");
  policy->classPrioIs("web", 10);
  policy->classActionIs("web")->actionIs(action->actionType(), action);
  auto const policies = Kor::make<PolicyMapTypeConfig>();
  policies->policyMapConfigIs("edge")->currentSubConfigIs(policy);
  policies->servicePolicyIs({Vorel::IntfId("Ethernet1"), "input"}, "edge");
  auto const helper = aclHelperFactory(true, false);
  auto const machine = testServicePolicySmFactory(policies, classMaps, {}, {}, acls, {}, {}, {}, {},
                                                  {}, helper, {}, true, true, true);
  Kor::EventLoop::global().runUntilIdle();
  auto const record = helper->testData({{"edge", "input"}, ClassMapMatchOption::ipv4});
  EXPECT_EQ(record->ruleAction1({"web", "web", 10, ClassMapMatchOption::ipv4}), 7U);
}
