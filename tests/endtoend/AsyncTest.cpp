// SPDX-License-Identifier: Apache-2.0
#include "support/NormalForm.h"
#include "support/Scenario.h"
#include "support/TraceRecorder.h"
#include "support/Watcher.h"

#include <gmock/gmock.h>

#include <functional>

namespace endtoend {
namespace {

using PolicyMapTest::AclHelper;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::counts;
using TestSupport::intf;
using TestSupport::normalForm;
using TestSupport::normalRecord;
using TestSupport::Scenario;

using enum PolicyMap::ClassMapMatchOption;
constexpr char const* done = "create 1, commit 1, update 0/0, created, clean";

// A simple policy on a helper whose results arrive later.
class Async : public testing::Test {
 protected:
  Async() {
    scenario.helper->asyncOperationsIs(true);
    scenario.simplePolicy();
  }
  void start() {
    scenario.start();
    scenario.settle();
  }
  // Programs the policy: one result for the interface, one for the commit.
  void program() {
    start();
    scenario.trigger();
    scenario.trigger();
    ASSERT_EQ(counts(scenario.record()), done);
    ASSERT_TRUE(scenario.policyStatus()->programmed(ipv4));
  }
  [[nodiscard]] std::string error(char const* policy = "pm") const {
    auto const status = scenario.policyStatus(policy);
    return status ? status->error().stdString() : "no status";
  }
  // Configures policy-map "second" with class "d" on list "other", at Ethernet2.
  void secondPolicy() {
    scenario.rule("other", 5);
    scenario.classMatches("d", "other");
    scenario.usesClass("second", "d", 1);
    scenario.attach("second", "Ethernet2");
  }

  Scenario scenario;
};

TEST_F(Async, EveryInterfaceAndTheCommitWaitForTheirResult) {
  scenario.attach("pm", "Ethernet2");
  start();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, created, dirty");
  EXPECT_THAT(normalRecord(*scenario.record()).intfs, ElementsAre(intf("Ethernet1")));
  scenario.trigger();
  EXPECT_THAT(normalRecord(*scenario.record()).intfs,
              ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), done);
  ASSERT_TRUE(scenario.policyStatus());
  EXPECT_EQ(scenario.machine->policyMapSm({"pm", "input"})->timeProgrammeds(), 0U);
  scenario.trigger();
  EXPECT_EQ(scenario.machine->policyMapSm({"pm", "input"})->timeProgrammeds(), 1U);
  EXPECT_TRUE(scenario.policyStatus()->programmed(ipv4));
}

TEST_F(Async, ResumesInsideTheTriggerWithoutTheLoop) {
  start();
  scenario.helper->asyncTriggerInc(1);
  EXPECT_EQ(counts(scenario.record()), done);
}

TEST_F(Async, ARemovedInterfaceWaits) {
  scenario.attach("pm", "Ethernet2");
  start();
  scenario.trigger();
  scenario.trigger();
  scenario.trigger();
  scenario.detach("Ethernet2");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), done);
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 0/0, created, clean");
}

TEST_F(Async, ATeardownWaitsForTheInterfaceAndThenDeletes) {
  program();
  scenario.policies->policyMapConfigDel("pm");
  scenario.settle();
  EXPECT_TRUE(scenario.record()->created());
  scenario.trigger();
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_FALSE(scenario.policyStatus());
}

TEST_F(Async, AnUpdateInPlaceWaitsForItsCommitAlone) {
  scenario.helper->updateActionSupportedIs(true);
  scenario.actionIs("pm", "c", 1, 7);
  program();
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 9U);
  scenario.actionIs("pm", "c", 1, 10);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 9U);
  scenario.trigger();
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 10U);
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 3, update 2/2, created, clean");
}

// The operation that fails, and the number of successful results before it.
struct LateError {
  char const* name;
  void (AclHelper::*errorIs)(Kor::String8);
  int goodResults;
  char const* operation;
};

class AsyncErrors : public Async, public testing::WithParamInterface<LateError> {};

TEST_P(AsyncErrors, ComeWithTheResultAndRollBack) {
  LateError const& late = GetParam();
  ((*scenario.helper).*late.errorIs)("table full");
  start();
  for (int i = 0; i < late.goodResults; ++i) {
    scenario.trigger();
  }
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_EQ(error(), "");
  scenario.trigger();
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_EQ(error(), "table full");
  EXPECT_EQ(scenario.policyStatus()->failure(ipv4).operation(), late.operation);
  ((*scenario.helper).*late.errorIs)("");
  scenario.advance(1);
  scenario.trigger();
  scenario.trigger();
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_EQ(error(), "");
}

INSTANTIATE_TEST_SUITE_P(
    OfOperations, AsyncErrors,
    testing::Values(LateError{"addIntf", &AclHelper::addIntfErrorIs, 0, "addIntfToPolicy"},
                    LateError{"commit", &AclHelper::commitErrorIs, 1, "commitPolicy"}),
    [](auto const& one) { return std::string(one.param.name); });

TEST_F(Async, AFailingRemovalRollsBackWithItsResult) {
  scenario.attach("pm", "Ethernet2");
  start();
  scenario.trigger();
  scenario.trigger();
  scenario.trigger();
  scenario.helper->removeIntfErrorIs("busy");
  scenario.detach("Ethernet2");
  scenario.settle();
  EXPECT_EQ(error(), "");
  scenario.trigger();
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_EQ(error(), "busy");
}

TEST_F(Async, TheTextIsThatOfTheCallNotThatOfTheDelivery) {
  start();
  scenario.helper->addIntfErrorIs("too late");
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(error(), "");
  EXPECT_EQ(counts(scenario.record()), done);
}

TEST_F(Async, PseudoAsynchronousOperationsAreDoneAtOnce) {
  scenario.helper->pseudoAsyncIs(true);
  scenario.attach("pm", "Ethernet2");
  start();
  EXPECT_EQ(counts(scenario.record()), done);
  EXPECT_TRUE(scenario.policyStatus()->programmed(ipv4));
  scenario.helper->commitErrorIs("full");
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_EQ(error(), "full");
  EXPECT_FALSE(scenario.record()->created());
}

TEST_F(Async, ThousandInterfacesInOnePassDoNotNest) {
  scenario.helper->pseudoAsyncIs(true);
  for (int i = 2; i <= 5000; ++i) {
    scenario.attach("pm", ("Ethernet" + std::to_string(i)).c_str());
  }
  start();
  EXPECT_EQ(scenario.record()->intfs(), 5000U);
  EXPECT_EQ(counts(scenario.record()), done);
}

// Delivers `extra` additional results inside every asynchronous operation.
class Impatient : public AclHelper::NotifieeConst {
 public:
  Impatient(AclHelper* helper, int extra) : NotifieeConst(helper), helper_(helper), extra_(extra) {}
  void onAsyncOperationResult() override {
    if (extra_ > 0) {
      --extra_;
      helper_->handleAsyncTrigger();
    }
  }

 private:
  AclHelper* helper_;
  int extra_;
};

TEST_F(Async, OfSeveralResultsInsideAnOperationTheFirstCounts) {
  scenario.helper->pseudoAsyncIs(true);
  TestSupport::TraceRecorder trace("PolicyMap", 1);
  auto const impatient = Kor::make<Impatient>(scenario.helper.get(), 1);
  start();
  EXPECT_EQ(counts(scenario.record()), done);
  EXPECT_EQ(error(), "");
  EXPECT_THAT(trace.lines(),
              ElementsAre("PolicyMap|1|result nobody waits for: "
                          "Value('PolicyMap::AsyncOperationResult', ** {'error': '', 'time': "
                          "0.0})"));
  impatient->notifierIs(nullptr);
}

TEST_F(Async, ResultsNobodyWaitsForAreTracedAndChangeNothing) {
  program();
  auto const before = describe(normalForm(*scenario.helper));
  TestSupport::TraceRecorder trace("PolicyMap", 1);
  scenario.helper->scheduleAsyncResult("nobody's");
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(trace.lines().size(), 2U);
  EXPECT_EQ(describe(normalForm(*scenario.helper)), before);
  EXPECT_EQ(counts(scenario.record()), done);
  EXPECT_EQ(error(), "");
}

TEST_F(Async, AnyResultCompletesTheOutstandingOperation) {
  start();
  scenario.helper->scheduleAsyncResult("from elsewhere");
  scenario.trigger();
  EXPECT_EQ(error(), "from elsewhere");
  EXPECT_FALSE(scenario.record()->created());
}

TEST_F(Async, SwitchingItOffReleasesNothing) {
  start();
  scenario.helper->asyncOperationsIs(false);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, created, dirty");
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), done);
  EXPECT_TRUE(scenario.policyStatus()->programmed(ipv4));
}

TEST_F(Async, NoResultWithinTheTimeOutIsAFailure) {
  start();
  scenario.advance(29.9);
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_EQ(error(), "");
  scenario.advance(0.1);
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_EQ(error(), "no result within 30 seconds");
  EXPECT_EQ(scenario.policyStatus()->failure(ipv4).operation(), "addIntfToPolicy");
  // It is retried after one second. This time the result arrives.
  scenario.advance(1);
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 1, update 0/0, created, clean");
  EXPECT_EQ(error(), "");
}

TEST_F(Async, TheTimeOutIsAnAttributeOfTheMachine) {
  scenario.start();
  scenario.machine->asyncTimeoutIs(2.5);
  scenario.settle();
  scenario.advance(2.4);
  EXPECT_EQ(error(), "");
  scenario.advance(0.1);
  EXPECT_EQ(error(), "no result within 2.5 seconds");
}

TEST_F(Async, EveryOperationHasTheWholeTimeOut) {
  start();
  scenario.advance(29);
  scenario.trigger();
  scenario.advance(29);
  EXPECT_EQ(error(), "");
  scenario.trigger();
  scenario.advance(100);
  EXPECT_EQ(error(), "");
  EXPECT_EQ(counts(scenario.record()), done);
}

TEST_F(Async, ALateResultIsDropped) {
  start();
  scenario.advance(30);
  TestSupport::TraceRecorder trace("PolicyMap", 1);
  scenario.trigger();
  EXPECT_EQ(trace.lines().size(), 1U);
  EXPECT_FALSE(scenario.record()->created());
}

TEST_F(Async, ATimeOutInATeardownDeletesAllTheSame) {
  program();
  scenario.policies->policyMapConfigDel("pm");
  scenario.settle();
  scenario.advance(30);
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_FALSE(scenario.policyStatus());
}

TEST_F(Async, ChangesMeanwhileAreTakenUpByTheNextPass) {
  start();
  scenario.rule("acl", 20);
  scenario.attach("pm", "Ethernet2");
  scenario.actionIs("pm", "c", 1, 7);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_THAT(normalRecord(*scenario.record()).intfs,
              ElementsAre(intf("Ethernet1"), intf("Ethernet2")));
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 7U);
}

TEST_F(Async, AnInterfaceThatLeavesWhileItIsAddedIsRemovedAfterwards) {
  scenario.attach("pm", "Ethernet2");
  start();
  scenario.detach("Ethernet1");
  for (int results = 0; results < 3; ++results) {
    scenario.trigger();
  }
  EXPECT_THAT(normalRecord(*scenario.record()).intfs, ElementsAre(intf("Ethernet2")));
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 2, update 0/0, created, clean");
}

TEST_F(Async, APolicyRemovedWhileItWaitsFinishesItsPassAndIsTakenDown) {
  start();
  scenario.policies->policyMapConfigDel("pm");
  scenario.settle();
  EXPECT_TRUE(scenario.policyStatus());
  scenario.trigger();
  scenario.trigger();
  EXPECT_TRUE(scenario.record()->created());
  scenario.trigger();
  EXPECT_FALSE(scenario.record()->created());
  EXPECT_FALSE(scenario.policyStatus());
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
}

TEST_F(Async, APolicyRemovedAndBackWhileItWaitsIsNotTakenDown) {
  start();
  auto const classesOfIt = scenario.policy("pm");
  scenario.policies->policyMapConfigDel("pm");
  scenario.settle();
  scenario.policies->policyMapConfigIs("pm")->currentSubConfigIs(classesOfIt);
  scenario.settle();
  scenario.trigger();
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), done);
}

TEST_F(Async, AClassRemovedWhileItsPolicyWaitsGoesWithTheNextPass) {
  secondPolicy();
  scenario.usesClass("pm", "d", 20);
  start();
  scenario.policy("pm")->classPrioDel("c");
  scenario.classes->classMapConfigDel("c");
  for (int results = 0; results < 10; ++results) {
    scenario.trigger();
  }
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
  EXPECT_TRUE(scenario.record()->korRuleMatch(Scenario::ruleKey("d", "other", 5)));
}

TEST_F(Async, OneOperationIsOutstandingPerHelper) {
  secondPolicy();
  start();
  EXPECT_TRUE(scenario.record());
  EXPECT_FALSE(scenario.record(ipv4, "input", "second"));
  scenario.trigger();
  EXPECT_FALSE(scenario.record(ipv4, "input", "second"));
  scenario.trigger();
  EXPECT_TRUE(scenario.record(ipv4, "input", "second"));
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")), done);
}

TEST_F(Async, AFailedPolicyGivesItsTurnAway) {
  secondPolicy();
  scenario.helper->addIntfErrorIs("full");
  start();
  scenario.helper->addIntfErrorIs("");
  scenario.trigger();
  EXPECT_EQ(error(), "full");
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")), done);
  EXPECT_EQ(error("second"), "");
}

TEST_F(Async, OnlyTheTimeOutHoldsUpTheOthers) {
  secondPolicy();
  start();
  scenario.advance(30);
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")), done);
  EXPECT_EQ(error(), "no result within 30 seconds");
}

TEST_F(Async, AMachineDestroyedWhileItWaitsLeavesTheRecordAndHearsNoResult) {
  start();
  scenario.machine = nullptr;
  TestSupport::TraceRecorder trace("PolicyMap", 1);
  scenario.trigger();
  scenario.advance(100);
  EXPECT_EQ(trace.lines().size(), 1U);
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, created, dirty");
}

TEST_F(Async, AMachineDestroyedWhileItWaitsCallsNoOperationForItsOtherPolicies) {
  secondPolicy();
  start();
  scenario.machine = nullptr;
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 1U);
}

TEST_F(Async, AMachineDestroyedWhileItWaitsGivesTheTurnToAnother) {
  start();
  auto const others = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  auto const subConfig = Kor::make<PolicyMap::PolicyMapSubConfig>(Kor::Name("pm2"));
  subConfig->classPrioIs("c", 1);
  others->policyMapConfigIs("pm2")->currentSubConfigIs(subConfig);
  others->servicePolicyIs({intf("Ethernet2"), "input"}, "pm2");
  auto const second = scenario.anotherMachine(others, Kor::make<PolicyMap::PolicyMapTypeStatus>());
  scenario.settle();
  EXPECT_FALSE(scenario.record(ipv4, "input", "pm2"));
  scenario.machine = nullptr;
  scenario.settle();
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "pm2")), done);
}

TEST_F(Async, ANewMachineAfterOneThatWaitedReCreates) {
  start();
  scenario.machine = nullptr;
  scenario.start();
  scenario.settle();
  scenario.trigger();
  scenario.trigger();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 1, update 0/0, created, clean");
  EXPECT_TRUE(scenario.policyStatus()->programmed(ipv4));
}

TEST_F(Async, AHelperTakenAwayWhileItIsWaitedForIsLeftClean) {
  secondPolicy();
  start();
  scenario.machine->aclHelperDel();
  scenario.settle();
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, not created, dirty");
  EXPECT_FALSE(scenario.record(ipv4, "input", "second"));
  // Its result and its time-out have no effect now.
  scenario.trigger();
  scenario.advance(100);
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, not created, dirty");
  scenario.machine->aclHelperIs(scenario.helper);
  scenario.settle();
  for (int results = 0; results < 4; ++results) {
    scenario.trigger();
  }
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 1, update 0/0, created, clean");
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")), done);
}

TEST_F(Async, AnotherHelperWhileTheFirstIsWaitedForGetsEverything) {
  secondPolicy();
  start();
  auto const next = PolicyMapTest::aclHelperFactory(false, false);
  scenario.machine->aclHelperIs(next);
  scenario.settle();
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
  EXPECT_EQ(normalForm(*next).size(), 2U);
  scenario.trigger();
  scenario.advance(100);
  EXPECT_EQ(normalForm(*next).size(), 2U);
  EXPECT_EQ(error(), "");
}

// Runs one function at the first notification of a record, and one at that of a pending text. Both
// come from inside an operation.
class Meddler : public AclHelper::NotifieeConst {
 public:
  Meddler(AclHelper* helper, std::function<void()> atRecord, std::function<void()> atText)
      : NotifieeConst(helper), atRecord_(std::move(atRecord)), atText_(std::move(atText)) {}
  void onTestData(PolicyMapTest::AclPolicyType /*key*/) override { once(atRecord_); }
  void onAsyncError() override { once(atText_); }

 private:
  static void once(std::function<void()>& act) {
    if (std::function<void()> const now = std::exchange(act, nullptr)) {
      now();
    }
  }

  std::function<void()> atRecord_;
  std::function<void()> atText_;
};

TEST_F(Async, AMachineMayEndInsideTheCreationOfItsPolicy) {
  secondPolicy();
  auto const meddler = Kor::make<Meddler>(
      scenario.helper.get(), [this] { scenario.machine = nullptr; }, nullptr);
  start();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, created, clean");
  EXPECT_EQ(scenario.helper->testDatas(), 1U);
  scenario.start();
  scenario.settle();
  for (int results = 0; results < 4; ++results) {
    scenario.trigger();
  }
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 1, update 0/0, created, clean");
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")), done);
  meddler->notifierIs(nullptr);
}

TEST_F(Async, AMachineMayEndInsideAnAsynchronousOperation) {
  secondPolicy();
  scenario.helper->addIntfErrorIs("full");
  auto const meddler =
      Kor::make<Meddler>(scenario.helper.get(), nullptr, [this] { scenario.machine = nullptr; });
  start();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, created, dirty");
  scenario.helper->addIntfErrorIs("");
  scenario.start();
  scenario.settle();
  for (int results = 0; results < 4; ++results) {
    scenario.trigger();
  }
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 1, update 0/0, created, clean");
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")), done);
  meddler->notifierIs(nullptr);
}

TEST_F(Async, TheHelperMayBeReplacedInsideTheCreationOfAPolicy) {
  secondPolicy();
  auto const next = PolicyMapTest::aclHelperFactory(false, false);
  auto const meddler = Kor::make<Meddler>(
      scenario.helper.get(), [&] { scenario.machine->aclHelperIs(next); }, nullptr);
  start();
  scenario.advance(100);
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 0, update 0/0, not created, clean");
  EXPECT_EQ(normalForm(*next).size(), 2U);
  EXPECT_EQ(error(), "");
  meddler->notifierIs(nullptr);
}

TEST_F(Async, ConfigurationMayChangeInsideAnOperation) {
  auto const meddler = Kor::make<Meddler>(
      scenario.helper.get(),
      [this] {
        scenario.rule("acl", 20);
        scenario.attach("pm", "Ethernet2");
        secondPolicy();
      },
      nullptr);
  start();
  for (int results = 0; results < 10; ++results) {
    scenario.trigger();
  }
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
  EXPECT_THAT(normalRecord(*scenario.record()).intfs, ElementsAre(intf("Ethernet1")));
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")), done);
  meddler->notifierIs(nullptr);
}

}  // namespace
}  // namespace endtoend
