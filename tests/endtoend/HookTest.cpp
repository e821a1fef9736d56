// SPDX-License-Identifier: Apache-2.0

// A helper operation or a status hook changes things while the core is programming.

#include "support/DoingHelper.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using TestSupport::Deed;
using TestSupport::DoingHelper;
using TestSupport::once;
using TestSupport::Scenario;

class PolicyHook : public PolicyMap::PolicyMapStatus::Notifiee {
 public:
  using Notifiee::Notifiee;
  Deed deed;
  void onError() override { once(deed); }
};
class ClassHook : public PolicyMap::ClassMapStatus::Notifiee {
 public:
  using Notifiee::Notifiee;
  Deed countDeed;
  Deed errorDeed;
  Deed programmedDeed;
  void onHitCount(PolicyMap::AclRuleKey const& /*key*/) override { once(countDeed); }
  void onError() override { once(errorDeed); }
  void onProgrammed() override { once(programmedDeed); }
};
class StatusHook : public PolicyMap::PolicyMapTypeStatus::Notifiee {
 public:
  using Notifiee::Notifiee;
  Deed deed;
  void onPolicyMapStatus(PolicyMap::PolicyMapSmKey const& /*key*/) override { once(deed); }
};

// A change that a hook makes inside the core.
struct Disturbance {
  char const* name;
  std::function<void(Scenario&)> happens;
  bool takesPolicyDown;

  friend void PrintTo(Disturbance const& one, std::ostream* out) { *out << one.name; }
};

Disturbance const disturbances[] = {
    {"detached", [](Scenario& scenario) { scenario.detach("Ethernet1"); }, true},
    {"policyMapRemoved", [](Scenario& scenario) { scenario.policies->policyMapConfigDel("pm"); },
     true},
    {"listsRemoved", [](Scenario& scenario) { scenario.machine->aclConfigDel(); }, true},
    {"cleanedUp", [](Scenario& scenario) { scenario.machine->cleanup(); }, true},
    {"helperTaken", [](Scenario& scenario) { scenario.machine->aclHelperDel(); }, true},
    {"helperReplaced",
     [](Scenario& scenario) {
       scenario.machine->aclHelperIs(PolicyMapTest::aclHelperFactory(true, false));
     },
     true},
    {"machineEnded", [](Scenario& scenario) { scenario.machine = nullptr; }, false},
};

class Hook : public testing::TestWithParam<Disturbance> {
 protected:
  Hook() : helper(Kor::make<DoingHelper>(true, false)), scenario({.updateActions = true}, helper) {
    scenario.simplePolicy();
    scenario.start();
    scenario.settle();
  }
  Deed disturb() {
    return [this] { GetParam().happens(scenario); };
  }
  void requestCounts() { requests->countRequestIs({"pm", "input"}, 1); }
  void expectSettled() {
    scenario.settle();
    scenario.advance(1000);
    EXPECT_EQ(scenario.record()->created(), !GetParam().takesPolicyDown);
  }

  Kor::Ptr<DoingHelper> helper;
  Scenario scenario;
  Kor::Ptr<PolicyMap::PolicyMapStatusRequestDir> requests =
      Kor::make<PolicyMap::PolicyMapStatusRequestDir>();
};

INSTANTIATE_TEST_SUITE_P(That, Hook, testing::ValuesIn(disturbances),
                         [](auto const& one) { return std::string(one.param.name); });

TEST_P(Hook, DisturbsWhileCountsAreRead) {
  scenario.machine->statusRequestDirIs(requests);
  helper->doInside("getCountForRule", disturb());
  requestCounts();
  expectSettled();
}

TEST_P(Hook, DisturbsWhenACountIsPublished) {
  scenario.machine->statusRequestDirIs(requests);
  auto const hook = Kor::make<ClassHook>(scenario.policyStatus()->classMapStatus("c").get());
  hook->countDeed = disturb();
  requestCounts();
  expectSettled();
}

TEST_P(Hook, DisturbsWhenARefusalIsPublished) {
  auto const hook = Kor::make<PolicyHook>(scenario.policyStatus().get());
  hook->deed = disturb();
  // The option was never programmed, so nothing is to be removed.
  Acl::Ip6RuleConfig deny;
  deny.permitIs(false);
  scenario.rule("acl6", 1, deny);
  helper->denyRulesAllowedIs(false);
  scenario.classMatches("c", "acl6", ClassMapMatchOption::ipv6, 2);
  expectSettled();
}

TEST_P(Hook, DisturbsWhenAClassTellsThatItCannotBeCompiled) {
  auto const hook = Kor::make<ClassHook>(scenario.policyStatus()->classMapStatus("c").get());
  hook->errorDeed = disturb();
  scenario.classMap("c")->matchIs(2, PolicyMap::ClassMapMatch::classMap("c"));
  scenario.settle();
  scenario.advance(1000);
  EXPECT_FALSE(hook->errorDeed);
}

TEST_P(Hook, DisturbsWhileAPolicyGoes) {
  auto const hook = Kor::make<ClassHook>(scenario.policyStatus()->classMapStatus("c").get());
  hook->programmedDeed = disturb();
  scenario.detach("Ethernet1");
  scenario.settle();
  EXPECT_FALSE(hook->programmedDeed);
  EXPECT_FALSE(scenario.record()->created());
}

TEST_P(Hook, DisturbsWhenTheStatusOfANewPolicyAppears) {
  auto const hook = Kor::make<StatusHook>(scenario.status.get());
  hook->deed = [this] {
    scenario.detach("Ethernet1", "output");
    GetParam().happens(scenario);
  };
  scenario.attach("pm", "Ethernet1", "output");
  expectSettled();
  EXPECT_FALSE(scenario.record(ClassMapMatchOption::ipv4, "output"));
  // Destroying a machine leaves its statuses unchanged.
  EXPECT_EQ(bool(scenario.policyStatus("pm", "output")), !scenario.machine);
}

TEST_P(Hook, DisturbsInsideTheDeletionOnAHelperThatIsTaken) {
  helper->doInside("deletePolicy", disturb());
  helper->forgetCalls();
  scenario.machine->aclHelperDel();
  scenario.settle();
  EXPECT_THAT(helper->calls(), ElementsAre("deletePolicy"));
  EXPECT_FALSE(scenario.record()->created());
}

TEST_P(Hook, DisturbsInsideACommit) {
  helper->doInside("commitPolicy", disturb());
  scenario.rule("acl", 20);
  expectSettled();
}

class Programming : public testing::Test {
 protected:
  Programming()
      : helper(Kor::make<DoingHelper>(true, false)), scenario({.updateActions = true}, helper) {}

  Kor::Ptr<DoingHelper> helper;
  Scenario scenario;
};

TEST_F(Programming, AHelperThatIsReplacedTwiceAtOnceEndsWithTheLast) {
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  auto const second = PolicyMapTest::aclHelperFactory(true, false);
  auto const third = PolicyMapTest::aclHelperFactory(true, false);
  helper->doInside("deletePolicy", [&] { scenario.machine->aclHelperIs(third); });
  scenario.machine->aclHelperIs(second);
  scenario.settle();
  EXPECT_EQ(scenario.machine->aclHelper(), third);
  EXPECT_EQ(second->testDatas(), 0U);
  EXPECT_EQ(third->testDatas(), 1U);
}

TEST_F(Programming, AnOptionThatIsUpdatedOnlyByAChangeInsideTheUpdateIsCommittedToo) {
  scenario.simplePolicyOfAllOptions();
  scenario.actionIs("pm", "c", 1, 1);
  scenario.start();
  scenario.settle();
  scenario.actionIs("pm", "c", 1, 2);
  scenario.rule("acl6", 20, TestSupport::tcp6());  // created again, with the value 2
  helper->doInside("beginUpdateActions", [&] { scenario.actionIs("pm", "c", 1, 3); });
  scenario.settle();
  auto const record = scenario.record(ClassMapMatchOption::ipv6);
  EXPECT_EQ(record->ruleAction1(Scenario::ruleKey("c", "acl6", 10, ClassMapMatchOption::ipv6)), 3U);
  EXPECT_EQ(record->commitCount(), 3U);
}

TEST_F(Programming, AHelperThatAnInactiveMachineIsGivenIsInitialisedBeforeAnythingElse) {
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  auto const other = Kor::make<DoingHelper>(true, false);
  scenario.machine->hasNotificationActiveIs(false);
  scenario.machine->aclHelperIs(other);
  scenario.settle();
  scenario.machine->hasNotificationActiveIs(true);
  scenario.settle();
  ASSERT_FALSE(other->calls().empty());
  EXPECT_EQ(other->calls().front(), "hwInit");
  EXPECT_EQ(std::count(other->calls().begin(), other->calls().end(), "hwInit"), 1);
}

TEST_F(Programming, WhatAnotherMachineHasProgrammedOverIsNotUpdatedButCreatedAnew) {
  scenario.simplePolicy();
  scenario.actionIs("pm", "c", 1, 1);
  scenario.start();
  scenario.settle();
  Scenario other({.updateActions = true}, helper);
  other.simplePolicy();
  other.rule("acl", 20);
  other.start();
  other.settle();
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
  scenario.actionIs("pm", "c", 1, 2);
  scenario.settle();
  scenario.rule("acl", 30);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 30)), 2U);
  // The first machine owns the policy now, so the second removes nothing.
  other.detach("Ethernet1");
  other.settle();
  EXPECT_TRUE(scenario.record()->created());
}

TEST_F(Programming, AFailureOfAnUpdateIsThereWhileTheCommitOfAnotherOptionIsAwaited) {
  scenario.simplePolicyOfAllOptions();
  scenario.actionIs("pm", "c", 1, 1);
  scenario.start();
  scenario.settle();
  helper->asyncOperationsIs(true);
  helper->doInside("updateAction", [&] { helper->updateActionErrorIs("no room"); });
  scenario.actionIs("pm", "c", 1, 2);
  scenario.settle();
  EXPECT_EQ(scenario.policyStatus()->error(), "no room");
}

class Throwing : public Programming, public testing::WithParamInterface<char const*> {};

INSTANTIATE_TEST_SUITE_P(From, Throwing,
                         testing::Values("createPolicy", "addRule", "addIntfToPolicy",
                                         "commitPolicy", "updateAction", "deletePolicy"));

TEST_P(Throwing, AnOperationIsAFailureThatHeals) {
  bool const standing = std::string_view(GetParam()) == "updateAction" ||
                        std::string_view(GetParam()) == "deletePolicy";
  scenario.simplePolicy();
  scenario.actionIs("pm", "c", 1, 1);
  scenario.start();
  if (standing) {
    scenario.settle();
    scenario.actionIs("pm", "c", 1, 2);
  }
  if (std::string_view(GetParam()) == "deletePolicy") {
    scenario.detach("Ethernet1");
  }
  helper->doInside(GetParam(), [] { throw std::runtime_error("lost the card"); });
  scenario.settle();
  if (!standing) {
    EXPECT_EQ(scenario.policyStatus()->error(), "exception: lost the card");
  }
  scenario.attach("pm", "Ethernet1");
  scenario.advance(2);
  EXPECT_EQ(scenario.policyStatus()->error(), "");
  EXPECT_TRUE(scenario.record()->created());
  EXPECT_FALSE(scenario.record()->dirty());
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
}

}  // namespace
}  // namespace endtoend
