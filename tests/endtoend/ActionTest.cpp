// SPDX-License-Identifier: Apache-2.0
#include "machines/TestClassCommonData.h"
#include "support/NormalForm.h"
#include "support/Scenario.h"
#include "support/TraceRecorder.h"

#include <PolicyMap/ClassMapSm.h>

#include <gmock/gmock.h>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using TestSupport::counts;
using TestSupport::Scenario;

// A programmed simple policy whose class has action 1 with value 7.
class Actions : public testing::Test {
 protected:
  explicit Actions(bool updateActions = false) : scenario({.updateActions = updateActions}) {
    scenario.simplePolicy();
    scenario.actionIs("pm", "c", 1, 7);
    scenario.start();
    scenario.settle();
  }
  [[nodiscard]] std::array<std::uint32_t, 3> programmed(char const* className = "c",
                                                        char const* list = "acl") const {
    auto const key = Scenario::ruleKey(className, list, 10);
    return {scenario.record()->ruleAction1(key), scenario.record()->ruleAction2(key),
            scenario.record()->ruleAction3(key)};
  }

  Scenario scenario;
};

class ActionsInPlace : public Actions {
 protected:
  ActionsInPlace() : Actions(true) {}
};

TEST_F(Actions, AChangedValueReCreatesThePolicyWhereTheHelperCannotUpdate) {
  scenario.actionIs("pm", "c", 1, 9);
  EXPECT_THAT(programmed(), ElementsAre(7, 0, 0));
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(9, 0, 0));
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(ActionsInPlace, AChangedValueIsUpdatedWithoutACreation) {
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(9, 0, 0));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 1/1, created, clean");
}

TEST_F(ActionsInPlace, ManyChangesBeforeTheLoopTurnsAreOneUpdate) {
  for (std::uint32_t value = 10; value < 20; ++value) {
    scenario.actionIs("pm", "c", 1, value);
  }
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(19, 0, 0));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 1/1, created, clean");
}

TEST_F(ActionsInPlace, TheSameValueAgainProgramsNothing) {
  scenario.actionIs("pm", "c", 1, 7);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST_F(ActionsInPlace, AnEqualActionInPlaceOfThePresentOneProgramsNothing) {
  auto const equal = PolicyMapTest::testAction1Factory("elsewhere", Zub::UniqueId::next());
  equal->valueIs(7);
  auto const actions = scenario.policy("pm")->classActionIs("c");
  actions->actionIs(PolicyMap::ActionType{1}, equal);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  // The machine now watches the new action.
  equal->valueIs(8);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(8, 0, 0));
}

TEST_F(ActionsInPlace, AnotherActionInPlaceOfThePresentOneIsOneUpdate) {
  auto const other = PolicyMapTest::testAction1Factory("c", Zub::UniqueId::next());
  other->valueIs(11);
  scenario.policy("pm")->classActionIs("c")->actionIs(PolicyMap::ActionType{1}, other);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(11, 0, 0));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 1/1, created, clean");
}

TEST_F(ActionsInPlace, EveryChangedClassIsABracketOfItsOwn) {
  scenario.rule("other", 10);
  scenario.classMatches("d", "other");
  scenario.usesClass("pm", "d", 20);
  scenario.actionIs("pm", "d", 1, 1);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  scenario.actionIs("pm", "c", 1, 100);
  scenario.actionIs("pm", "d", 1, 200);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(100, 0, 0));
  EXPECT_THAT(programmed("d", "other"), ElementsAre(200, 0, 0));
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 3, update 2/2, created, clean");
}

TEST_F(ActionsInPlace, OneBracketCountsOnEveryCreatedOption) {
  scenario.rule("acl6", 10, TestSupport::tcp6());
  scenario.classMatches("c", "acl6", ClassMapMatchOption::ipv6, 2);
  scenario.settle();
  auto const other = scenario.record(ClassMapMatchOption::ipv6);
  EXPECT_EQ(counts(other), "create 1, commit 1, update 0/0, created, clean");
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 1/1, created, clean");
  EXPECT_EQ(counts(other), "create 1, commit 2, update 1/1, created, clean");
  EXPECT_EQ(other->ruleAction1(Scenario::ruleKey("c", "acl6", 10, ClassMapMatchOption::ipv6)), 9U);
}

TEST_F(ActionsInPlace, EverySubRuleIsUpdated) {
  scenario.helper->subRulesForL4PortsIs(true);
  scenario.rule("acl", 10, TestSupport::tcp(Acl::PortMatch::range(5004, 5008)));
  scenario.settle();
  TestSupport::TraceRecorder trace("PolicyMapTestSm", 8);
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  EXPECT_EQ(std::count_if(trace.lines().begin(), trace.lines().end(),
                          [](std::string const& line) {
                            return line.find("AclHelper::updateAction(") != std::string::npos;
                          }),
            2);
}

TEST_F(Actions, ARuleAndAnActionChangedInOneTurnAreOneReCreation) {
  scenario.helper->updateActionSupportedIs(true);
  scenario.rule("acl", 10, TestSupport::tcp(Acl::PortMatch::eq(80)));
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(9, 0, 0));
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(ActionsInPlace, AnAddedActionIsProgrammed) {
  scenario.actionIs("pm", "c", 3, 5);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(7, 0, 5));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 1/1, created, clean");
}

TEST_F(ActionsInPlace, AnAddedActionOfValueZeroProgramsNothing) {
  scenario.actionIs("pm", "c", 3, 0);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST_F(ActionsInPlace, ARemovedActionIsProgrammedAsZero) {
  scenario.actionDel("pm", "c", 1);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(0, 0, 0));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 1/1, created, clean");
}

TEST_F(ActionsInPlace, ARemovedClassActionTakesAllItsActionsAlong) {
  scenario.actionIs("pm", "c", 2, 5);
  scenario.settle();
  scenario.policy("pm")->classActionDel("c");
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(0, 0, 0));
}

TEST_F(ActionsInPlace, AnActionOfUnknownKindIsTracedOnceAndLeftOut) {
  TestSupport::TraceRecorder trace;
  auto const strange =
      Kor::make<PolicyMap::Action>(Kor::Name("c"), PolicyMap::ActionType{9}, Zub::UniqueId::next());
  scenario.policy("pm")->classActionIs("c")->actionIs(PolicyMap::ActionType{9}, strange);
  scenario.settle();
  scenario.actionIs("pm", "c", 1, 8);
  scenario.settle();
  EXPECT_THAT(trace.lines(), ElementsAre("PolicyMapTestSm|0|Unexpected action type 9"));
  EXPECT_THAT(programmed(), ElementsAre(8, 0, 0));
  auto const policySm = scenario.machine->policyMapSm({"pm", "input"});
  EXPECT_EQ(policySm->classMapSm("c")->actionSms(), 1U);
}

TEST_F(ActionsInPlace, ActionsArriveInTheCommonDataBeforeAnythingIsProgrammed) {
  scenario.actionIs("pm", "c", 1, 9);
  auto const data = scenario.machine->policyMapSm({"pm", "input"})
                        ->classMapSm("c")
                        ->classCommonData()
                        .as<PolicyMapTest::TestClassCommonData>();
  ASSERT_TRUE(data);
  EXPECT_EQ(data->action1Value(), 9U);
  EXPECT_THAT(programmed(), ElementsAre(7, 0, 0));
}

TEST_F(ActionsInPlace, TheSupportIsReadWhenThePassStarts) {
  scenario.helper->updateActionSupportedIs(false);
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  scenario.helper->updateActionSupportedIs(true);
  scenario.actionIs("pm", "c", 1, 10);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 3, update 1/1, created, clean");
}

TEST_F(ActionsInPlace, ATestsOwnWriteOfTheCommonDataIsProgrammedWithTheNextUpdate) {
  auto const data = scenario.machine->policyMapSm({"pm", "input"})
                        ->classMapSm("c")
                        ->classCommonData()
                        .as<PolicyMapTest::TestClassCommonData>();
  data->action2ValueIs(77);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(7, 0, 0));
  data->updateAclActionsInc(1);
  scenario.settle();
  EXPECT_THAT(programmed(), ElementsAre(7, 77, 0));
}

}  // namespace
}  // namespace endtoend
