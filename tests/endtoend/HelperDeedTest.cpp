// SPDX-License-Identifier: Apache-2.0

// What an operation of a helper may do: throw anywhere, turn the event loop, change the helper's
// capabilities. The records always agree with the state that the core keeps.

#include "support/DoingHelper.h"
#include "support/NormalForm.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::Contains;
using testing::Not;
using TestSupport::DoingHelper;
using TestSupport::Scenario;

class HelperDeed : public testing::Test {
 protected:
  HelperDeed()
      : helper(Kor::make<DoingHelper>(true, false)), scenario({.updateActions = true}, helper) {
    scenario.simplePolicyOfAllOptions();
    scenario.actionIs("pm", "c", 1, 1);
    scenario.start();
    scenario.settle();
  }
  static void fail() { throw std::runtime_error("lost the card"); }

  Kor::Ptr<DoingHelper> helper;
  Scenario scenario;
};

// Exceptions

TEST_F(HelperDeed, ACreationThatThrowsInsideAReCreationHeals) {
  helper->doInside("createPolicy", fail);
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_EQ(scenario.policyStatus()->error(), "exception: lost the card");
  EXPECT_EQ(scenario.policyStatus()->failure(ClassMapMatchOption::ipv4).operation(),
            "recreatePolicy");
  EXPECT_FALSE(scenario.record()->created());
  scenario.advance(1);
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
}

TEST_F(HelperDeed, ADeletionThatThrowsInsideAReCreationHeals) {
  helper->doInside("deletePolicy", fail);
  scenario.rule("acl", 20);
  scenario.settle();
  scenario.advance(1);
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
}

TEST_F(HelperDeed, ADeletionThatThrowsInATeardownIsTriedAgain) {
  helper->doInside("deletePolicy", fail);
  scenario.detach("Ethernet1");
  scenario.settle();
  EXPECT_TRUE(scenario.record()->created());
  ASSERT_TRUE(scenario.policyStatus());
  EXPECT_EQ(scenario.policyStatus()->error(), "exception: lost the card");
  // The interface was removed; the rules are still programmed.
  EXPECT_TRUE(scenario.policyStatus()->programmed(ClassMapMatchOption::ipv4));
  EXPECT_TRUE(scenario.policyStatus()->intfs(ClassMapMatchOption::ipv4).empty());
  EXPECT_TRUE(scenario.policyStatus()->classMapStatus("c")->programmed());
  scenario.advance(1);
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_FALSE(scenario.policyStatus());
}

TEST_F(HelperDeed, AfterARollBackThatThrowsTheStatusTellsWhatIsStillThere) {
  helper->doInside("commitPolicy", [this] {
    helper->doInside("deletePolicy", fail);
    fail();
  });
  scenario.rule("acl", 20);
  scenario.settle();
  auto const status = scenario.policyStatus();
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("Ethernet1")));
  EXPECT_TRUE(status->programmed(ClassMapMatchOption::ipv4));
  EXPECT_EQ(status->intfs(ClassMapMatchOption::ipv4).size(), 1U);
  EXPECT_TRUE(status->classMapStatus("c")->programmed());
  EXPECT_EQ(status->error(), "exception: lost the card");
  scenario.advance(1);
  EXPECT_EQ(status->error(), "");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("Ethernet1")));
}

TEST_F(HelperDeed, ADeletionThatThrowsWhileTheHelperIsLeftLeavesTheNextOneClean) {
  auto const other = PolicyMapTest::aclHelperFactory(true, false);
  helper->doInside("deletePolicy", fail);
  scenario.machine->aclHelperIs(other);
  scenario.settle();
  auto const key = PolicyMapTest::AclPolicyType({"pm", "input"}, ClassMapMatchOption::ipv4);
  EXPECT_TRUE(other->testData(key)->created());
  EXPECT_EQ(other->testData(key)->intfs(), 1U);
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_TRUE(scenario.record()->created());
}

TEST_F(HelperDeed, ADeletionThatThrowsForAnOptionNoLongerWantedIsTriedAgain) {
  helper->doInside("deletePolicy", fail);
  scenario.classMap("c")->matchDel(2);
  scenario.settle();
  scenario.advance(1);
  auto const left = PolicyMap::allMatchOptions[1];
  EXPECT_FALSE(scenario.record(left)->created());
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_TRUE(scenario.record()->created());
}

TEST_F(HelperDeed, ADeletionThatThrowsInARollBackIsFollowedByAReCreation) {
  helper->doInside("addRule", [this] {
    helper->doInside("deletePolicy", fail);
    fail();
  });
  scenario.rule("acl", 20);
  scenario.settle();
  scenario.advance(1);
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
}

TEST_F(HelperDeed, ARollBackThatThrowsIsTakenDownWhenThePolicyGoes) {
  helper->doInside("addRule", [this] {
    helper->doInside("deletePolicy", fail);
    fail();
  });
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_TRUE(scenario.record()->created());
  scenario.detach("Ethernet1");
  scenario.settle();
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_FALSE(scenario.policyStatus());
}

TEST_F(HelperDeed, ABracketThatCannotBeOpenedIsCreatedAgain) {
  helper->doInside("beginUpdateActions", fail);
  scenario.actionIs("pm", "c", 1, 5);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 5U);
  EXPECT_EQ(scenario.record()->createCount(), 2U);
  EXPECT_THAT(helper->calls(), Not(Contains("updateAction")));
  EXPECT_EQ(scenario.policyStatus()->error(), "");
}

TEST_F(HelperDeed, ABracketThatCannotBeClosedIsCreatedAgain) {
  helper->doInside("endUpdateActions", fail);
  scenario.actionIs("pm", "c", 1, 5);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 5U);
  EXPECT_EQ(scenario.record()->createCount(), 2U);
  EXPECT_EQ(scenario.policyStatus()->error(), "");
}

TEST_F(HelperDeed, AnInitialisationThatThrowsStopsNothing) {
  auto const other = Kor::make<DoingHelper>(true, false);
  other->doInside("hwInit", fail);
  scenario.machine->aclHelperIs(other);
  scenario.settle();
  EXPECT_THAT(other->calls(), Contains("commitPolicy"));
}

// Turning the event loop

class Turning : public HelperDeed, public testing::WithParamInterface<char const*> {
 protected:
  // Changes rules, interfaces and actions. Together with detach(), all operations are called.
  void change() {
    scenario.rule("acl", 20);
    scenario.attach("pm", "Ethernet2");
    scenario.settle();
    scenario.actionIs("pm", "c", 1, 5);
    scenario.settle();
  }
  void detach(char const* intf) {
    scenario.detach(intf);
    scenario.settle();
  }
};

INSTANTIATE_TEST_SUITE_P(In, Turning,
                         testing::Values("createPolicy", "recreatePolicy", "deletePolicy",
                                         "addRule", "addIntfToPolicy", "removeIntfFromPolicy",
                                         "commitPolicy", "beginUpdateActions", "updateAction",
                                         "endUpdateActions"));

TEST_P(Turning, TheLoopDuringAChangeIsHarmless) {
  helper->doInside(GetParam(), [this] { scenario.settle(); });
  change();
  detach("Ethernet2");
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 20)), 5U);
  detach("Ethernet1");
  EXPECT_FALSE(scenario.record()->created());
}

TEST_P(Turning, TheLoopWithChangesIsHarmless) {
  helper->doInside(GetParam(), [this] {
    scenario.rule("acl", 30);
    scenario.actionIs("pm", "c", 1, 6);
    scenario.attach("pm", "Ethernet3");
    scenario.settle();
  });
  change();
  detach("Ethernet1");
  detach("Ethernet2");
  EXPECT_EQ(scenario.policyStatus() ? scenario.policyStatus()->error() : "", "");
  EXPECT_EQ(scenario.record()->created(), helper->doneInside());
  detach("Ethernet3");
  EXPECT_FALSE(scenario.record()->created());
}

TEST_P(Turning, TheLoopWhileTheHelperIsReplacedIsHarmless) {
  auto const other = PolicyMapTest::aclHelperFactory(true, false);
  helper->doInside(GetParam(), [this] { scenario.settle(); });
  scenario.rule("acl", 20);
  scenario.actionIs("pm", "c", 1, 5);
  scenario.machine->aclHelperIs(other);
  scenario.settle();
  EXPECT_FALSE(scenario.record()->created());
  auto const key = PolicyMapTest::AclPolicyType({"pm", "input"}, ClassMapMatchOption::ipv4);
  ASSERT_TRUE(other->testData(key));
  EXPECT_TRUE(other->testData(key)->created());
  EXPECT_EQ(other->testData(key)->createCount(), 1U);
  EXPECT_EQ(other->testData(key)->ruleMatchs(), 2U);
  // The same in the opposite direction.
  scenario.machine->aclHelperIs(helper);
  scenario.settle();
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_FALSE(other->testData(key)->created());
}

TEST_P(Turning, AHelperThatIsTakenAwayThereIsLeft) {
  helper->doInside(GetParam(), [this] {
    scenario.machine->aclHelperDel();
    scenario.settle();
  });
  change();
  detach("Ethernet2");
  detach("Ethernet1");
  EXPECT_FALSE(scenario.record()->created());
  for (auto const option : PolicyMap::allMatchOptions) {
    EXPECT_FALSE(scenario.record(option)->created());
  }
}

// Capabilities

TEST_F(HelperDeed, WhatIsNoLongerPossibleIsRefusedAtOnceAndTriedWhenItIs) {
  Acl::IpRuleConfig deny;
  deny.permitIs(false);
  scenario.rule("acl", 20, deny);
  scenario.settle();
  helper->denyRulesAllowedIs(false);
  scenario.settle();
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_EQ(scenario.policyStatus()->error(),
            "class c: rule 20 of acl: deny rules are not allowed");
  helper->denyRulesAllowedIs(true);
  scenario.settle();
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_EQ(scenario.policyStatus()->error(), "");
}

TEST_F(HelperDeed, AChangeOfTheExpansionProgramsAgain) {
  scenario.rule("acl", 10, TestSupport::tcp(Acl::PortMatch::range(5004, 5008)));
  scenario.settle();
  auto const key = Scenario::ruleKey("c", "acl", 10);
  EXPECT_EQ(scenario.record()->subRulesForKey(key)->subRules(), 1U);
  helper->subRulesForL4PortsIs(true);
  scenario.settle();
  EXPECT_EQ(scenario.record()->subRulesForKey(key)->subRules(), 2U);
}

TEST_F(HelperDeed, AChangeOfTheExpansionOfPortChannelsMovesTheInterfaces) {
  scenario.lag->memberOfIs(TestSupport::intf("Ethernet7"), TestSupport::intf("PortChannel1"));
  scenario.attach("pm", "PortChannel1");
  scenario.settle();
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("PortChannel1")));
  helper->expandPortChannelsIs(true);
  scenario.settle();
  EXPECT_FALSE(scenario.record()->korIntf(TestSupport::intf("PortChannel1")));
  EXPECT_TRUE(scenario.record()->intf(TestSupport::intf("Ethernet7")));
}

TEST_F(HelperDeed, AFlagThatMakesNoDifferenceProgramsNothing) {
  helper->forgetCalls();
  helper->ttlSupportedIs(false);
  helper->asyncOperationsIs(true);
  helper->updateActionSupportedIs(false);
  helper->reprogramPolicyOnIntfChangeIs(true);
  scenario.settle();
  EXPECT_THAT(helper->calls(), testing::IsEmpty());
}

// Inactive machines

TEST_F(HelperDeed, AHelperGivenToAnInactiveMachineIsNotProgrammed) {
  auto const other = Kor::make<DoingHelper>(true, false);
  scenario.machine->hasNotificationActiveIs(false);
  scenario.machine->aclHelperIs(other);
  scenario.settle();
  scenario.advance(100);
  EXPECT_THAT(other->calls(), testing::IsEmpty());
  EXPECT_FALSE(scenario.record()->created());
  scenario.machine->hasNotificationActiveIs(true);
  scenario.settle();
  EXPECT_THAT(other->calls(), Contains("commitPolicy"));
}

TEST_F(HelperDeed, AHelperGivenToAZombieIsNotProgrammed) {
  auto const other = Kor::make<DoingHelper>(true, false);
  scenario.machine->korDoZombieReactors(true);
  scenario.machine->aclHelperIs(other);
  scenario.settle();
  scenario.advance(100);
  EXPECT_THAT(other->calls(), testing::IsEmpty());
}

TEST_F(HelperDeed, AnInactiveMachineStillTakesItsPoliciesDown) {
  scenario.machine->hasNotificationActiveIs(false);
  scenario.machine->cleanup();
  scenario.settle();
  EXPECT_FALSE(scenario.record()->created());
}

}  // namespace
}  // namespace endtoend
