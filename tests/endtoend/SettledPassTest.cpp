// SPDX-License-Identifier: Apache-2.0
#include "support/NormalForm.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

#include <functional>
#include <ostream>

namespace endtoend {
namespace {

using TestSupport::counts;
using TestSupport::Scenario;

// The counters and flags of the record after one pass. The policy has two rules and two interfaces.
// A case with `standing` starts from a programmed policy: "create 1, commit 1".
struct Case {
  char const* name;
  bool standing;
  std::function<void(Scenario&)> happens;
  char const* settled;  // the clock does not advance, so nothing is retried
  TestSupport::ScenarioSettings settings = {};

  friend void PrintTo(Case const& one, std::ostream* out) { *out << one.name; }
};

class SettledPass : public testing::TestWithParam<Case> {};

TEST_P(SettledPass, LeavesTheseCountersAndFlags) {
  Case const& one = GetParam();
  Scenario scenario(one.settings);
  scenario.simplePolicy();
  scenario.rule("acl", 20);
  scenario.attach("pm", "Ethernet2");
  scenario.actionIs("pm", "c", 1, 7);
  if (one.standing) {
    scenario.start();
    scenario.settle();
    ASSERT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
    one.happens(scenario);
  } else {
    one.happens(scenario);
    scenario.start();
  }
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), one.settled);
}

void changeRulePort(Scenario& scenario) {
  scenario.rule("acl", 10, TestSupport::tcp(Acl::PortMatch::eq(80)));
}
void changeAction(Scenario& scenario) {
  scenario.actionIs("pm", "c", 1, 9);
}

INSTANTIATE_TEST_SUITE_P(
    WithoutFailure, SettledPass,
    testing::Values(
        Case{"firstProgramming", false, [](Scenario&) {},
             "create 1, commit 1, update 0/0, created, clean"},
        Case{"rulesChanged", true, changeRulePort,
             "create 2, commit 2, update 0/0, created, clean"},
        Case{"actionChanged", true, changeAction, "create 2, commit 2, update 0/0, created, clean"},
        Case{"interfaceWithReprogramming", true,
             [](Scenario& scenario) {
               scenario.helper->reprogramPolicyOnIntfChangeIs(true);
               scenario.attach("pm", "Ethernet3");
             },
             "create 2, commit 2, update 0/0, created, clean"},
        Case{"actionUpdatedInPlace",
             true,
             changeAction,
             "create 1, commit 2, update 1/1, created, clean",
             {.updateActions = true}},
        Case{"interfaceAdded", true, [](Scenario& scenario) { scenario.attach("pm", "Ethernet3"); },
             "create 1, commit 2, update 0/0, created, clean"},
        Case{"interfaceRemoved", true, [](Scenario& scenario) { scenario.detach("Ethernet2"); },
             "create 1, commit 2, update 0/0, created, clean"},
        Case{"policyRemoved", true,
             [](Scenario& scenario) { scenario.policies->policyMapConfigDel("pm"); },
             "create 1, commit 1, update 0/0, not created, clean"}),
    [](auto const& one) { return std::string(one.param.name); });

// The second rule has a port range, so a range checker can fail it after the first succeeded.
void failSecondRule(Scenario& scenario) {
  scenario.rule("acl", 20, TestSupport::tcp(Acl::PortMatch::range(5004, 5008)));
  scenario.helper->rangeCheckerErrorIs("no range checker left");
}

INSTANTIATE_TEST_SUITE_P(
    Failed, SettledPass,
    testing::Values(Case{"deletion", true,
                         [](Scenario& scenario) {
                           scenario.helper->deleteErrorIs("stuck");
                           scenario.policies->policyMapConfigDel("pm");
                         },
                         "create 1, commit 1, update 0/0, not created, clean"},
                    Case{"creation", false,
                         [](Scenario& scenario) { scenario.helper->createErrorIs("full"); },
                         "create 1, commit 0, update 0/0, not created, clean"},
                    Case{"firstRule", false,
                         [](Scenario& scenario) { scenario.helper->addRuleErrorIs("full"); },
                         "create 1, commit 0, update 0/0, not created, clean"},
                    Case{"laterRule", false, failSecondRule,
                         "create 1, commit 0, update 0/0, not created, dirty"},
                    Case{"laterRuleOfAReCreation", true, failSecondRule,
                         "create 2, commit 1, update 0/0, not created, dirty"},
                    Case{"interfaceOfFirstProgramming", false,
                         [](Scenario& scenario) { scenario.helper->addIntfErrorIs("full"); },
                         "create 1, commit 0, update 0/0, not created, dirty"},
                    Case{"commitOfFirstProgramming", false,
                         [](Scenario& scenario) { scenario.helper->commitErrorIs("full"); },
                         "create 1, commit 1, update 0/0, not created, clean"},
                    Case{"addedInterface", true,
                         [](Scenario& scenario) {
                           scenario.helper->addIntfErrorIs("full");
                           scenario.attach("pm", "Ethernet3");
                         },
                         "create 1, commit 1, update 0/0, not created, clean"},
                    Case{"removedInterface", true,
                         [](Scenario& scenario) {
                           scenario.helper->removeIntfErrorIs("stuck");
                           scenario.detach("Ethernet2");
                         },
                         "create 1, commit 1, update 0/0, not created, clean"},
                    Case{"commitOfAnInterface", true,
                         [](Scenario& scenario) {
                           scenario.helper->commitErrorIs("full");
                           scenario.attach("pm", "Ethernet3");
                         },
                         "create 1, commit 2, update 0/0, not created, clean"},
                    Case{"updateReCreated",
                         true,
                         [](Scenario& scenario) {
                           scenario.helper->updateActionErrorIs("refused");
                           changeAction(scenario);
                         },
                         "create 2, commit 2, update 1/1, created, clean",
                         {.updateActions = true}},
                    Case{"updateAndItsReCreation",
                         true,
                         [](Scenario& scenario) {
                           scenario.helper->updateActionErrorIs("refused");
                           scenario.helper->addRuleErrorIs("full");
                           changeAction(scenario);
                         },
                         "create 2, commit 1, update 1/1, not created, clean",
                         {.updateActions = true}},
                    Case{"commitOfAnUpdate",
                         true,
                         [](Scenario& scenario) {
                           scenario.helper->commitErrorIs("full");
                           changeAction(scenario);
                         },
                         "create 1, commit 2, update 1/1, not created, clean",
                         {.updateActions = true}}),
    [](auto const& one) { return std::string(one.param.name); });

}  // namespace
}  // namespace endtoend
