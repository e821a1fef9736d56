// SPDX-License-Identifier: Apache-2.0

// A helper that refuses to create a policy without recording anything.

#include "helper/AclHelper.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using TestSupport::Scenario;

class SmallHelper final : public PolicyMapTest::AclHelper {
 public:
  using AclHelper::AclHelper;
  bool full = false;
  bool busy = false;
  std::vector<std::string> calls;

  Kor::String createPolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policy,
                           ClassMapMatchOption option) override {
    calls.emplace_back("create");
    return full ? notCarriedOut("no room") : AclHelper::createPolicy(policy, option);
  }
  Kor::String deletePolicy(PolicyMap::PolicyMapSmCommonData::PtrConst const& policy,
                           ClassMapMatchOption option) override {
    calls.emplace_back("delete");
    return busy ? notCarriedOut("busy") : AclHelper::deletePolicy(policy, option);
  }
  std::vector<std::string> taken() { return std::exchange(calls, {}); }
};

class Refusal : public testing::Test {
 protected:
  Refusal() {
    scenario.simplePolicy();
    scenario.start();
  }

  Kor::Ptr<SmallHelper> const helper = Kor::make<SmallHelper>(false, false);
  Scenario scenario{{}, helper};
};

TEST_F(Refusal, OfRulesIsReportedAfterADeletionThatFailedAtFirst) {
  scenario.settle();
  helper->busy = true;
  scenario.machine->nonexistentIntfIs(TestSupport::intf("Ethernet1"), true);
  scenario.settle();
  scenario.classMap("c")->matchIs(9, PolicyMap::ClassMapMatch::classMap("c"));
  scenario.settle();
  helper->busy = false;
  scenario.advance(60);
  EXPECT_FALSE(scenario.record()->created());
  for (ClassMapMatchOption const option : PolicyMap::allMatchOptions) {
    EXPECT_EQ(scenario.policyStatus()->failure(option).error(), "class-map c matches itself: c > c")
        << option;
  }
}

TEST_F(Refusal, OfACreationIsNotFollowedByADeletion) {
  helper->full = true;
  scenario.settle();
  EXPECT_THAT(helper->taken(), ElementsAre("create"));
  auto const status = scenario.status->policyMapStatus({"pm", "input"});
  EXPECT_EQ(status->failure(ClassMapMatchOption::ipv4).error(), "no room");
  EXPECT_EQ(status->failure(ClassMapMatchOption::ipv4).operation(), "createPolicy");
  helper->full = false;
  scenario.advance(1);
  EXPECT_THAT(helper->taken(), ElementsAre("create"));
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("Ethernet1")));
  EXPECT_EQ(status->error(), "");
}

TEST_F(Refusal, OfARecreationLeavesNoPolicy) {
  scenario.settle();
  helper->full = true;
  scenario.rule("acl", 20);
  helper->taken();
  scenario.settle();
  EXPECT_THAT(helper->taken(), ElementsAre("delete", "create"));
  EXPECT_FALSE(scenario.record()->created());
  auto const status = scenario.status->policyMapStatus({"pm", "input"});
  EXPECT_FALSE(status->programmed(ClassMapMatchOption::ipv4));
  EXPECT_EQ(status->appliedIntfs(), 0U);
  helper->full = false;
  scenario.advance(1);
  EXPECT_THAT(helper->taken(), ElementsAre("create"));
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("Ethernet1")));
}

TEST_F(Refusal, IsGoneWhenThePolicyIsDetached) {
  helper->full = true;
  scenario.settle();
  scenario.policies->servicePolicyDel({TestSupport::intf("Ethernet1"), "input"});
  helper->taken();
  scenario.settle();
  EXPECT_THAT(helper->taken(), ElementsAre());
  EXPECT_EQ(scenario.status->policyMapStatuss(), 0U);
}

}  // namespace
}  // namespace endtoend
