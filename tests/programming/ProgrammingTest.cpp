// SPDX-License-Identifier: Apache-2.0
#include "policymap/PolicyBench.h"

#include <gmock/gmock.h>

namespace policymap {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Programming : public testing::Test {
 protected:
  PolicyBench bench;
};

TEST_F(Programming, FirstTimeCreatesAddsRulesThenInterfacesThenCommits) {
  bench.simplePolicy();
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(Programming, NothingIsProgrammedBeforeTheLoopTurns) {
  bench.simplePolicy();
  bench.start();
  EXPECT_THAT(bench.helper->taken(), ElementsAre("hwInit"));
}

TEST_F(Programming, ConfigurationMadeAfterTheMachineIsProgrammedToo) {
  bench.start();
  bench.settle();
  bench.simplePolicy();
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(Programming, AChangedRuleReCreatesThePolicy) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.rule("acl", 20, Acl::PortMatch::eq(80));
  EXPECT_THAT(bench.settle(),
              ElementsAre("recreate pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addRule pm/input/ipv4 c:acl:20 *>80-80 permit tcp any any eq 80",
                          "commit pm/input/ipv4"));
}

TEST_F(Programming, AnIdenticalRewriteProgramsNothing) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  Acl::IpRuleConfig const kept = bench.acls->ipAcl("acl")->rule(10);
  bench.acls->ipAcl("acl")->ruleDelAll();
  bench.acls->ipAcl("acl")->ruleIs(10, kept);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(Programming, WithoutADifferenceTrackerEveryRewriteIsAChange) {
  bench.diff = nullptr;
  bench.simplePolicy();
  bench.start();
  bench.settle();
  Acl::IpRuleConfig const kept = bench.acls->ipAcl("acl")->rule(10);
  bench.acls->ipAcl("acl")->ruleDelAll();
  bench.acls->ipAcl("acl")->ruleIs(10, kept);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(Programming, ActionsAreUpdatedInPlaceWhereTheHelperCan) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  action->numberIs(7);
  EXPECT_THAT(bench.settle(), ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                                          "end pm/input c", "commit pm/input/ipv4"));
}

TEST_F(Programming, ActionsReCreateThePolicyWhereTheHelperCannotUpdate) {
  bench.simplePolicy();
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  action->numberIs(7);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(Programming, AnAddedActionIsUpdatedInPlace) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.action("pm", "c");
  EXPECT_THAT(bench.settle(), ElementsAre("begin pm/input c", "update pm/input/ipv4 c:acl:10",
                                          "end pm/input c", "commit pm/input/ipv4"));
}

TEST_F(Programming, RulesAndActionsChangedInOneTurnOnlyReCreate) {
  bench.helper->updateActionSupportedIs(true);
  bench.simplePolicy();
  auto const action = bench.action("pm", "c");
  bench.start();
  bench.settle();
  bench.rule("acl", 10, Acl::PortMatch::eq(80));
  action->numberIs(7);
  EXPECT_THAT(bench.settle(),
              ElementsAre("recreate pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 *>80-80 permit tcp any any eq 80",
                          "commit pm/input/ipv4"));
}

TEST_F(Programming, InterfacesAreAddedAndRemovedOneByOne) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.attach("pm", "Ethernet3");
  bench.attach("pm", "Ethernet2");
  EXPECT_THAT(bench.settle(),
              ElementsAre("addIntf pm/input/ipv4 Ethernet2", "addIntf pm/input/ipv4 Ethernet3",
                          "commit pm/input/ipv4"));
  bench.detach("Ethernet1");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(Programming, AReCreationBindsTheInterfacesThatStayWithoutAddingThemAgain) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2");
  bench.start();
  bench.settle();
  bench.detach("Ethernet1");
  bench.attach("pm", "Ethernet3");
  bench.rule("acl", 10, Acl::PortMatch::eq(80));
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "recreate pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 *>80-80 permit tcp any any eq 80",
                          "addIntf pm/input/ipv4 Ethernet3", "commit pm/input/ipv4"));
}

TEST_F(Programming, AnInterfaceChangeReProgramsWhereTheHelperAsksForIt) {
  bench.helper->reprogramPolicyOnIntfChangeIs(true);
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.attach("pm", "Ethernet2");
  EXPECT_THAT(bench.settle(),
              ElementsAre("recreate pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet2", "commit pm/input/ipv4"));
}

TEST_F(Programming, TheLastInterfaceTakesThePolicyWithIt) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.detach("Ethernet1");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  EXPECT_EQ(bench.machine->policyMapSms(), 0U);
  EXPECT_EQ(bench.status->policyMapStatuss(), 0U);
}

TEST_F(Programming, TheLastRuleTakesThePolicyWithIt) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.acls->ipAcl("acl")->ruleDel(10);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  bench.rule("acl", 10);
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(Programming, ARemovedPolicyMapIsTakenDownAndComesBack) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const config = bench.policies->policyMapConfig("pm");
  auto const subConfig = config->currentSubConfig();
  bench.policies->policyMapConfigDel("pm");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  bench.policies->policyMapConfigIs("pm")->currentSubConfigIs(subConfig);
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(Programming, APolicyMapRemovedAndBroughtBackInOneTurnProgramsNothing) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const subConfig = bench.policies->policyMapConfig("pm")->currentSubConfig();
  bench.policies->policyMapConfigDel("pm");
  bench.policies->policyMapConfigIs("pm")->currentSubConfigIs(subConfig);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(Programming, ANonexistentInterfaceLeavesAndComesBack) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet2");
  bench.start();
  bench.settle();
  bench.machine->nonexistent.insert(intf("Ethernet1"));
  bench.machine->handleIntf(intf("Ethernet1"), false);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
  bench.machine->nonexistent.clear();
  bench.machine->handleIntf(intf("Ethernet1"), false);
  EXPECT_THAT(bench.settle(),
              ElementsAre("addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(Programming, AForcedInterfaceReProgramsWithoutADifference) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.machine->handleIntf(intf("Ethernet1"), false);
  EXPECT_THAT(bench.settle(), IsEmpty());
  bench.machine->handleIntf(intf("Ethernet1"), true);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(Programming, ClassesAreProgrammedInPriorityOrder) {
  bench.simplePolicy();
  bench.rule("other", 5);
  bench.classMatches("d", "other");
  bench.policy("pm")->classPrioIs(Kor::Name("d"), 20);
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addRule pm/input/ipv4 d:other:5 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
  bench.policy("pm")->classPrioIs(Kor::Name("d"), 5);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 d:other:5 permit tcp any any",
                                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(Programming, APriorityChangeThatKeepsTheOrderProgramsNothing) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.policy("pm")->classPrioIs(Kor::Name("c"), 99);
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(Programming, ADirectionIsAPolicyOfItsOwn) {
  bench.simplePolicy();
  bench.attach("pm", "Ethernet1", "output");
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4",
                          "create pm/output/ipv4",
                          "addRule pm/output/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/output/ipv4 Ethernet1", "commit pm/output/ipv4"));
}

TEST_F(Programming, AnyNumberOfWritesBeforeTheLoopTurnsCostsOnePass) {
  bench.simplePolicy();
  bench.start();
  for (std::uint32_t seqno = 1; seqno <= 50; ++seqno) {
    bench.rule("acl", 10 * seqno);
  }
  auto const calls = bench.settle();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "commit pm/input/ipv4"), 1);
  EXPECT_EQ(calls.size(), 4 + 50U);
}

TEST_F(Programming, AListThatAppearsLaterIsProgrammedThen) {
  bench.classMatches("c", "acl");
  bench.policy("pm")->classPrioIs(Kor::Name("c"), 10);
  bench.attach("pm", "Ethernet1");
  bench.start();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  auto const status = bench.status->policyMapStatus({"pm", "input"});
  ASSERT_TRUE(status);
  EXPECT_EQ(status->classMapStatus("c")->error(), "missing ip access-list acl");
  bench.rule("acl", 10);
  EXPECT_EQ(bench.settle().size(), 4U);
  EXPECT_EQ(status->classMapStatus("c")->error(), "");
  EXPECT_TRUE(status->programmed(ClassMapMatchOption::ipv4));
}

TEST_F(Programming, AClassMapThatAppearsLaterIsProgrammedThen) {
  bench.rule("acl", 10);
  bench.policy("pm")->classPrioIs(Kor::Name("c"), 10);
  bench.attach("pm", "Ethernet1");
  bench.start();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  bench.classMatches("c", "acl");
  EXPECT_EQ(bench.settle().size(), 4U);
  bench.classes->classMapConfigDel("c");
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(Programming, NestedClassMapsAreFollowedToAnyDepth) {
  bench.rule("acl", 10);
  bench.classMatches("inner", "acl");
  bench.classMap("middle")->matchIs(1, PolicyMap::ClassMapMatch::classMap("inner"));
  bench.classMap("outer")->matchIs(1, PolicyMap::ClassMapMatch::classMap("middle"));
  bench.policy("pm")->classPrioIs(Kor::Name("outer"), 10);
  bench.attach("pm", "Ethernet1");
  bench.start();
  EXPECT_THAT(bench.settle(),
              testing::Contains("addRule pm/input/ipv4 outer:acl:10 permit tcp any any"));
  bench.rule("second", 5);
  bench.classMatches("inner", "second", 2);
  EXPECT_THAT(bench.settle(), ElementsAre("recreate pm/input/ipv4",
                                          "addRule pm/input/ipv4 outer:acl:10 permit tcp any any",
                                          "addRule pm/input/ipv4 outer:second:5 permit tcp any any",
                                          "commit pm/input/ipv4"));
}

TEST_F(Programming, AClassMapThatMatchesItselfIsRefusedWithThePath) {
  bench.simplePolicy();
  bench.classMap("c")->matchIs(2, PolicyMap::ClassMapMatch::classMap("d"));
  bench.classMap("d")->matchIs(1, PolicyMap::ClassMapMatch::classMap("c"));
  bench.start();
  EXPECT_THAT(bench.settle(), ElementsAre("hwInit"));
  auto const status = bench.status->policyMapStatus({"pm", "input"});
  EXPECT_EQ(status->error(), "class-map c matches itself: c > d > c");
  EXPECT_EQ(status->classMapStatus("c")->error(), "class-map c matches itself: c > d > c");
  bench.classMap("d")->matchDel(1);
  EXPECT_EQ(bench.settle().size(), 4U);
  EXPECT_EQ(status->error(), "");
}

TEST_F(Programming, RulesOfTheClassMapItselfKeepTheirPlaceAmongTheLists) {
  bench.simplePolicy();
  Acl::IpRuleConfig own;
  own.dscpIs(46);
  bench.classMap("c")->matchIs(7, PolicyMap::ClassMapMatch::rule(own));
  bench.rule("last", 1);
  bench.classMatches("c", "last", 9);
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addRule pm/input/ipv4 c::7 permit ip any any dscp 46",
                          "addRule pm/input/ipv4 c:last:1 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

TEST_F(Programming, PortRangesBecomeAlignedSubRulesOrOneThatNeedsARangeChecker) {
  bench.simplePolicy();
  bench.rule("acl", 10, Acl::PortMatch::range(5004, 5008));
  bench.start();
  EXPECT_THAT(bench.settle(),
              testing::Contains("addRule pm/input/ipv4 c:acl:10 *>5004-5008! permit tcp any any "
                                "range 5004 5008"));
  bench.helper->subRulesForL4PortsIs(true);
  bench.machine->handleIntf(intf("Ethernet1"), true);
  auto const calls = bench.settle();
  EXPECT_THAT(calls, testing::Contains("addRule pm/input/ipv4 c:acl:10 *>5004-5007 permit tcp any "
                                       "any range 5004 5008"));
  EXPECT_THAT(calls, testing::Contains("addRule pm/input/ipv4 c:acl:10 *>5008-5008 permit tcp any "
                                       "any range 5004 5008"));
}

TEST_F(Programming, AFailingStepRollsBackAndIsReportedAndTheNextChangeTriesAgain) {
  bench.simplePolicy();
  bench.helper->answers["addIntf"] = "table full";
  bench.start();
  EXPECT_THAT(bench.settle(),
              ElementsAre("hwInit", "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
  auto const status = bench.status->policyMapStatus({"pm", "input"});
  EXPECT_EQ(status->error(), "table full");
  EXPECT_FALSE(status->programmed(ClassMapMatchOption::ipv4));
  bench.helper->answers.clear();
  bench.machine->handleIntf(intf("Ethernet1"), false);
  EXPECT_THAT(bench.settle(),
              ElementsAre("create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:10 permit tcp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
  EXPECT_EQ(status->error(), "");
}

TEST_F(Programming, DestroyingTheMachineCallsNoHelperOperation) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.machine = nullptr;
  EXPECT_THAT(bench.settle(), IsEmpty());
}

TEST_F(Programming, CleanupTakesEverythingDown) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  bench.machine->cleanup();
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4"));
}

TEST_F(Programming, NewAccessListsRebuildTheTree) {
  bench.simplePolicy();
  bench.start();
  bench.settle();
  auto const other = Kor::make<Acl::Config>();
  Acl::IpRuleConfig config;
  config.protocolIs(17);
  other->ipAclIs("acl")->ruleIs(30, config);
  bench.machine->aclConfigIs(other);
  EXPECT_THAT(bench.settle(),
              ElementsAre("removeIntf pm/input/ipv4 Ethernet1", "delete pm/input/ipv4",
                          "create pm/input/ipv4",
                          "addRule pm/input/ipv4 c:acl:30 permit udp any any",
                          "addIntf pm/input/ipv4 Ethernet1", "commit pm/input/ipv4"));
}

}  // namespace
}  // namespace policymap
