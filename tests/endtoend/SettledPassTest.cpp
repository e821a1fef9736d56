// SPDX-License-Identifier: Apache-2.0
#include "support/NormalForm.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

#include <functional>
#include <ostream>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatchOption;
using PolicyMapTest::AclHelper;
using TestSupport::counts;
using TestSupport::intf;
using TestSupport::Scenario;

// What one pass leaves in the counters and flags of its record. The policy has two rules and two
// interfaces; a case that starts with a standing policy finds "create 1, commit 1".
struct Case {
  char const* name;
  bool standing;
  std::function<void(Scenario&)> happens;
  char const* settled;  // with the clock standing still, so that nothing is tried again by itself
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

void changeRule(Scenario& scenario) {
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
        Case{"rulesChanged", true, changeRule, "create 2, commit 2, update 0/0, created, clean"},
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
    [](auto const& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace endtoend
