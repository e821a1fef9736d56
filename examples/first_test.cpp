// SPDX-License-Identifier: Apache-2.0
#include "helper/AclHelper.h"
#include "machines/PolicyMapTestSm.h"

#include <Kor/EventLoop.h>

#include <gtest/gtest.h>

using namespace PolicyMap;

TEST(FirstTest, ClassWithOneRuleIsProgrammedWithItsAction) {
  auto const acls = Kor::make<Acl::Config>();
  acls->ipAclIs("web")->ruleIs(10, Acl::IpRuleConfig());
  auto const matches = Kor::make<ClassMapSubConfig>("web");
  matches->matchIs(1, ClassMapMatch::acl(ClassMapMatchOption::ipv4, "web"));
  auto const classMaps = Kor::make<ClassMapTypeConfig>();
  classMaps->classMapConfigIs("web")->currentSubConfigIs(matches);
  auto const action = PolicyMapTest::testAction1Factory("web", Zub::UniqueId::next());
  action->valueIs(7);
  auto const classes = Kor::make<PolicyMapSubConfig>("edge");
  classes->classPrioIs("web", 10);
  classes->classActionIs("web")->actionIs(action->actionType(), action);
  auto const policyMaps = Kor::make<PolicyMapTypeConfig>();
  policyMaps->policyMapConfigIs("edge")->currentSubConfigIs(classes);
  policyMaps->servicePolicyIs({Vorel::IntfId("Ethernet1"), "input"}, "edge");

  auto const helper = PolicyMapTest::aclHelperFactory(true, false);
  auto const machine = PolicyMapTest::testServicePolicySmFactory(
      policyMaps, classMaps, nullptr, nullptr, acls, nullptr, nullptr, nullptr, nullptr, nullptr,
      helper, nullptr, true, true, true);
  Kor::EventLoop::global().runUntilIdle();

  auto const record = helper->testData({{"edge", "input"}, ClassMapMatchOption::ipv4});
  ASSERT_TRUE(record);
  EXPECT_TRUE(record->created());
  EXPECT_EQ(record->ruleAction1({"web", "web", 10, ClassMapMatchOption::ipv4}), 7U);
}
