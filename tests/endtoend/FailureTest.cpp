// SPDX-License-Identifier: Apache-2.0
#include "support/FailureJournal.h"
#include "support/FaultyHelper.h"
#include "support/NormalForm.h"
#include "support/Scenario.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>

#include <functional>
#include <ostream>
#include <sstream>

namespace endtoend {
namespace {

using PolicyMap::AclRuleKey;
using PolicyMap::ClassMapMatchOption;
using PolicyMap::PolicyFailure;
using PolicyMapTest::AclHelper;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::counts;
using TestSupport::FailureJournal;
using TestSupport::intf;
using TestSupport::normalForm;
using TestSupport::Scenario;
using TestSupport::tcp;

using enum PolicyMap::ClassMapMatchOption;

PolicyFailure failureOf(char const* error, char const* operation) {
  return {error, operation, {}, {}};
}
PolicyFailure ruleFailure(char const* error, char const* operation, AclRuleKey const& rule) {
  return {error, operation, rule.className(), rule};
}
std::string report(Scenario const& scenario, char const* policy = "pm") {
  auto const status = scenario.policyStatus(policy);
  if (!status) {
    return "no status";
  }
  PolicyFailure const failure = status->failure(ipv4);
  std::ostringstream out;
  out << (status->programmed(ipv4) ? "programmed" : "not programmed");
  if (status->korFailure(ipv4)) {
    out << ", " << failure.operation() << ": " << failure.error();
    if (!failure.className().empty()) {
      out << " at " << failure.className() << ":" << failure.rule().aclName() << ":"
          << failure.rule().seqno();
    }
  }
  return out.str();
}

// A failure is reported with operation, text, class and rule, and recovers without intervention.
struct Fault {
  char const* name;
  void (AclHelper::*errorIs)(Kor::String8);
  bool standing;  // whether the policy is programmed before it happens
  std::function<void(Scenario&)> happens;
  char const* reported;
  TestSupport::ScenarioSettings settings = {};

  friend void PrintTo(Fault const& fault, std::ostream* out) { *out << fault.name; }
};

class Faults : public testing::TestWithParam<Fault> {
 protected:
  // The same configuration for the run with the fault and for the run without it.
  static void configure(Scenario& scenario, Fault const& fault) {
    scenario.simplePolicy();
    scenario.rule("acl", 20, tcp(Acl::PortMatch::range(5004, 5008)));
    scenario.attach("pm", "Ethernet2");
    scenario.actionIs("pm", "c", 1, 7);
    if (fault.standing) {
      scenario.start();
      scenario.settle();
    }
  }
  static void happen(Scenario& scenario, Fault const& fault) {
    fault.happens(scenario);
    if (!fault.standing) {
      scenario.start();
    }
    scenario.settle();
  }
};

TEST_P(Faults, AreReportedAndHealByThemselves) {
  Fault const& fault = GetParam();
  Scenario spared(fault.settings);
  configure(spared, fault);
  happen(spared, fault);
  auto const expected = describe(normalForm(*spared.helper));
  Scenario scenario(fault.settings);
  configure(scenario, fault);
  ((*scenario.helper).*fault.errorIs)("table full");
  happen(scenario, fault);
  EXPECT_EQ(report(scenario), fault.reported);
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
  // The text is published in the policy, and in the class if the report names one.
  EXPECT_EQ(scenario.policyStatus()->error(), "table full");
  bool const ofClass = std::string(fault.reported).find(" at c:") != std::string::npos;
  EXPECT_EQ(scenario.policyStatus()->classMapStatus("c")->error(), ofClass ? "table full" : "");
  EXPECT_FALSE(scenario.policyStatus()->classMapStatus("c")->programmed());
  ((*scenario.helper).*fault.errorIs)("");
  scenario.settle();
  EXPECT_EQ(report(scenario), fault.reported);
  scenario.advance(1);
  EXPECT_EQ(report(scenario), "programmed");
  EXPECT_EQ(describe(normalForm(*scenario.helper)), expected);
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_EQ(scenario.policyStatus()->classMapStatus("c")->error(), "");
  EXPECT_TRUE(scenario.policyStatus()->classMapStatus("c")->programmed());
}

void changeNothing(Scenario&) {}
void changeRule(Scenario& scenario) {
  scenario.rule("acl", 10, tcp(Acl::PortMatch::eq(80)));
}
void addIntf(Scenario& scenario) {
  scenario.attach("pm", "Ethernet3");
}
void removeIntf(Scenario& scenario) {
  scenario.detach("Ethernet2");
}
void exchangeIntfAndRule(Scenario& scenario) {
  changeRule(scenario);
  addIntf(scenario);
  removeIntf(scenario);
}

INSTANTIATE_TEST_SUITE_P(
    AtEveryPlace, Faults,
    testing::Values(Fault{"create", &AclHelper::createErrorIs, false, changeNothing,
                          "not programmed, createPolicy: table full"},
                    Fault{"recreate", &AclHelper::createErrorIs, true, changeRule,
                          "not programmed, recreatePolicy: table full"},
                    Fault{"addRule", &AclHelper::addRuleErrorIs, false, changeNothing,
                          "not programmed, addRule: table full at c:acl:10"},
                    Fault{"addRuleOfReCreation", &AclHelper::addRuleErrorIs, true, changeRule,
                          "not programmed, addRule: table full at c:acl:10"},
                    Fault{"rangeChecker", &AclHelper::rangeCheckerErrorIs, false, changeNothing,
                          "not programmed, addRule: table full at c:acl:20"},
                    Fault{"rangeCheckerOfReCreation", &AclHelper::rangeCheckerErrorIs, true,
                          changeRule, "not programmed, addRule: table full at c:acl:20"},
                    Fault{"firstInterfaces", &AclHelper::addIntfErrorIs, false, changeNothing,
                          "not programmed, addIntfToPolicy: table full"},
                    Fault{"addedInterface", &AclHelper::addIntfErrorIs, true, addIntf,
                          "not programmed, addIntfToPolicy: table full"},
                    Fault{"addedInterfaceOfReCreation", &AclHelper::addIntfErrorIs, true,
                          exchangeIntfAndRule, "not programmed, addIntfToPolicy: table full"},
                    Fault{"removedInterface", &AclHelper::removeIntfErrorIs, true, removeIntf,
                          "not programmed, removeIntfFromPolicy: table full"},
                    Fault{"removedInterfaceOfReCreation", &AclHelper::removeIntfErrorIs, true,
                          exchangeIntfAndRule, "not programmed, removeIntfFromPolicy: table full"},
                    Fault{"firstCommit", &AclHelper::commitErrorIs, false, changeNothing,
                          "not programmed, commitPolicy: table full"},
                    Fault{"commitOfRules", &AclHelper::commitErrorIs, true, changeRule,
                          "not programmed, commitPolicy: table full"},
                    Fault{"commitOfInterface", &AclHelper::commitErrorIs, true, addIntf,
                          "not programmed, commitPolicy: table full"},
                    Fault{"commitOfUpdate",
                          &AclHelper::commitErrorIs,
                          true,
                          [](Scenario& scenario) { scenario.actionIs("pm", "c", 1, 9); },
                          "not programmed, commitPolicy: table full",
                          {.updateActions = true}}),
    [](auto const& one) { return std::string(one.param.name); });

TEST(FailedUpdate, IsReCreatedAndReportedUntilThen) {
  Scenario scenario({.updateActions = true});
  scenario.simplePolicy();
  scenario.actionIs("pm", "c", 1, 7);
  scenario.start();
  scenario.settle();
  FailureJournal const journal(scenario.status);
  scenario.helper->updateActionErrorIs("refused");
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  EXPECT_EQ(report(scenario), "programmed");
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 9U);
  ASSERT_EQ(journal.failures().size(), 1U);
  EXPECT_EQ(journal.failures().front().failure,
            ruleFailure("refused", "updateAction", Scenario::ruleKey("c", "acl", 10)));
}

TEST(FailedUpdate, OfOneOptionLeavesTheOthersUpdatedInPlace) {
  auto const helper = Kor::make<TestSupport::FaultyHelper>(true, false);
  Scenario scenario({}, helper);
  scenario.simplePolicy();
  scenario.rule("acl", 20);
  scenario.rule("acl6", 10, TestSupport::tcp6());
  scenario.classMatches("c", "acl6", ClassMapMatchOption::ipv6, 2);
  scenario.actionIs("pm", "c", 1, 7);
  scenario.start();
  scenario.settle();
  helper->failureIs(TestSupport::Fault::updateActionError, 1, false);
  scenario.actionIs("pm", "c", 1, 9);
  scenario.settle();
  // The rules after the failed one are not updated; the policy is created again.
  EXPECT_EQ(helper->calls(TestSupport::Fault::updateActionError), 2U);
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 1/1, created, clean");
  EXPECT_EQ(counts(scenario.record(ClassMapMatchOption::ipv6)),
            "create 1, commit 2, update 1/1, created, clean");
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 20)), 9U);
}

TEST(FailedTeardown, IsReportedBeforeTheStatusGoes) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  FailureJournal const journal(scenario.status);
  scenario.helper->deleteErrorIs("stuck");
  scenario.policies->policyMapConfigDel("pm");
  scenario.settle();
  EXPECT_FALSE(scenario.policyStatus());
  ASSERT_EQ(journal.failures().size(), 1U);
  EXPECT_EQ(journal.failures().front().failure, failureOf("stuck", "deletePolicy"));
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
}

TEST(FailedTeardown, OfAnInterfaceDoesNotStopTheDeletion) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.attach("pm", "Ethernet2");
  scenario.start();
  scenario.settle();
  FailureJournal const journal(scenario.status);
  TestSupport::TraceRecorder trace("PolicyMap", 1);
  scenario.helper->removeIntfErrorIs("busy");
  scenario.helper->deleteErrorIs("stuck");
  scenario.policies->policyMapConfigDel("pm");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  ASSERT_EQ(journal.failures().size(), 1U);
  EXPECT_EQ(journal.failures().front().failure, failureOf("busy", "removeIntfFromPolicy"));
  EXPECT_THAT(trace.lines(), ElementsAre("PolicyMap|1|second failure of a pass: busy",
                                         "PolicyMap|1|second failure of a pass: stuck"));
}

TEST(FailedTeardown, IsNotRepeatedAndWhatIsWantedAgainIsCreated) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  scenario.helper->deleteErrorIs("stuck");
  scenario.acls->ipAclDel("acl");
  scenario.settle();
  EXPECT_EQ(report(scenario), "not programmed, deletePolicy: stuck");
  scenario.advance(100);
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  scenario.rule("acl", 10);
  scenario.settle();
  EXPECT_EQ(report(scenario), "programmed");
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST(FailedDeletion, OfARollBackLeavesTheFirstTextInTheStatus) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.helper->commitErrorIs("first");
  scenario.helper->deleteErrorIs("second");
  TestSupport::TraceRecorder trace("PolicyMap", 1);
  scenario.start();
  scenario.settle();
  EXPECT_EQ(report(scenario), "not programmed, commitPolicy: first");
  EXPECT_THAT(trace.lines(), ElementsAre("PolicyMap|1|second failure of a pass: second"));
}

// Retries of a policy whose creation fails.
class Retries : public testing::Test {
 protected:
  Retries() {
    scenario.simplePolicy();
    scenario.helper->createErrorIs("full");
    scenario.start();
    scenario.settle();
  }
  [[nodiscard]] std::uint32_t tries() const { return scenario.record()->createCount(); }

  Scenario scenario;
};

TEST_F(Retries, ComeAfterOneSecondAndThenTwiceAsLateUpToAMinute) {
  EXPECT_EQ(tries(), 1U);
  std::uint32_t expected = 1;
  for (double const wait : {1.0, 2.0, 4.0, 8.0, 16.0, 32.0, 60.0, 60.0, 60.0}) {
    scenario.advance(wait - 0.001);
    EXPECT_EQ(tries(), expected) << wait;
    scenario.advance(0.001);
    EXPECT_EQ(tries(), ++expected) << wait;
  }
}

TEST_F(Retries, FollowTheMachinesAttributes) {
  scenario.machine->retryMinIs(5);
  scenario.machine->retryMaxIs(7);
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_EQ(tries(), 2U);
  scenario.advance(4.9);
  EXPECT_EQ(tries(), 2U);
  scenario.advance(0.1);
  EXPECT_EQ(tries(), 3U);
  scenario.advance(7);
  EXPECT_EQ(tries(), 4U);
  scenario.advance(7);
  EXPECT_EQ(tries(), 5U);
}

TEST_F(Retries, StartOverAtARelevantChange) {
  scenario.advance(1 + 2 + 4);
  EXPECT_EQ(tries(), 4U);
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_EQ(tries(), 5U);
  scenario.advance(1);
  EXPECT_EQ(tries(), 6U);
}

TEST_F(Retries, DoNotFollowAnIrrelevantChange) {
  scenario.rule("unused", 20);
  scenario.helper->createErrorIs("");
  scenario.settle();
  EXPECT_EQ(tries(), 1U);
}

TEST_F(Retries, FollowAnInterfaceThatIsEvaluatedAgain) {
  scenario.helper->createErrorIs("");
  scenario.machine->nonexistentIntfIs(intf("Ethernet1"), false);
  scenario.settle();
  EXPECT_EQ(report(scenario), "programmed");
}

TEST_F(Retries, EndWithSuccess) {
  scenario.helper->createErrorIs("");
  scenario.advance(1000);
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 1, update 0/0, created, clean");
  EXPECT_EQ(Kor::EventLoop::global().pending(), 0U);
}

TEST_F(Retries, EndWithThePolicy) {
  scenario.policies->policyMapConfigDel("pm");
  scenario.advance(1000);
  EXPECT_EQ(tries(), 1U);
  EXPECT_FALSE(scenario.policyStatus());
  EXPECT_EQ(Kor::EventLoop::global().pending(), 0U);
}

TEST_F(Retries, EndWhenNothingIsWantedAnyMore) {
  scenario.acls->ipAclDel("acl");
  scenario.advance(1000);
  EXPECT_EQ(tries(), 1U);
  EXPECT_EQ(report(scenario), "not programmed");
}

TEST_F(Retries, EndWithTheMachine) {
  scenario.machine = nullptr;
  scenario.advance(1000);
  EXPECT_EQ(tries(), 1U);
  EXPECT_EQ(Kor::EventLoop::global().pending(), 0U);
}

TEST_F(Retries, OfOneOptionLeaveTheOthersAlone) {
  scenario.helper->createErrorIs("");
  scenario.rule("acl6", 10, TestSupport::tcp6());
  scenario.classMatches("c", "acl6", ClassMapMatchOption::ipv6, 2);
  scenario.settle();
  scenario.helper->addRuleErrorIs("full");
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_EQ(report(scenario), "not programmed, addRule: full at c:acl:10");
  scenario.advance(100);
  EXPECT_EQ(counts(scenario.record(ClassMapMatchOption::ipv6)),
            "create 1, commit 1, update 0/0, created, clean");
}

TEST(OneFailure, DoesNotHoldUpAnotherPolicy) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.rule("acl", 10, tcp(Acl::PortMatch::range(1, 5)));
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("second", "d", 1);
  scenario.attach("second", "Ethernet2");
  scenario.helper->rangeCheckerErrorIs("none left");
  scenario.start();
  scenario.settle();
  EXPECT_EQ(report(scenario), "not programmed, addRule: none left at c:acl:10");
  EXPECT_EQ(report(scenario, "second"), "programmed");
  scenario.rule("other", 6);
  scenario.settle();
  EXPECT_EQ(scenario.record(ipv4, "input", "second")->ruleMatchs(), 2U);
}

TEST(OneFailure, IsGoneWithTheRuleThatCausedIt) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.rule("acl", 20, tcp(Acl::PortMatch::range(1, 5)));
  scenario.helper->rangeCheckerErrorIs("none left");
  scenario.start();
  scenario.settle();
  EXPECT_EQ(report(scenario), "not programmed, addRule: none left at c:acl:20");
  scenario.acls->ipAcl("acl")->ruleDel(20);
  scenario.settle();
  EXPECT_EQ(report(scenario), "programmed");
}

TEST(OneFailure, IsPassedOnByteForByte) {
  Scenario scenario;
  scenario.simplePolicy();
  Kor::String8 const odd(std::string("50% \0 \xff\n", 8));
  scenario.helper->createErrorIs(odd);
  scenario.start();
  scenario.settle();
  EXPECT_EQ(scenario.policyStatus()->failure(ipv4).error(), odd);
}

TEST(TwoMachines, OnOneHelperProgramBoth) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.start();
  auto const others = Kor::make<PolicyMap::PolicyMapTypeConfig>();
  auto const subConfig = Kor::make<PolicyMap::PolicyMapSubConfig>(Kor::Name("pm2"));
  subConfig->classPrioIs("c", 1);
  others->policyMapConfigIs("pm2")->currentSubConfigIs(subConfig);
  others->servicePolicyIs({intf("Ethernet2"), "input"}, "pm2");
  auto const second = scenario.anotherMachine(others, Kor::make<PolicyMap::PolicyMapTypeStatus>());
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "pm2")),
            "create 1, commit 1, update 0/0, created, clean");
}

TEST(TwoMachines, WithTheSamePolicyReCreateWhatTheOtherMade) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  auto const second =
      scenario.anotherMachine(scenario.policies, Kor::make<PolicyMap::PolicyMapTypeStatus>());
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

}  // namespace
}  // namespace endtoend
