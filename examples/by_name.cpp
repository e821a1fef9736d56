// SPDX-License-Identifier: Apache-2.0
#include <Kor/ByName.h>
#include <Kor/EventLoop.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

using Kor::construct;
using Kor::GenericRef;

TEST(ByName, AFaultIsReportedAndGoneOnceItIsCleared) {
  ASSERT_NE(dlopen("libPolicyMapTest.so", RTLD_NOW), nullptr) << dlerror();
  GenericRef const acls = construct("Acl::Config", "acl");
  acls["ipAcl"]["web"].create()["rule"][10] = construct("Acl::IpRuleConfig");
  GenericRef const matches = construct("PolicyMap::ClassMapSubConfig", "web");
  matches["match"][1] = construct("PolicyMap::ClassMapMatch", "acl", "ipv4", "web", nullptr);
  GenericRef const classMaps = construct("PolicyMap::ClassMapTypeConfig", "");
  classMaps["classMapConfig"]["web"].create()["currentSubConfig"] = matches;
  GenericRef const policy = construct("PolicyMap::PolicyMapSubConfig", "edge");
  policy["classPrio"]["web"] = 10;
  policy["classAction"]["web"].create();
  GenericRef const policies = construct("PolicyMap::PolicyMapTypeConfig", "");
  policies["policyMapConfig"]["edge"].create()["currentSubConfig"] = policy;
  policies["servicePolicy"][construct("PolicyMap::ServicePolicyKey", "Ethernet1", "input")] =
      "edge";
  GenericRef const status = construct("PolicyMap::PolicyMapTypeStatus", "");
  GenericRef const helper = construct("PolicyMapTest::AclHelper", true, false);
  helper["commitError"] = "table full";

  Kor::EventLoop::global().virtualTimeIs(true);
  GenericRef const machine =
      construct("PolicyMapTest::TestServicePolicySm", policies, classMaps, nullptr, status, acls,
                nullptr, nullptr, nullptr, nullptr, nullptr, helper, nullptr, true, true, true);
  Kor::EventLoop::global().runUntilIdle();
  GenericRef const key = construct("PolicyMap::PolicyMapSmKey", "edge", "input");
  EXPECT_EQ(status["policyMapStatus"][key]["error"], "table full");

  helper["commitError"] = "";
  Kor::EventLoop::global().runFor(1);
  EXPECT_EQ(status["policyMapStatus"][key]["error"], "");
  GenericRef const record =
      helper["testData"][construct("PolicyMapTest::AclPolicyType", key, "ipv4")].get();
  EXPECT_EQ(record["created"], true);
  EXPECT_EQ(record["ruleMatch"].size(), 1U);
}
