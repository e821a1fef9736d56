// SPDX-License-Identifier: Apache-2.0
#include "support/NormalForm.h"
#include "support/Scenario.h"

#include <gmock/gmock.h>

namespace endtoend {
namespace {

using PolicyMap::SubRuleData;
using testing::ElementsAre;
using TestSupport::counts;
using TestSupport::intf;
using TestSupport::normalForm;
using TestSupport::normalRecord;
using TestSupport::NormalRecord;
using TestSupport::Scenario;

using enum PolicyMap::ClassMapMatchOption;

SubRuleData ports(std::uint16_t low, std::uint16_t high, bool range = false) {
  SubRuleData subRule;
  subRule.dstPortLowIs(low);
  subRule.dstPortHighIs(high);
  subRule.dstPortRangeIs(range);
  return subRule;
}

TEST(FirstProgramming, CreatesOnceAndCommitsOnce) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
  EXPECT_EQ(scenario.helper->testDatas(), 1U);
}

TEST(FirstProgramming, HappensWhenTheLoopTurnsAndNotBefore) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.start();
  EXPECT_EQ(scenario.helper->testDatas(), 0U);
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 1U);
}

TEST(FirstProgramming, RecordsMatchSubRuleActionValuesAndInterface) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.rule("acl", 20, TestSupport::tcp(Acl::PortMatch::eq(80)));
  scenario.actionIs("pm", "c", 1, 7);
  scenario.actionIs("pm", "c", 2, 8);
  scenario.actionIs("pm", "c", 3, 9);
  scenario.start();
  scenario.settle();
  NormalRecord expected;
  expected.created = true;
  expected.intfs = {intf("Ethernet1")};
  expected.rules[Scenario::ruleKey("c", "acl", 10)] = {
      "permit tcp any any", {SubRuleData()}, {7, 8, 9}};
  expected.rules[Scenario::ruleKey("c", "acl", 20)] = {
      "permit tcp any any eq 80", {ports(80, 80)}, {7, 8, 9}};
  EXPECT_EQ(normalRecord(*scenario.record()), expected);
  EXPECT_EQ(scenario.record()->ruleMatch(Scenario::ruleKey("c", "acl", 20)),
            TestSupport::tcp(Acl::PortMatch::eq(80)));
}

TEST(FirstProgramming, RecordsZeroForActionsThatAClassDoesNotHave) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.actionIs("pm", "c", 2, 8);
  scenario.start();
  scenario.settle();
  auto const key = Scenario::ruleKey("c", "acl", 10);
  EXPECT_EQ(normalRecord(*scenario.record()).rules[key].actions,
            (std::array<std::uint32_t, 3>{0, 8, 0}));
  EXPECT_EQ(scenario.record()->ruleAction1s(), 1U);
}

TEST(FirstProgramming, EveryClassHasItsOwnActionValues) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("pm", "d", 20);
  scenario.actionIs("pm", "c", 1, 7);
  scenario.actionIs("pm", "d", 1, 70);
  scenario.start();
  scenario.settle();
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("c", "acl", 10)), 7U);
  EXPECT_EQ(scenario.record()->ruleAction1(Scenario::ruleKey("d", "other", 5)), 70U);
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST(FirstProgramming, EveryOptionHasItsOwnRecord) {
  Scenario scenario;
  scenario.simplePolicyOfAllOptions();
  scenario.actionIs("pm", "c", 1, 7);
  scenario.ip->intfAddressIs(intf("Ethernet1"), Ip::Address("10.0.0.1/24"));
  scenario.ip6->intfAddressIs(intf("Ethernet1"), Ip6::Address("2001:db8::1/64"));
  scenario.start();
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 4U);
  for (auto const& [option, list, match] :
       {std::tuple(ipv4, "acl", "permit tcp any any"),
        std::tuple(ipv6, "acl6", "permit tcp any any"),
        std::tuple(mac, "mac", "permit any any ethertype 2048"),
        std::tuple(mpls, "label", "permit any any ethertype 34887")}) {
    auto const record = scenario.record(option);
    ASSERT_TRUE(record) << option;
    EXPECT_EQ(counts(record), "create 1, commit 1, update 0/0, created, clean") << option;
    NormalRecord expected;
    expected.created = true;
    expected.intfs = {intf("Ethernet1")};
    expected.rules[Scenario::ruleKey("c", list, 10, option)] = {match, {SubRuleData()}, {7, 0, 0}};
    EXPECT_EQ(normalRecord(*record), expected) << option;
  }
  EXPECT_EQ(scenario.record(ipv4)->ruleMatchs(), 1U);
  EXPECT_EQ(scenario.record(ipv6)->ruleMatch6s(), 1U);
  EXPECT_EQ(scenario.record(mac)->ruleMatchMacs(), 1U);
  EXPECT_EQ(scenario.record(mpls)->ruleMatchMacs(), 1U);
}

TEST(FirstProgramming, EveryDirectionHasItsOwnRecord) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.attach("pm", "Ethernet2", "output");
  scenario.start();
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 2U);
  EXPECT_THAT(normalRecord(*scenario.record(ipv4, "input")).intfs, ElementsAre(intf("Ethernet1")));
  EXPECT_THAT(normalRecord(*scenario.record(ipv4, "output")).intfs, ElementsAre(intf("Ethernet2")));
}

TEST(FirstProgramming, EveryPolicyHasItsOwnRecord) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.rule("other", 5);
  scenario.classMatches("d", "other");
  scenario.usesClass("second", "d", 1);
  scenario.usesClass("second", "c", 2);
  scenario.actionIs("second", "c", 1, 5);
  scenario.actionIs("pm", "c", 1, 4);
  scenario.attach("second", "Ethernet2");
  scenario.start();
  scenario.settle();
  auto const key = Scenario::ruleKey("c", "acl", 10);
  EXPECT_EQ(scenario.record(ipv4, "input", "pm")->ruleAction1(key), 4U);
  EXPECT_EQ(scenario.record(ipv4, "input", "second")->ruleAction1(key), 5U);
  EXPECT_EQ(scenario.record(ipv4, "input", "pm")->ruleMatchs(), 1U);
  EXPECT_EQ(scenario.record(ipv4, "input", "second")->ruleMatchs(), 2U);
}

TEST(FirstProgramming, APortRangeIsOneSubRuleThatNeedsARangeChecker) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.rule("acl", 10, TestSupport::tcp(Acl::PortMatch::range(5004, 5008)));
  scenario.start();
  scenario.settle();
  EXPECT_THAT(normalRecord(*scenario.record()).rules[Scenario::ruleKey("c", "acl", 10)].subRules,
              ElementsAre(ports(5004, 5008, true)));
}

TEST(FirstProgramming, APortRangeIsExpandedWhereTheHelperWantsIt) {
  Scenario scenario;
  scenario.helper->subRulesForL4PortsIs(true);
  scenario.simplePolicy();
  scenario.rule("acl", 10, TestSupport::tcp(Acl::PortMatch::range(5004, 5008)));
  scenario.start();
  scenario.settle();
  EXPECT_THAT(normalRecord(*scenario.record()).rules[Scenario::ruleKey("c", "acl", 10)].subRules,
              ElementsAre(ports(5004, 5007), ports(5008, 5008)));
}

TEST(FirstProgramming, RangesOfBothPortsMultiply) {
  Scenario scenario;
  scenario.helper->subRulesForL4PortsIs(true);
  scenario.simplePolicy();
  scenario.rule("acl", 10,
                TestSupport::tcp(Acl::PortMatch::range(5004, 5008), Acl::PortMatch::gt(1023)));
  scenario.start();
  scenario.settle();
  EXPECT_EQ(
      normalRecord(*scenario.record()).rules[Scenario::ruleKey("c", "acl", 10)].subRules.size(),
      2U * 6U);
  EXPECT_EQ(scenario.record()->ruleMatchs(), 1U);
}

TEST(FirstProgramming, WhatIsNotAttachedIsNotProgrammed) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.detach("Ethernet1");
  scenario.start();
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 0U);
  EXPECT_EQ(scenario.machine->policyMapSms(), 0U);
}

TEST(FirstProgramming, AClassThatMatchesNothingProgramsNothing) {
  Scenario scenario;
  scenario.usesClass("pm", "c", 10);
  scenario.attach("pm", "Ethernet1");
  scenario.start();
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 0U);
}

TEST(FirstProgramming, ConfigurationMayComeInAnyOrder) {
  Scenario inOrder;
  inOrder.simplePolicy();
  inOrder.actionIs("pm", "c", 1, 7);
  inOrder.start();
  inOrder.settle();
  Scenario backwards;
  backwards.start();
  backwards.settle();
  backwards.attach("pm", "Ethernet1");
  backwards.settle();
  backwards.actionIs("pm", "c", 1, 7);
  backwards.settle();
  backwards.usesClass("pm", "c", 10);
  backwards.settle();
  backwards.classMatches("c", "acl");
  backwards.settle();
  EXPECT_EQ(backwards.helper->testDatas(), 0U);
  backwards.rule("acl", 10);
  backwards.settle();
  EXPECT_EQ(describe(normalForm(*backwards.helper)), describe(normalForm(*inOrder.helper)));
  EXPECT_EQ(counts(backwards.record()), "create 1, commit 1, update 0/0, created, clean");
}

TEST(FirstProgramming, IsReportedInTheStatuses) {
  Scenario scenario;
  scenario.simplePolicy();
  scenario.start();
  scenario.settle();
  auto const status = scenario.policyStatus();
  ASSERT_TRUE(status);
  EXPECT_TRUE(status->programmed(ipv4));
  EXPECT_FALSE(status->programmed(ipv6));
  EXPECT_EQ(status->error(), "");
  EXPECT_EQ(status->failures(), 0U);
  ASSERT_TRUE(status->classMapStatus("c"));
  EXPECT_TRUE(status->classMapStatus("c")->programmed());
  EXPECT_EQ(status->classMapStatus("c")->error(), "");
}

TEST(FirstProgramming, AHelperIsInitialisedOnceBeforeAnythingElse) {
  class Counting : public PolicyMapTest::AclHelper {
   public:
    Counting() : AclHelper(false, false) {}
    int initialised = 0;
    std::uint32_t recordsThen = 0;
    void hwInit() override {
      ++initialised;
      recordsThen = testDatas();
    }
  };
  auto const helper = Kor::make<Counting>();
  Scenario scenario({}, helper);
  scenario.simplePolicy();
  scenario.start();
  EXPECT_EQ(helper->initialised, 1);
  scenario.settle();
  EXPECT_EQ(helper->recordsThen, 0U);
  auto const second = scenario.anotherMachine(nullptr, nullptr);
  EXPECT_EQ(helper->initialised, 1);
}

TEST(FirstProgramming, WithoutPolicyConfigurationListsOrHelperNothingIsProgrammed) {
  Scenario scenario;
  scenario.simplePolicy();
  auto const withoutPolicies = scenario.anotherMachine(nullptr, scenario.status);
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 0U);
  scenario.start();
  scenario.machine->aclConfigDel();
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 0U);
  scenario.machine->aclConfigIs(scenario.acls);
  scenario.machine->aclHelperDel();
  scenario.settle();
  EXPECT_EQ(scenario.helper->testDatas(), 0U);
  scenario.machine->aclHelperIs(scenario.helper);
  scenario.settle();
  EXPECT_EQ(counts(scenario.record()), "create 1, commit 1, update 0/0, created, clean");
}

}  // namespace
}  // namespace endtoend
