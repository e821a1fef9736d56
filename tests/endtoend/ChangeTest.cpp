// SPDX-License-Identifier: Apache-2.0
#include "support/NormalForm.h"
#include "support/Scenario.h"
#include "support/TraceRecorder.h"

#include <gmock/gmock.h>

namespace endtoend {
namespace {

using PolicyMap::ClassMapMatchOption;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::counts;
using TestSupport::intf;
using TestSupport::normalForm;
using TestSupport::normalRecord;
using TestSupport::Scenario;
using TestSupport::tcp;

using enum PolicyMap::ClassMapMatchOption;

// A programmed simple policy.
class Change : public testing::Test {
 protected:
  Change() {
    scenario.simplePolicy();
    scenario.start();
    scenario.settle();
  }
  // The rules added by the calls that follow, in order.
  std::vector<std::string> ruleOrder() {
    TestSupport::TraceRecorder trace("PolicyMapTestSm", 8);
    scenario.settle();
    std::vector<std::string> order;
    for (std::string const& line : trace.lines()) {
      auto const at = line.find("::addRule(");
      if (at != std::string::npos) {
        auto const name = line.find("classCommonData=");
        order.push_back(line.substr(name + 16));
      }
    }
    return order;
  }

  Scenario scenario;
};

TEST_F(Change, AChangedRuleReCreatesThePolicy) {
  scenario.rule("acl", 10, tcp(Acl::PortMatch::eq(80)));
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_EQ(scenario.record()->ruleMatch(Scenario::ruleKey("c", "acl", 10)),
            tcp(Acl::PortMatch::eq(80)));
  EXPECT_THAT(normalRecord(*scenario.record()).intfs, ElementsAre(intf("Ethernet1")));
}

TEST_F(Change, AnAddedRuleReCreatesThePolicy) {
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
}

TEST_F(Change, ARemovedRuleReCreatesThePolicy) {
  scenario.rule("acl", 20);
  scenario.settle();
  scenario.acls->ipAcl("acl")->ruleDel(10);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 3, commit 3, update 0/0, created, clean");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
}

TEST_F(Change, AnyNumberOfWritesBeforeTheLoopTurnsIsOnePass) {
  for (std::uint32_t seqno = 1; seqno <= 100; ++seqno) {
    scenario.rule("acl", 10 * seqno, tcp(Acl::PortMatch::eq(seqno)));
  }
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 100U);
}

TEST_F(Change, AnIdenticalRewriteProgramsNothing) {
  Acl::IpRuleConfig const kept = scenario.acls->ipAcl("acl")->rule(10);
  scenario.acls->ipAcl("acl")->ruleDelAll();
  scenario.acls->ipAcl("acl")->ruleIs(10, kept);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST_F(Change, AnIdenticalRewriteOfTheWholeConfigurationProgramsNothing) {
  scenario.acls->ipAclDel("acl");
  scenario.classes->classMapConfigDel("c");
  scenario.policies->policyMapConfigDel("pm");
  scenario.detach("Ethernet1");
  scenario.simplePolicy();
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST_F(Change, AnIdenticalRewriteInSeveralTurnsOfTheLoopIsProgrammed) {
  scenario.acls->ipAclDel("acl");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  scenario.rule("acl", 10);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(Change, AListThatNoClassUsesProgramsNothing) {
  scenario.rule("unused", 10);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST_F(Change, OnlyPoliciesThatUseTheListAreProgrammedAgain) {
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("second", "d", 1);
  scenario.attach("second", "Ethernet2");
  scenario.settle();
  scenario.rule("other", 6);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  EXPECT_EQ(counts(scenario.record(ipv4, "input", "second")),
            "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(Change, OnlyTheOptionThatUsesTheListIsProgrammedAgain) {
  scenario.rule("acl6", 10, TestSupport::tcp6());
  scenario.classMatches("c", "acl6", ClassMapMatchOption::ipv6, 2);
  scenario.settle();
  scenario.rule("acl6", 20, TestSupport::tcp6());
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  EXPECT_EQ(counts(scenario.record(ClassMapMatchOption::ipv6)),
            "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(Change, BothDirectionsFollowTheirList) {
  scenario.attach("pm", "Ethernet1", "output");
  scenario.settle();
  scenario.rule("acl", 20);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record(ipv4, "input")),
            "create 2, commit 2, update 0/0, created, clean");
  EXPECT_EQ(counts(scenario.record(ipv4, "output")),
            "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(Change, AClassThatMovesAheadIsProgrammedAhead) {
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("pm", "d", 20);
  EXPECT_THAT(ruleOrder(), ElementsAre("c", "d"));
  scenario.usesClass("pm", "d", 5);
  EXPECT_THAT(ruleOrder(), ElementsAre("d", "c"));
  EXPECT_EQ(counts(scenario.record()), "create 3, commit 3, update 0/0, created, clean");
}

TEST_F(Change, APriorityThatKeepsTheOrderProgramsNothing) {
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("pm", "d", 20);
  scenario.settle();
  scenario.usesClass("pm", "d", 30);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(Change, ClassesThatSwapPrioritiesInOneTurnAreOnePass) {
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("pm", "d", 20);
  scenario.settle();
  scenario.usesClass("pm", "d", 10);
  scenario.usesClass("pm", "c", 20);
  EXPECT_THAT(ruleOrder(), ElementsAre("d", "c"));
  EXPECT_EQ(counts(scenario.record()), "create 3, commit 3, update 0/0, created, clean");
}

TEST_F(Change, ARemovedClassTakesItsRulesAlong) {
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("pm", "d", 20);
  scenario.settle();
  scenario.policy("pm")->classPrioDel("d");
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
  EXPECT_FALSE(scenario.policyStatus()->classMapStatus("d"));
}

TEST_F(Change, ARemovedPolicyMapIsDeletedAndComesBack) {
  auto const before = normalForm(*scenario.helper);
  auto const classesOfIt = scenario.policy("pm");
  scenario.policies->policyMapConfigDel("pm");
  scenario.settle();
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  EXPECT_FALSE(scenario.policyStatus());
  EXPECT_EQ(scenario.machine->policyMapSms(), 0U);
  scenario.policies->policyMapConfigIs("pm")->currentSubConfigIs(classesOfIt);
  scenario.settle();
  EXPECT_EQ(describe(normalForm(*scenario.helper)), describe(before));
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_TRUE(scenario.policyStatus()->programmed(ipv4));
}

TEST_F(Change, APolicyMapWithoutClassesIsDeleted) {
  scenario.policies->policyMapConfig("pm")->currentSubConfigIs(nullptr);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
}

TEST_F(Change, AnotherSubConfigurationTakesThePlaceOfTheCurrentOne) {
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  auto const next = Kor::make<PolicyMap::PolicyMapSubConfig>(Kor::Name("pm"));
  next->classPrioIs("d", 1);
  scenario.policies->policyMapConfig("pm")->currentSubConfigIs(next);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
  EXPECT_TRUE(scenario.record()->korRuleMatch(Scenario::ruleKey("d", "other", 5)));
}

TEST_F(Change, AnotherPolicyMapAtAPlaceTakesTheOldOneDown) {
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("second", "d", 1);
  scenario.attach("second", "Ethernet1");
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  EXPECT_THAT(normalRecord(*scenario.record(ipv4, "input", "second")).intfs,
              ElementsAre(intf("Ethernet1")));
}

TEST_F(Change, WithoutADifferenceTrackerEveryRewriteIsAChange) {
  Scenario plain;
  plain.diff = nullptr;
  plain.simplePolicy();
  plain.start();
  plain.settle();
  Acl::IpRuleConfig const kept = plain.acls->ipAcl("acl")->rule(10);
  plain.acls->ipAcl("acl")->ruleDelAll();
  plain.acls->ipAcl("acl")->ruleIs(10, kept);
  plain.settle();
  EXPECT_EQ(counts(plain.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(Change, AnOptionThatIsSwitchedOffIsTakenDown) {
  scenario.machine->allowIpAclIs(false);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  scenario.machine->allowIpAclIs(true);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
}

TEST_F(Change, CleanupTakesEverythingDown) {
  scenario.machine->cleanup();
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, not created, clean");
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
  EXPECT_EQ(scenario.machine->policyMapSms(), 0U);
}

TEST_F(Change, TheRecordsStayForInspectionWhenTheMachineIsDestroyed) {
  auto const before = describe(normalForm(*scenario.helper));
  scenario.machine = nullptr;
  scenario.settle();
  EXPECT_EQ(describe(normalForm(*scenario.helper)), before);
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST_F(Change, ANewMachineOnTheSameHelperReCreatesWhatStands) {
  scenario.machine = nullptr;
  scenario.rule("acl", 20);
  scenario.start();
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 2, commit 2, update 0/0, created, clean");
  EXPECT_EQ(scenario.record()->ruleMatchs(), 2U);
}

TEST_F(Change, AnotherHelperGetsEverythingAndTheOldOneLosesIt) {
  auto const before = describe(normalForm(*scenario.helper));
  auto const next = PolicyMapTest::aclHelperFactory(false, false);
  scenario.machine->aclHelperIs(next);
  scenario.settle();
  EXPECT_THAT(normalForm(*scenario.helper), IsEmpty());
  EXPECT_EQ(describe(normalForm(*next)), before);
}

TEST_F(Change, NewAccessListsAreTakenInPlaceOfTheOld) {
  auto const other = Kor::make<Acl::Config>();
  other->ipAclIs("acl")->ruleIs(30, tcp());
  scenario.machine->aclConfigIs(other);
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
  EXPECT_TRUE(scenario.record()->korRuleMatch(Scenario::ruleKey("c", "acl", 30)));
  EXPECT_TRUE(scenario.record()->created());
}

}  // namespace
}  // namespace endtoend
